#ifndef TAGWRIGHT_FUZZ_FUZZ_INPUT_H_
#define TAGWRIGHT_FUZZ_FUZZ_INPUT_H_

#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace tagwright {

// Splits a fuzzer's input into fields at the record separator byte (0x1E),
// so that a corpus file stays readable: the parameters come first, one to a
// field, and the document takes whatever is left, separators included.
// A field that is missing reads as empty.
class FuzzInput {
 public:
  static constexpr char kSeparator = '\x1e';

  FuzzInput(const std::uint8_t* data, std::size_t size)
      : rest_(reinterpret_cast<const char*>(data), size) {}

  std::string text() {
    const std::size_t end = rest_.find(kSeparator);
    std::string field(rest_.substr(0, end));
    rest_ = end == std::string_view::npos ? std::string_view() : rest_.substr(end + 1);
    return field;
  }
  // A decimal field wrapped into 16 bits, so that every value, also the
  // limits and those beyond, can be reached; anything else is `fallback`.
  std::int16_t number(std::int16_t fallback) {
    const std::string field = text();
    long long value = 0;
    const auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), value);
    if (error != std::errc() || end == field.data()) return fallback;
    return static_cast<std::int16_t>(static_cast<std::uint16_t>(value));
  }
  std::string rest() {
    std::string all(rest_);
    rest_ = {};
    return all;
  }

 private:
  std::string_view rest_;
};

// A broken promise: the fuzzer records the input as a crash.
[[noreturn]] inline void fuzzFailure(const char* check, const char* file, int line) {
  std::fprintf(stderr, "%s:%d: check failed: %s\n", file, line, check);
  std::abort();
}

}  // namespace tagwright

#define FUZZ_CHECK(condition) \
  ((condition) ? (void)0 : ::tagwright::fuzzFailure(#condition, __FILE__, __LINE__))

#endif  // TAGWRIGHT_FUZZ_FUZZ_INPUT_H_
