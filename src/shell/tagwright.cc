#include "tagwright/tagwright.h"

#include <stdexcept>

#include "platform/numeric.h"
#include "platform/platform.h"
#include "shell/settings/read_setting.h"

namespace tagwright {

Tagwright::Tagwright() : Tagwright(systemPlatform()) {}

// The defaults stand in the field initialisers; each setting may change its
// field, read in this order. Only "1" turns a flag off, and a chunk length
// outside 257..65534 is not clamped but leaves the default.
Tagwright::Tagwright(Platform& platform) : platform_(platform) {
  Text length = readSetting(platform_, U"BufferLengthCharacters");
  if (isNumeric(length)) {
    std::int32_t value = 0;
    try {
      value = toInt32(length);
    } catch (const Failure&) {
      // Such a value ends the creation of the instance; the host reports it.
      throw std::runtime_error("BufferLengthCharacters: value does not fit 32 bits");
    }
    if (value > 256 && value < 65535) bufferLength = value;
  }
  if (readSetting(platform_, U"AllowVirtualDocReadOnly") == U"1") allowPhysicalDocRead = false;
  if (readSetting(platform_, U"AllowVirtualDocWriteOnly") == U"1") allowPhysicalDocWrite = false;
  if (readSetting(platform_, U"AllowVirtualFileListOnly") == U"1") allowPhysicalFileList = false;
  if (readSetting(platform_, U"LineEnds") == U"any") lineEndMode = LineEnds::kAny;
  if (readSetting(platform_, U"FollowLinksOut") == U"1") followLinksOut = true;
}

void Tagwright::OnStartPage(std::shared_ptr<ScriptingContext> objScriptingContext) {
  if (!objScriptingContext) throw std::invalid_argument("OnStartPage needs a page context");
  ScriptingContext_ = std::move(objScriptingContext);
}

}  // namespace tagwright
