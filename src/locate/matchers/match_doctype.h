#ifndef TAGWRIGHT_LOCATE_MATCHERS_MATCH_DOCTYPE_H_
#define TAGWRIGHT_LOCATE_MATCHERS_MATCH_DOCTYPE_H_

#include "locate/matchers/matcher.h"

namespace tagwright {

// Decides whether the "<!doctype " at `contentStart` in `chunk` is a
// declaration that counts. One with an internal subset (a "[" before the
// first ">") counts and ends in "]>"; any other ends in ">" and counts when
// its text (up to that ">", or the whole chunk if it holds none) contains
// " public " or " system ". Unless the ContentType is "outermarkup",
// `contentStart` moves 2 on, onto "doctype", whatever the answer.
//   `<!doctype html public "-//w3c//dtd">`: true, closeMarker ">".
//   `<!doctype note [<!element note (to)>]>`: true, closeMarker "]>".
//   `<!doctype html>`: false.
bool matchDoctype(const Query& query, const ChunkView& chunk, Int16& contentStart,
                  Text& closeMarker);

}  // namespace tagwright

#endif  // TAGWRIGHT_LOCATE_MATCHERS_MATCH_DOCTYPE_H_
