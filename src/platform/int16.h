#ifndef TAGWRIGHT_PLATFORM_INT16_H_
#define TAGWRIGHT_PLATFORM_INT16_H_

#include <compare>
#include <cstddef>
#include <cstdint>

#include "platform/failure.h"

namespace tagwright {

// A position or counter. Constructing one from a value outside -32768..32767,
// or a sum, difference or product that leaves that range, throws the overflow
// Failure; no routine checks by hand. Lengths of whole texts are not Int16.
class Int16 {
 public:
  constexpr Int16() = default;
  // Implicit on purpose: every assignment of a wider value to a position is
  // the checked conversion that the 16-bit model asks for.
  constexpr Int16(std::int64_t value) : value_(check(value)) {}  // NOLINT

  // The length of a text, or a position computed from one, as a checked value.
  static constexpr Int16 fromSize(std::size_t size) {
    if (size > 32767) throw Failure::overflow();
    return Int16(static_cast<std::int64_t>(size));
  }

  constexpr int value() const { return value_; }
  // The value as an index into a text: position 1 is index 0.
  // REQUIRES: value() >= 1.
  constexpr std::size_t index() const { return static_cast<std::size_t>(value_ - 1); }

  friend constexpr Int16 operator+(Int16 a, Int16 b) {
    return Int16(std::int64_t{a.value_} + b.value_);
  }
  friend constexpr Int16 operator-(Int16 a, Int16 b) {
    return Int16(std::int64_t{a.value_} - b.value_);
  }
  Int16& operator+=(Int16 b) { return *this = *this + b; }
  Int16& operator-=(Int16 b) { return *this = *this - b; }
  friend constexpr bool operator==(Int16 a, Int16 b) = default;
  friend constexpr auto operator<=>(Int16 a, Int16 b) = default;

 private:
  static constexpr std::int16_t check(std::int64_t value) {
    if (value < -32768 || value > 32767) throw Failure::overflow();
    return static_cast<std::int16_t>(value);
  }

  std::int16_t value_ = 0;
};

}  // namespace tagwright

#endif  // TAGWRIGHT_PLATFORM_INT16_H_
