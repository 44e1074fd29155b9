#ifndef TAGWRIGHT_LOCATE_MATCHERS_MATCH_NAMED_ELEMENT_H_
#define TAGWRIGHT_LOCATE_MATCHERS_MATCH_NAMED_ELEMENT_H_

#include "locate/matchers/matcher.h"

namespace tagwright {

// Decides whether the "<name" at `contentStart` in `chunk` opens an
// element named `query.ElementName` whose tag passes attributesMatch. The
// name must end where the marker ends, with a blank, "/" or ">" behind it (a
// longer name, a TAB or a line end is refused), and the tag must have its
// ">" in this chunk. On true, `closeMarker` is "</name>", or the tag itself
// when it ends in "/>", and `contentStart` stands as the Matcher contract
// says. A tag refused by its attributes returns false with both already
// set; one refused earlier leaves both untouched.
//   ElementName "p": `<p class="x">` true, closeMarker "</p>";
//   `<p/>` true, closeMarker "<p/>";  `<pre>` false.
bool matchNamedElement(const Query& query, const ChunkView& chunk, Int16& contentStart,
                       Text& closeMarker);

}  // namespace tagwright

#endif  // TAGWRIGHT_LOCATE_MATCHERS_MATCH_NAMED_ELEMENT_H_
