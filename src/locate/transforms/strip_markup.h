#ifndef TAGWRIGHT_LOCATE_TRANSFORMS_STRIP_MARKUP_H_
#define TAGWRIGHT_LOCATE_TRANSFORMS_STRIP_MARKUP_H_

#include <string>
#include <string_view>

#include "platform/text.h"

namespace tagwright {

// The plain text of a stretch of markup: CR, LF and TAB removed, every tag
// (from a "<" to the first ">" behind it) dropped, and the pieces between
// tags trimmed and joined by one blank. A text whose first "<" has no ">"
// behind it holds no tag: from that "<" on it stands as written, right
// behind the piece before it. Throws Failure(kInvalidArgument) for a later
// "<" with no ">" after it (`<a>b<c`), and the overflow for a "<" or ">"
// beyond position 32767.
//   stripMarkup(U"Hello <b>World</b>!") == U"Hello World !"
//   stripMarkup(U"if (a<b) {x}") == U"if (a<b) {x}"
Text stripMarkup(TextView text);

// The same on UTF-8, whose CR and LF are all plain: the rule looks at ASCII
// characters alone, so it cuts the bytes where it would cut the characters.
// Makes `out` the result, using `cleaned` as room, and returns true; returns
// false, with `out` undefined, when the text is too long to be sure that no
// "<" or ">" lies beyond position 32767: stripMarkup must then judge it.
bool stripMarkupBytes(std::string_view text, std::string& cleaned, std::string& out);

}  // namespace tagwright

#endif  // TAGWRIGHT_LOCATE_TRANSFORMS_STRIP_MARKUP_H_
