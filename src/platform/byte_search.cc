#include <bit>
#include <cstring>

#include "platform/text.h"
#include "platform/utf8.h"
#include "platform/vector_clones.h"

namespace tagwright {
namespace {

// The first byte at or after `from` that may begin `lowerWhat` in the
// lower-cased text: `first` followed by `second` or its capital, or by any
// byte beyond ASCII, whose character is told only when decoded. Blocks of
// bytes are tested whole, so that the many "<" of markup that begin some
// other tag cost no branch each. Returns `n` when there is none.
TAGWRIGHT_VECTOR_CLONES std::size_t nextPairCandidatePortable(const unsigned char* bytes,
                                                              std::size_t n, std::size_t from,
                                                              unsigned char first,
                                                              unsigned char second,
                                                              unsigned char fold) {
  constexpr std::size_t kBlock = 64;
  auto isCandidate = [&](std::size_t i) {
    unsigned char next = bytes[i + 1];
    return (bytes[i] == first) & (((next | fold) == second) | (next >= 0x80));
  };
  std::size_t i = from;
  while (i + kBlock < n) {
    unsigned char any = 0;
    for (std::size_t k = 0; k < kBlock; ++k) any |= static_cast<unsigned char>(isCandidate(i + k));
    if (any != 0) {
      for (std::size_t k = 0; k < kBlock; ++k) {
        if (isCandidate(i + k)) return i + k;
      }
    }
    i += kBlock;
  }
  for (; i + 1 < n; ++i) {
    if (isCandidate(i)) return i;
  }
  return n;
}

#ifdef TAGWRIGHT_HAVE_AVX2_PATH
// The same, 32 bytes at a time; the top bit of a byte beyond ASCII is the
// bit the mask is taken from, so such a byte needs no comparison.
TAGWRIGHT_AVX2 std::size_t nextPairCandidateAvx2(const unsigned char* bytes, std::size_t n,
                                                 std::size_t from, unsigned char first,
                                                 unsigned char second, unsigned char fold) {
  const __m256i wantFirst = _mm256_set1_epi8(static_cast<char>(first));
  const __m256i wantSecond = _mm256_set1_epi8(static_cast<char>(second));
  const __m256i folding = _mm256_set1_epi8(static_cast<char>(fold));
  std::size_t i = from;
  for (; i + 33 <= n; i += 32) {
    const __m256i here = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes + i));
    const __m256i next = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes + i + 1));
    const __m256i secondFits =
        _mm256_or_si256(_mm256_cmpeq_epi8(_mm256_or_si256(next, folding), wantSecond), next);
    const auto mask = static_cast<unsigned>(
        _mm256_movemask_epi8(_mm256_and_si256(_mm256_cmpeq_epi8(here, wantFirst), secondFits)));
    if (mask != 0) return i + static_cast<std::size_t>(std::countr_zero(mask));
  }
  return nextPairCandidatePortable(bytes, n, i, first, second, fold);
}
#endif

std::size_t nextPairCandidate(const unsigned char* bytes, std::size_t n, std::size_t from,
                              unsigned char first, unsigned char second, unsigned char fold) {
#ifdef TAGWRIGHT_HAVE_AVX2_PATH
  if (processorHasAvx2()) {
    return nextPairCandidateAvx2(bytes, n, from, first, second, fold);
  }
#endif
  return nextPairCandidatePortable(bytes, n, from, first, second, fold);
}

bool holdsLoweredAt(std::string_view utf8, std::size_t at, TextView lowerWhat) {
  for (char32_t want : lowerWhat) {
    if (at >= utf8.size()) return false;
    char32_t c;
    at += decodeCharacter(utf8, at, c);
    if (lowerChar(c) != want) return false;
  }
  return true;
}

}  // namespace

std::size_t findLowered(std::string_view utf8, TextView lowerWhat, std::size_t from) {
  const std::size_t n = utf8.size();
  if (lowerWhat.empty()) return from <= n ? from : std::string_view::npos;
  // Only an ASCII letter has a capital, and no character beyond ASCII
  // lower-cases to ASCII punctuation, so the first character is found as it is.
  const auto* bytes = reinterpret_cast<const unsigned char*>(utf8.data());
  const auto first = static_cast<unsigned char>(lowerWhat[0]);
  const char32_t second = lowerWhat.size() > 1 ? lowerWhat[1] : 0;
  if (second == 0 || second >= 0x80) {
    // Not filtered by a second character; no opening marker but "<" is like this.
    while (from < n) {
      const void* hit = std::memchr(bytes + from, first, n - from);
      if (hit == nullptr) break;
      std::size_t at = static_cast<std::size_t>(static_cast<const unsigned char*>(hit) - bytes);
      if (holdsLoweredAt(utf8, at, lowerWhat)) return at;
      from = at + 1;
    }
    return std::string_view::npos;
  }
  const unsigned char fold = (second >= U'a' && second <= U'z') ? 0x20 : 0x00;
  const auto secondByte = static_cast<unsigned char>(second);
  for (std::size_t at = nextPairCandidate(bytes, n, from, first, secondByte, fold); at < n;
       at = nextPairCandidate(bytes, n, at + 1, first, secondByte, fold)) {
    if (holdsLoweredAt(utf8, at, lowerWhat)) return at;
  }
  return std::string_view::npos;
}

}  // namespace tagwright
