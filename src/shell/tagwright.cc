#include "tagwright/tagwright.h"

#include <stdexcept>

#include "platform/platform.h"

namespace tagwright {

Tagwright::Tagwright() : Tagwright(systemPlatform()) {}

Tagwright::Tagwright(Platform& platform) : platform_(platform) {}

void Tagwright::OnStartPage(std::shared_ptr<ScriptingContext> objScriptingContext) {
  if (!objScriptingContext) throw std::invalid_argument("OnStartPage needs a page context");
  ScriptingContext_ = std::move(objScriptingContext);
}

}  // namespace tagwright
