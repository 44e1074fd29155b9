#ifndef TAGWRIGHT_PLATFORM_TEXT_H_
#define TAGWRIGHT_PLATFORM_TEXT_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/int16.h"

namespace tagwright {

// A text is a run of characters, each a Unicode code point. Documents, names
// and parameters arrive as UTF-8 and are decoded so that positions, lengths
// and the 16-bit limits count characters, not bytes:
//   - a valid UTF-8 sequence gives its code point;
//   - any other byte (a stray continuation byte, a truncated sequence, an
//     overlong form, an encoded surrogate, a value above U+10FFFF) is one
//     character of its own, kRawByteBase + the byte, which lies outside
//     Unicode so that no real character equals it or lower-cases to it;
//   - encoding writes such a character back as the same byte, so a text that
//     is decoded and encoded again is the same bytes.
using Text = std::u32string;
using TextView = std::u32string_view;

inline constexpr char32_t kRawByteBase = 0x110000;

// When LF alone ends a line too, a chunk shows every line end as CR LF; the
// CR or LF that it adds where the document has a lone LF, a lone CR or no
// line end at all is decoded as one of these two characters, wherever text
// is cut for a result or a rewrite. Each lower-cases to the CR or LF it
// stands for, so that every search sees the CR LF form, and encodes to
// nothing, so that what goes out holds the document's own line ends.
inline constexpr char32_t kAddedCr = kRawByteBase + 0x100;
inline constexpr char32_t kAddedLf = kRawByteBase + 0x101;
inline constexpr char32_t kBlank = U' ';

// Appends the characters of `utf8` to `out`.
void appendDecoded(std::string_view utf8, Text& out);
// Makes `out` the characters of `utf8`, reusing its storage.
void decodeInto(std::string_view utf8, Text& out);
// Makes `lower` the lower-cased characters of `utf8`, as lowerInto makes
// them, and `offsets` the byte in `utf8` where each one begins, followed by
// the length of `utf8`: the characters from index a up to index b are the
// bytes from offsets[a] up to offsets[b]. REQUIRES: utf8 is under 4 GiB.
void decodeLoweredInto(std::string_view utf8, Text& lower, std::vector<std::uint32_t>& offsets);
// The same without the offsets.
void decodeLoweredInto(std::string_view utf8, Text& lower);
// The number of characters that `utf8` decodes to.
std::size_t decodedLength(std::string_view utf8);
Text fromUtf8(std::string_view utf8);
// Appends the UTF-8 form of `text` to `out`; raw-byte characters become their
// byte, added line-end characters nothing.
void appendEncoded(TextView text, std::string& out);
std::string toUtf8(TextView text);

// The simple lower-case mapping of Unicode (UnicodeData.txt), one character
// to one character and never by the locale, so that lower-casing keeps the
// length of a text and a position in the copy is the same position.
char32_t lowerChar(char32_t c);
// Makes `out` the lower-cased copy of `text`, reusing its storage.
void lowerInto(TextView text, Text& out);
Text lower(TextView text);
// Makes every added line-end character the plain CR or LF it stands for, as
// the routines that look at line ends themselves (stripMarkup) must see them.
void plainLineEnds(Text& text);

// The code of a character in the ANSI sense: its value for ASCII, and 128 or
// more for every character outside ASCII.
inline int ansiCode(char32_t c) { return c < 128 ? static_cast<int>(c) : 128; }

// The shared text helpers. Positions are 1-based Int16 values; a start below 1
// or a negative length throws Failure(kInvalidArgument).

// The position of the first occurrence of `what` in `text` at or after
// `from`, or 0. A start beyond the end gives 0; the empty text is found at
// `from` when `from` lies inside `text`. A hit beyond 32767 is the overflow.
// (Not named `search`: with <algorithm> visible, argument-dependent lookup
// would find std::search and prefer it for two arguments of one type.)
Int16 searchFrom(TextView text, TextView what, Int16 from);
// The byte offset, at or after `from`, where `lowerWhat` begins in the
// lower-cased characters of `utf8`, or npos; found without decoding or
// lower-casing the rest, so that a chunk that holds no opening marker needs
// neither. `from` must begin a character.
// REQUIRES: lowerWhat is lower case and begins with an ASCII character
// other than a letter (every opening marker begins with "<").
std::size_t findLowered(std::string_view utf8, TextView lowerWhat, std::size_t from);

// The first or last `count` characters, or all of them if there are fewer.
TextView left(TextView text, Int16 count);
TextView right(TextView text, Int16 count);
// The characters from `start` to the end, or `count` of them, as far as there
// are any; a start beyond the end gives the empty text.
TextView mid(TextView text, Int16 start);
TextView mid(TextView text, Int16 start, Int16 count);
// Removes blanks (U+0020 only) at both ends.
TextView trim(TextView text);
// The length of a text as a checked position.
inline Int16 lengthOf(TextView text) { return Int16::fromSize(text.size()); }

}  // namespace tagwright

#endif  // TAGWRIGHT_PLATFORM_TEXT_H_
