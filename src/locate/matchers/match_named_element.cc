#include "locate/matchers/match_named_element.h"

#include "locate/matchers/attributes_match.h"
#include "locate/matchers/start_tag.h"

namespace tagwright {

bool matchNamedElement(const Query& query, const ChunkView& chunk, Int16& contentStart,
                       Text& closeMarker) {
  const Int16 tagStart = contentStart;
  const Int16 nameLength = lengthOf(query.ElementName);
  if (searchFrom(U"/> ", mid(chunk.lower, tagStart + nameLength + 1, 1), 1) == 0) return false;
  const Int16 tagEnd = chunk.search(U">", tagStart);
  if (tagEnd == 0) return false;
  const TextView tagText = mid(chunk.lower, tagStart + 1, tagEnd - tagStart);
  setStartTagStretch(query, tagText, query.ElementName, tagEnd, contentStart, closeMarker);
  return attributesMatch(query, mid(tagText, nameLength + 1));
}

}  // namespace tagwright
