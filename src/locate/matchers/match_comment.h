#ifndef TAGWRIGHT_LOCATE_MATCHERS_MATCH_COMMENT_H_
#define TAGWRIGHT_LOCATE_MATCHERS_MATCH_COMMENT_H_

#include "locate/matchers/matcher.h"

namespace tagwright {

// Decides whether the "<!" at `contentStart` in `chunk` opens a comment:
// any "<!" form but the known declarations. The head (the 12 characters
// from the "<") must hold none of "!element", "!doctype", "!attlist",
// "!entity", "!notation" and "!["; a refused candidate leaves both outputs
// untouched. On true, `closeMarker` is "-->" for a head that begins with
// "<!--" and ">" otherwise, and unless the ContentType is "outermarkup"
// `contentStart` moves behind the "<!--" or the "<!".
//   `<!-- c -->`: true, closeMarker "-->", contentStart + 4.
//   `<!foo bar>`: true, closeMarker ">", contentStart + 2.
//   `<!-- !entity x -->`: false (the word fits in the head);
//   `<!--  !entity x -->`: true (it does not).
bool matchComment(const Query& query, const ChunkView& chunk, Int16& contentStart,
                  Text& closeMarker);

}  // namespace tagwright

#endif  // TAGWRIGHT_LOCATE_MATCHERS_MATCH_COMMENT_H_
