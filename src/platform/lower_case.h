#ifndef TAGWRIGHT_PLATFORM_LOWER_CASE_H_
#define TAGWRIGHT_PLATFORM_LOWER_CASE_H_

#include <array>

#include "platform/text.h"

namespace tagwright {

// The lower-case mapping of the first 1280 characters (Latin, Greek,
// Cyrillic) as a direct table, so that the decoder's loop looks up the
// common characters without a call.
inline constexpr char32_t kDirectLowerLimit = 0x500;
extern const std::array<char32_t, kDirectLowerLimit> kDirectLower;

// lowerChar, with the table looked up in place.
inline char32_t lowerCharInline(char32_t c) {
  return c < kDirectLowerLimit ? kDirectLower[c] : lowerChar(c);
}

}  // namespace tagwright

#endif  // TAGWRIGHT_PLATFORM_LOWER_CASE_H_
