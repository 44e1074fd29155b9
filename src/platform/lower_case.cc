#include "platform/lower_case.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "platform/text.h"
#include "platform/vector_clones.h"

namespace tagwright {
namespace {

struct LowerPair {
  char32_t code;
  char32_t lower;
};

constexpr LowerPair kLowerTable[] = {
#include "lowercase_table.inc"
};

TAGWRIGHT_VECTOR_CLONES void lowerAscii(const char32_t* text, std::size_t n, char32_t* target) {
  for (std::size_t i = 0; i < n; ++i) {
    char32_t c = text[i];
    target[i] = c + ((c - U'A' < 26u) ? 32u : 0u);
  }
}

// Lower-cases the characters outside ASCII that lowerAscii left as they were,
// looking at them block by block so that ASCII blocks cost one vector test.
TAGWRIGHT_VECTOR_CLONES void lowerBeyondAscii(char32_t* text, std::size_t n) {
  constexpr std::size_t kBlock = 32;
  for (std::size_t start = 0; start < n; start += kBlock) {
    std::size_t end = std::min(n, start + kBlock);
    char32_t any = 0;
    for (std::size_t i = start; i < end; ++i) any |= text[i];
    if (any < 0x80) continue;
    // ASCII is lowered already and maps to itself in the direct table, so
    // the one branch left is the rare character beyond the table.
    for (std::size_t i = start; i < end; ++i) {
      char32_t c = text[i];
      text[i] = c < kDirectLowerLimit ? kDirectLower[c] : lowerChar(c);
    }
  }
}

constexpr bool noPunctuationFromBeyondAscii() {
  for (const LowerPair& pair : kLowerTable) {
    bool letter = (pair.lower >= U'a' && pair.lower <= U'z');
    if (pair.code >= 0x80 && pair.lower < 0x80 && !letter) return false;
  }
  return true;
}

// The byte search finds the first character of an opening marker as it
// stands, which holds only while no character beyond ASCII lower-cases to
// ASCII punctuation.
static_assert(noPunctuationFromBeyondAscii(), "the lower-case table maps onto ASCII punctuation");

}  // namespace

// Made from the sorted pairs when the program is compiled.
constexpr std::array<char32_t, kDirectLowerLimit> kDirectLower = [] {
  std::array<char32_t, kDirectLowerLimit> table{};
  for (char32_t c = 0; c < kDirectLowerLimit; ++c) table[c] = c;
  for (const LowerPair& pair : kLowerTable) {
    if (pair.code < kDirectLowerLimit) table[pair.code] = pair.lower;
  }
  return table;
}();

char32_t lowerChar(char32_t c) {
  if (c < kDirectLowerLimit) return kDirectLower[c];
  if (c == kAddedCr) return U'\r';
  if (c == kAddedLf) return U'\n';
  const LowerPair* end = std::end(kLowerTable);
  const LowerPair* at = std::lower_bound(std::begin(kLowerTable), end, c,
                                         [](const LowerPair& p, char32_t v) { return p.code < v; });
  return (at != end && at->code == c) ? at->lower : c;
}

void lowerInto(TextView text, Text& out) {
  out.resize(text.size());
  // Arithmetic lower-cases ASCII and leaves every other character as it is;
  // the few characters beyond ASCII are then mapped by the table.
  lowerAscii(text.data(), text.size(), out.data());
  lowerBeyondAscii(out.data(), out.size());
}

void plainLineEnds(Text& text) {
  for (char32_t& c : text) {
    if (c >= kAddedCr) c = lowerChar(c);
  }
}

Text lower(TextView text) {
  Text out;
  lowerInto(text, out);
  return out;
}

}  // namespace tagwright
