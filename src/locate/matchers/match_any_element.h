#ifndef TAGWRIGHT_LOCATE_MATCHERS_MATCH_ANY_ELEMENT_H_
#define TAGWRIGHT_LOCATE_MATCHERS_MATCH_ANY_ELEMENT_H_

#include "locate/matchers/matcher.h"

namespace tagwright {

// Decides whether the "<" at `contentStart` in `chunk` opens an element
// of any name whose tag passes attributesMatch. The character behind the "<"
// must be ASCII from 33 to 126 and not one of "/?!£$%^&*([{:;@'~#|\<,>.", so
// end tags, declarations, comments, processing instructions and server code
// are refused; so is a tag with no ">" in this chunk. The element name is
// the tag text up to its first blank (a TAB or line end does not cut it), or
// the whole tag text less its ">". On true, `closeMarker` is "</name>", or
// the tag itself when it ends in "/>", and `contentStart` stands as the
// Matcher contract says. A tag refused by its attributes returns false with
// both already set; one refused earlier leaves both untouched.
//   `<p>y</p>` at 1, "innermarkup": true, closeMarker "</p>", contentStart 4.
//   `<=3 >`: true, closeMarker "</=3>".  `< a>`, `</a>`, `<é>`: false.
bool matchAnyElement(const Query& query, const ChunkView& chunk, Int16& contentStart,
                     Text& closeMarker);

}  // namespace tagwright

#endif  // TAGWRIGHT_LOCATE_MATCHERS_MATCH_ANY_ELEMENT_H_
