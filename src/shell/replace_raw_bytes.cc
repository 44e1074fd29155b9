#include "platform/text.h"
#include "platform/utf8.h"
#include "platform/well_formed_utf8.h"
#include "tagwright/tagwright.h"

namespace tagwright {

std::string Tagwright::replaceRawBytes(std::string_view text) {
  std::size_t characters = 0;
  if (countWellFormed(text, characters)) return std::string(text);
  static constexpr std::string_view kReplacement = "\xEF\xBF\xBD";
  std::string replaced;
  replaced.reserve(text.size() + text.size() / 2);
  for (std::size_t i = 0; i < text.size();) {
    char32_t character = 0;
    std::size_t length = decodeCharacter(text, i, character);
    if (character >= kRawByteBase) {
      replaced += kReplacement;
    } else {
      replaced.append(text, i, length);
    }
    i += length;
  }
  return replaced;
}

}  // namespace tagwright
