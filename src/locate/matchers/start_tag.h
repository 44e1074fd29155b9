#ifndef TAGWRIGHT_LOCATE_MATCHERS_START_TAG_H_
#define TAGWRIGHT_LOCATE_MATCHERS_START_TAG_H_

#include "locate/query.h"
#include "platform/int16.h"
#include "platform/text.h"

namespace tagwright {

// Sets the stretch of the tag at `contentStart`, whose `tagText` (everything
// behind its "<", through the ">" at `tagEnd`) an element matcher has found.
// A tag text that ends in "/>" is self-closing: the tag is its own close
// marker and `contentStart` stays on its "<" for every ContentType. Any other
// tag is closed by "</" + `elementName` + ">", and its content starts behind
// the ">" unless the ContentType is "outermarkup".
//   `<p class=x>`: closeMarker "</p>", contentStart moves to tagEnd + 1.
//   `<br />`:      closeMarker "<br />", contentStart stays.
void setStartTagStretch(const Query& query, TextView tagText, TextView elementName, Int16 tagEnd,
                        Int16& contentStart, Text& closeMarker);

}  // namespace tagwright

#endif  // TAGWRIGHT_LOCATE_MATCHERS_START_TAG_H_
