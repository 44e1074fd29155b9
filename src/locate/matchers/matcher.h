#ifndef TAGWRIGHT_LOCATE_MATCHERS_MATCHER_H_
#define TAGWRIGHT_LOCATE_MATCHERS_MATCHER_H_

#include "locate/chunk_text.h"
#include "locate/query.h"
#include "platform/int16.h"
#include "platform/text.h"

namespace tagwright {

// Decides whether the candidate at `contentStart` in `chunk` (where the
// opening marker of the element type was found) is an instance. On true,
// `closeMarker` holds the lower-case text that ends the instance and
// `contentStart` stands on the first character of its stretch: the "<" for
// "outermarkup", the first character of the content otherwise; a
// self-closing tag leaves it on its "<" and makes the tag its own close
// marker. On false both may have moved, and the scan searches on from the
// `contentStart` left behind, plus 2. A matcher sees this chunk only.
using Matcher = bool (*)(const Query& query, const ChunkView& chunk, Int16& contentStart,
                         Text& closeMarker);

// True when the ContentType asks for the part with its tags.
inline bool isOuterMarkup(const Query& query) { return query.ContentType == U"outermarkup"; }

}  // namespace tagwright

#endif  // TAGWRIGHT_LOCATE_MATCHERS_MATCHER_H_
