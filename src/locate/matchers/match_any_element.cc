#include "locate/matchers/match_any_element.h"

#include "locate/matchers/attributes_match.h"
#include "locate/matchers/start_tag.h"

namespace tagwright {
namespace {

// A "<" followed by one of these opens no element. The pound sign is out by
// its code as well; it stays here so that the table reads as it always has.
constexpr TextView kExcludedFirstCharacters = U"/?!£$%^&*([{:;@'~#|\\<,>.";
static_assert(kExcludedFirstCharacters.size() == 24);

bool canStartElementName(TextView firstCharacter) {
  // An empty text is found in any text, so a "<" at the very end of a chunk
  // is refused like an excluded character.
  if (searchFrom(kExcludedFirstCharacters, firstCharacter, 1) > 0) return false;
  const int code = ansiCode(firstCharacter.front());
  return code > 32 && code < 127;
}

}  // namespace

bool matchAnyElement(const Query& query, const ChunkView& chunk, Int16& contentStart,
                     Text& closeMarker) {
  const Int16 tagStart = contentStart;
  if (!canStartElementName(mid(chunk.lower, tagStart + 1, 1))) return false;
  const Int16 tagEnd = chunk.search(U">", tagStart);
  if (tagEnd == 0) return false;
  const TextView tagText = mid(chunk.lower, tagStart + 1, tagEnd - tagStart);
  const Int16 firstBlank = searchFrom(tagText, U" ", 1);
  const TextView elementName =
      firstBlank > 0 ? left(tagText, firstBlank - 1) : left(tagText, lengthOf(tagText) - 1);
  setStartTagStretch(query, tagText, elementName, tagEnd, contentStart, closeMarker);
  return attributesMatch(query, mid(tagText, lengthOf(elementName) + 1));
}

}  // namespace tagwright
