#include "rewrite/rewrite_names.h"

#include <algorithm>
#include <cmath>

namespace tagwright {
namespace {

constexpr char32_t kDigits[] = U"0123456789";

// REQUIRES: 0 <= value <= 99.
void appendTwoDigits(int value, Text& out) {
  out.push_back(kDigits[value / 10 % 10]);
  out.push_back(kDigits[value % 10]);
}

// REQUIRES: value >= 0.
void appendDecimal(int value, Text& out) {
  if (value >= 10) appendDecimal(value / 10, out);
  out.push_back(kDigits[value % 10]);
}

}  // namespace

Text stampText(const LocalTime& now, double randomValue) {
  Text stamp = monthDay(now);
  appendTwoDigits(now.hour, stamp);
  appendTwoDigits(now.minute, stamp);
  appendTwoDigits(now.second, stamp);
  // Kept to 0..9999 even for a generator that strays out of [0, 1).
  double scaled = std::floor(randomValue * 10000.0);
  if (!(scaled >= 0.0)) scaled = 0.0;
  appendDecimal(static_cast<int>(std::min(scaled, 9999.0)), stamp);
  return stamp;
}

Text monthDay(const LocalTime& date) {
  Text text;
  appendTwoDigits(date.month, text);
  appendTwoDigits(date.day, text);
  return text;
}

}  // namespace tagwright
