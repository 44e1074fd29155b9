#ifndef TAGWRIGHT_PLATFORM_NUMERIC_H_
#define TAGWRIGHT_PLATFORM_NUMERIC_H_

#include <cstdint>

#include "platform/int16.h"
#include "platform/text.h"

namespace tagwright {

// A text is numeric when, apart from blanks at either end, it is an optional
// sign and digits with an optional fraction ("12", "-3", "+4", "2.5", ".5",
// "7."): no exponent, no hexadecimal, no thousands separator. An empty or
// blank text is not numeric.
bool isNumeric(TextView text);

// Converts a numeric text, rounding a fraction half to even (2.5 gives 2,
// 3.5 gives 4). A value outside the target range throws the overflow Failure.
// REQUIRES: isNumeric(text).
Int16 toInt16(TextView text);
std::int32_t toInt32(TextView text);

}  // namespace tagwright

#endif  // TAGWRIGHT_PLATFORM_NUMERIC_H_
