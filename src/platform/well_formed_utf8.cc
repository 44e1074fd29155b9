#include "platform/well_formed_utf8.h"

#include <algorithm>
#include <cstdint>

#include "platform/vector_clones.h"

namespace tagwright {
namespace {

// Whether a byte is where it must be in well-formed UTF-8, given the three
// bytes in front of it: a continuation byte exactly where a lead byte of the
// last three asks for one, no byte that never appears (C0, C1, F5-FF), and
// none of the second bytes that make an overlong form, a surrogate or a
// value above U+10FFFF.
inline bool misplaced(unsigned char b, unsigned char p1, unsigned char p2, unsigned char p3) {
  const bool continuation = (b & 0xC0) == 0x80;
  const bool expected = (p1 >= 0xC0) | (p2 >= 0xE0) | (p3 >= 0xF0);
  return (continuation != expected) | (b == 0xC0) | (b == 0xC1) | (b >= 0xF5) |
         ((p1 == 0xE0) & (b < 0xA0)) | ((p1 == 0xED) & (b > 0x9F)) | ((p1 == 0xF0) & (b < 0x90)) |
         ((p1 == 0xF4) & (b > 0x8F));
}

#ifdef TAGWRIGHT_HAVE_AVX2_PATH

// The same rules, 32 bytes at a time, by three table lookups per byte
// (Keiser and Lemire, "Validating UTF-8 in less than one instruction per
// byte"): the high and low halves of the byte in front and the high half of
// the byte itself each name the errors they may take part in, and a byte is
// wrong where all three agree. Whether a continuation byte is due from two
// or three bytes back is checked apart.
namespace errors {
constexpr std::uint8_t kTooShort = 1 << 0;  // a lead byte not followed by a continuation
constexpr std::uint8_t kTooLong = 1 << 1;   // a continuation after ASCII
constexpr std::uint8_t kOverlong3 = 1 << 2;
constexpr std::uint8_t kTooLarge = 1 << 3;
constexpr std::uint8_t kSurrogate = 1 << 4;
constexpr std::uint8_t kOverlong2 = 1 << 5;
constexpr std::uint8_t kTooLarge1000 = 1 << 6;  // shares its bit: both follow F0-F7 with 8x
constexpr std::uint8_t kOverlong4 = 1 << 6;
constexpr std::uint8_t kTwoContinuations = 1 << 7;
constexpr std::uint8_t kCarry = kTooShort | kTooLong | kTwoContinuations;
}  // namespace errors

TAGWRIGHT_AVX2 inline __m256i tableOf16(const std::uint8_t (&table)[16]) {
  const __m128i half = _mm_loadu_si128(reinterpret_cast<const __m128i*>(table));
  return _mm256_broadcastsi128_si256(half);
}

class Avx2Checker {
 public:
  TAGWRIGHT_AVX2 Avx2Checker() {
    using namespace errors;
    static constexpr std::uint8_t kByte1High[16] = {
        // 0xxx: ASCII in front
        kTooLong, kTooLong, kTooLong, kTooLong, kTooLong, kTooLong, kTooLong, kTooLong,
        // 10xx: a continuation in front
        kTwoContinuations, kTwoContinuations, kTwoContinuations, kTwoContinuations,
        // 1100, 1101: a two-byte lead; 1110: three; 1111: four or more
        kTooShort | kOverlong2, kTooShort, kTooShort | kOverlong3 | kSurrogate,
        kTooShort | kTooLarge | kTooLarge1000 | kOverlong4};
    constexpr std::uint8_t kLarge = kCarry | kTooLarge | kTooLarge1000;
    static constexpr std::uint8_t kByte1Low[16] = {
        kCarry | kOverlong3 | kOverlong2 | kOverlong4,  // xxxx0000
        kCarry | kOverlong2,                            // xxxx0001
        kCarry,
        kCarry,
        kCarry | kTooLarge,  // xxxx0100: F4
        kLarge,
        kLarge,
        kLarge,
        kLarge,
        kLarge,
        kLarge,
        kLarge,
        kLarge,
        kLarge | kSurrogate,  // xxxx1101: ED
        kLarge,
        kLarge};
    constexpr std::uint8_t kContinuation = kTooLong | kOverlong2 | kTwoContinuations;
    static constexpr std::uint8_t kByte2High[16] = {
        kTooShort,
        kTooShort,
        kTooShort,
        kTooShort,
        kTooShort,
        kTooShort,
        kTooShort,
        kTooShort,
        kContinuation | kOverlong3 | kTooLarge1000 | kOverlong4,  // 1000xxxx
        kContinuation | kOverlong3 | kTooLarge,                   // 1001xxxx
        kContinuation | kSurrogate | kTooLarge,                   // 101xxxxx
        kContinuation | kSurrogate | kTooLarge,
        kTooShort,
        kTooShort,
        kTooShort,
        kTooShort};
    byte1High_ = tableOf16(kByte1High);
    byte1Low_ = tableOf16(kByte1Low);
    byte2High_ = tableOf16(kByte2High);
  }

  TAGWRIGHT_AVX2 void check(__m256i input) {
    const __m256i lowNibbles = _mm256_set1_epi8(0x0F);
    // The 32 bytes in front of each byte, one, two and three back.
    const __m256i carried = _mm256_permute2x128_si256(previous_, input, 0x21);
    const __m256i back1 = _mm256_alignr_epi8(input, carried, 15);
    const __m256i back2 = _mm256_alignr_epi8(input, carried, 14);
    const __m256i back3 = _mm256_alignr_epi8(input, carried, 13);
    const __m256i special = _mm256_and_si256(
        _mm256_and_si256(_mm256_shuffle_epi8(
                             byte1High_, _mm256_and_si256(_mm256_srli_epi16(back1, 4), lowNibbles)),
                         _mm256_shuffle_epi8(byte1Low_, _mm256_and_si256(back1, lowNibbles))),
        _mm256_shuffle_epi8(byte2High_, _mm256_and_si256(_mm256_srli_epi16(input, 4), lowNibbles)));
    // The top bit set where a lead two or three bytes back asks for a
    // continuation here; kTwoContinuations is the bit that must match it.
    const __m256i due = _mm256_and_si256(
        _mm256_or_si256(_mm256_subs_epu8(back2, _mm256_set1_epi8(static_cast<char>(0xE0 - 0x80))),
                        _mm256_subs_epu8(back3, _mm256_set1_epi8(static_cast<char>(0xF0 - 0x80)))),
        _mm256_set1_epi8(static_cast<char>(0x80)));
    error_ = _mm256_or_si256(error_, _mm256_xor_si256(due, special));
    const __m256i continuation = _mm256_cmpgt_epi8(_mm256_set1_epi8(-64), input);
    continuations_ += static_cast<std::size_t>(
        __builtin_popcount(static_cast<unsigned>(_mm256_movemask_epi8(continuation))));
    previous_ = input;
  }

  TAGWRIGHT_AVX2 bool wellFormed() const { return _mm256_testz_si256(error_, error_) != 0; }
  std::size_t continuations() const { return continuations_; }

 private:
  __m256i byte1High_, byte1Low_, byte2High_;
  __m256i error_ = {};
  __m256i previous_ = {};
  std::size_t continuations_ = 0;
};

TAGWRIGHT_AVX2 bool countWellFormedAvx2(const unsigned char* bytes, std::size_t n,
                                        std::size_t& characters) {
  Avx2Checker checker;
  std::size_t i = 0;
  for (; i + 32 <= n; i += 32) {
    checker.check(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes + i)));
  }
  if (i < n) {
    alignas(32) unsigned char tail[32] = {};
    std::copy(bytes + i, bytes + n, tail);
    checker.check(_mm256_load_si256(reinterpret_cast<const __m256i*>(tail)));
  }
  // A sequence must not run over the end: behind it come ASCII zeros.
  checker.check(_mm256_setzero_si256());
  if (!checker.wellFormed()) return false;
  characters = n - checker.continuations();
  return true;
}

#endif  // TAGWRIGHT_HAVE_AVX2_PATH

}  // namespace

bool countWellFormedPortable(std::string_view utf8, std::size_t& characters) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(utf8.data());
  const std::size_t n = utf8.size();
  if (n < 3) {
    // Too short for the blocks below; rare enough to count a byte at a time.
    bool bad = false;
    for (std::size_t i = 0; i < n; ++i) {
      bad |= misplaced(bytes[i], i >= 1 ? bytes[i - 1] : 0, i >= 2 ? bytes[i - 2] : 0, 0);
    }
    bad |= (n >= 1 && bytes[n - 1] >= 0xC0) | (n >= 2 && bytes[n - 2] >= 0xE0);
    if (bad) return false;
    characters = static_cast<std::size_t>(
        std::count_if(bytes, bytes + n, [](unsigned char b) { return (b & 0xC0) != 0x80; }));
    return true;
  }
  bool bad = misplaced(bytes[0], 0, 0, 0) | misplaced(bytes[1], bytes[0], 0, 0) |
             misplaced(bytes[2], bytes[1], bytes[0], 0);
  // A sequence must not run over the end.
  bad |= (bytes[n - 1] >= 0xC0) | (bytes[n - 2] >= 0xE0) | (bytes[n - 3] >= 0xF0);
  constexpr std::size_t kBlock = 1024;
  for (std::size_t start = 3; start < n; start += kBlock) {
    const std::size_t end = std::min(n, start + kBlock);
    unsigned char blockBad = 0;
    for (std::size_t i = start; i < end; ++i) {
      blockBad |=
          static_cast<unsigned char>(misplaced(bytes[i], bytes[i - 1], bytes[i - 2], bytes[i - 3]));
    }
    bad |= blockBad != 0;
  }
  if (bad) return false;
  // Counted in runs of 255 bytes, whose count fits the byte-wide sums that
  // vector code keeps.
  std::size_t continuations = 0;
  for (std::size_t start = 0; start < n; start += 255) {
    const std::size_t end = std::min(n, start + 255);
    unsigned char runContinuations = 0;
    for (std::size_t i = start; i < end; ++i) {
      runContinuations = static_cast<unsigned char>(runContinuations + ((bytes[i] & 0xC0) == 0x80));
    }
    continuations += runContinuations;
  }
  characters = n - continuations;
  return true;
}

bool countWellFormed(std::string_view utf8, std::size_t& characters) {
#ifdef TAGWRIGHT_HAVE_AVX2_PATH
  if (processorHasAvx2()) {
    return countWellFormedAvx2(reinterpret_cast<const unsigned char*>(utf8.data()), utf8.size(),
                               characters);
  }
#endif
  return countWellFormedPortable(utf8, characters);
}

}  // namespace tagwright
