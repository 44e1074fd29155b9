#include "platform/numeric.h"

namespace tagwright {
namespace {

bool isDigit(char32_t c) { return c >= U'0' && c <= U'9'; }

// The value of a numeric text rounded half to even, saturated far outside
// every target range so that a long run of digits cannot wrap.
std::int64_t roundedValue(TextView text) {
  constexpr std::int64_t kSaturated = std::int64_t{1} << 40;
  TextView t = trim(text);
  std::size_t i = 0;
  bool negative = false;
  if (t[i] == U'+' || t[i] == U'-') negative = t[i++] == U'-';
  std::int64_t whole = 0;
  for (; i < t.size() && isDigit(t[i]); ++i) {
    whole = whole * 10 + (t[i] - U'0');
    if (whole > kSaturated) whole = kSaturated;
  }
  // Rounding needs only the first fraction digit and whether any digit
  // behind it is not zero.
  int firstFraction = 0;
  bool restNonZero = false;
  if (i < t.size() && t[i] == U'.') {
    ++i;
    if (i < t.size()) firstFraction = static_cast<int>(t[i++] - U'0');
    for (; i < t.size(); ++i) restNonZero = restNonZero || t[i] != U'0';
  }
  bool up = firstFraction > 5 || (firstFraction == 5 && (restNonZero || whole % 2 == 1));
  if (up) ++whole;
  return negative ? -whole : whole;
}

}  // namespace

bool isNumeric(TextView text) {
  TextView t = trim(text);
  std::size_t i = 0;
  if (i < t.size() && (t[i] == U'+' || t[i] == U'-')) ++i;
  std::size_t digits = 0;
  for (; i < t.size() && isDigit(t[i]); ++i) ++digits;
  if (i < t.size() && t[i] == U'.') {
    ++i;
    for (; i < t.size() && isDigit(t[i]); ++i) ++digits;
  }
  return digits > 0 && i == t.size();
}

Int16 toInt16(TextView text) { return Int16(roundedValue(text)); }

std::int32_t toInt32(TextView text) {
  std::int64_t value = roundedValue(text);
  if (value < INT32_MIN || value > INT32_MAX) throw Failure::overflow();
  return static_cast<std::int32_t>(value);
}

}  // namespace tagwright
