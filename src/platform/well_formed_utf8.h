#ifndef TAGWRIGHT_PLATFORM_WELL_FORMED_UTF8_H_
#define TAGWRIGHT_PLATFORM_WELL_FORMED_UTF8_H_

#include <cstddef>
#include <string_view>

namespace tagwright {

// Whether `utf8` is well-formed UTF-8 throughout; if it is, `characters`
// gets its number of characters, and otherwise is left alone. Uses vector
// instructions where the processor has them.
bool countWellFormed(std::string_view utf8, std::size_t& characters);

// The same, a byte at a time as the compiler vectorises it: what runs where
// the vector instructions are missing.
bool countWellFormedPortable(std::string_view utf8, std::size_t& characters);

}  // namespace tagwright

#endif  // TAGWRIGHT_PLATFORM_WELL_FORMED_UTF8_H_
