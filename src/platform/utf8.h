#ifndef TAGWRIGHT_PLATFORM_UTF8_H_
#define TAGWRIGHT_PLATFORM_UTF8_H_

#include <cstddef>
#include <string_view>

namespace tagwright {

// Decodes one well-formed sequence beyond ASCII at byte `i`, or returns 0
// when the bytes there are not one (the lead byte is then a raw byte).
std::size_t decodeSequence(std::string_view utf8, std::size_t i, char32_t& out);

// The character at byte `i`, which begins one, as the text model decodes it;
// returns its length in bytes.
std::size_t decodeCharacter(std::string_view utf8, std::size_t i, char32_t& out);

}  // namespace tagwright

#endif  // TAGWRIGHT_PLATFORM_UTF8_H_
