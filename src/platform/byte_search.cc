#include <bit>
#include <cstring>

#include "platform/text.h"
#include "platform/utf8.h"
#include "platform/vector_clones.h"

namespace tagwright {
namespace {

// What a candidate must begin with: `first`, then `second` (or its capital,
// `fold` being 0x20 for a letter), then `third` likewise unless it is 0. A
// byte beyond ASCII in the second or third place may begin a character that
// lower-cases to the one wanted, and is told only when decoded.
struct Lead {
  unsigned char first, second, fold, third, thirdFold;
};

// The first byte at or after `from` that may begin the text wanted in the
// lower-cased text, by its lead. Blocks of bytes are tested whole, so that
// the many "<" of markup that begin some other tag cost no branch each.
// Returns `n` when there is none.
TAGWRIGHT_VECTOR_CLONES std::size_t nextPairCandidatePortable(const unsigned char* bytes,
                                                              std::size_t n, std::size_t from,
                                                              Lead lead) {
  constexpr std::size_t kBlock = 64;
  // The last byte of a chunk begins no candidate of three: a third byte
  // lies behind every candidate tested in blocks.
  auto isCandidate = [&](std::size_t i) {
    const unsigned char next = bytes[i + 1];
    const unsigned char third = i + 2 < n ? bytes[i + 2] : 0x80;
    const bool thirdFits =
        lead.third == 0 || ((third | lead.thirdFold) == lead.third) || third >= 0x80;
    return (bytes[i] == lead.first) &
           ((((next | lead.fold) == lead.second) & thirdFits) | (next >= 0x80));
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
class Avx2PairSearch {
 public:
  TAGWRIGHT_AVX2 explicit Avx2PairSearch(Lead lead)
      : wantFirst_(_mm256_set1_epi8(static_cast<char>(lead.first))),
        wantSecond_(_mm256_set1_epi8(static_cast<char>(lead.second))),
        folding_(_mm256_set1_epi8(static_cast<char>(lead.fold))),
        // Without a third character every third byte fits: all ones.
        wantThird_(_mm256_set1_epi8(static_cast<char>(lead.third))),
        thirdFolding_(_mm256_set1_epi8(static_cast<char>(lead.third == 0 ? 0xFF : lead.thirdFold))),
        anyThird_(_mm256_set1_epi8(static_cast<char>(lead.third == 0 ? 0xFF : 0))) {}

  // One bit for each of the 32 bytes from `at` that may begin a candidate;
  // the 34 bytes from `at` must be readable.
  TAGWRIGHT_AVX2 unsigned candidates(const unsigned char* at) const {
    const __m256i here = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(at));
    const __m256i next = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(at + 1));
    const __m256i third = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(at + 2));
    const __m256i thirdFits = _mm256_or_si256(
        _mm256_or_si256(_mm256_cmpeq_epi8(_mm256_or_si256(third, thirdFolding_), wantThird_),
                        third),
        anyThird_);
    const __m256i secondFits = _mm256_or_si256(
        _mm256_and_si256(_mm256_cmpeq_epi8(_mm256_or_si256(next, folding_), wantSecond_),
                         thirdFits),
        next);
    return static_cast<unsigned>(
        _mm256_movemask_epi8(_mm256_and_si256(_mm256_cmpeq_epi8(here, wantFirst_), secondFits)));
  }

 private:
  __m256i wantFirst_, wantSecond_, folding_, wantThird_, thirdFolding_, anyThird_;
};

TAGWRIGHT_AVX2 std::size_t nextPairCandidateAvx2(const unsigned char* bytes, std::size_t n,
                                                 std::size_t from, Lead lead) {
  const Avx2PairSearch search(lead);
  std::size_t i = from;
  for (; i + 34 <= n; i += 32) {
    if (const unsigned mask = search.candidates(bytes + i); mask != 0) {
      return i + static_cast<std::size_t>(std::countr_zero(mask));
    }
  }
  // The last 33 bytes or fewer as one more block, copied in front of bytes
  // beyond ASCII: a third byte past the end fits, as in the portable code,
  // and the lanes of the last byte and beyond are masked off.
  if (i + 1 >= n) return n;
  alignas(32) unsigned char tail[64];
  std::memset(tail, 0x80, sizeof tail);
  std::memcpy(tail, bytes + i, n - i);
  const auto lanes = static_cast<unsigned>(n - i - 1);  // at most 32
  const unsigned inside = lanes >= 32 ? ~0u : (1u << lanes) - 1;
  if (const unsigned mask = search.candidates(tail) & inside; mask != 0) {
    return i + static_cast<std::size_t>(std::countr_zero(mask));
  }
  return n;
}
#endif

std::size_t nextPairCandidate(const unsigned char* bytes, std::size_t n, std::size_t from,
                              Lead lead) {
#ifdef TAGWRIGHT_HAVE_AVX2_PATH
  if (processorHasAvx2()) return nextPairCandidateAvx2(bytes, n, from, lead);
#endif
  return nextPairCandidatePortable(bytes, n, from, lead);
}

bool holdsLoweredAt(std::string_view utf8, std::size_t at, TextView lowerWhat) {
  for (char32_t want : lowerWhat) {
    if (at >= utf8.size()) return false;
    const auto b = static_cast<unsigned char>(utf8[at]);
    if (b < 0x80) {  // an ASCII character lower-cases on its own
      if ((b - unsigned{'A'} < 26u ? b + 32u : b) != want) return false;
      ++at;
      continue;
    }
    char32_t c;
    at += decodeCharacter(utf8, at, c);
    if (lowerChar(c) != want) return false;
  }
  return true;
}

unsigned char foldOf(char32_t c) { return c >= U'a' && c <= U'z' ? 0x20 : 0x00; }

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
  // A third character beyond ASCII is not filtered on.
  const char32_t third = lowerWhat.size() > 2 && lowerWhat[2] < 0x80 ? lowerWhat[2] : 0;
  const Lead lead{first, static_cast<unsigned char>(second), foldOf(second),
                  static_cast<unsigned char>(third), foldOf(third)};
  for (std::size_t at = nextPairCandidate(bytes, n, from, lead); at < n;
       at = nextPairCandidate(bytes, n, at + 1, lead)) {
    if (holdsLoweredAt(utf8, at, lowerWhat)) return at;
  }
  return std::string_view::npos;
}

}  // namespace tagwright
