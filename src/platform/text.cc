#include "platform/text.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <cwchar>
#include <iterator>

namespace tagwright {
namespace {

struct LowerPair {
  char32_t code;
  char32_t lower;
};

constexpr LowerPair kLowerTable[] = {
#include "lowercase_table.inc"
};

// The plain loops below are what the compiler vectorises; on x86-64 they are
// built twice, for AVX2 and for the baseline, and picked when loaded.
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__)
#define TAGWRIGHT_VECTOR_CLONES __attribute__((target_clones("avx2", "default")))
#else
#define TAGWRIGHT_VECTOR_CLONES
#endif

TAGWRIGHT_VECTOR_CLONES bool isAscii(const unsigned char* bytes, std::size_t n) {
  unsigned char any = 0;
  for (std::size_t i = 0; i < n; ++i) any |= bytes[i];
  return any < 0x80;
}

TAGWRIGHT_VECTOR_CLONES void widen(const unsigned char* bytes, std::size_t n, char32_t* target) {
  for (std::size_t i = 0; i < n; ++i) target[i] = bytes[i];
}

TAGWRIGHT_VECTOR_CLONES void narrow(const char32_t* text, std::size_t n, unsigned char* target) {
  for (std::size_t i = 0; i < n; ++i) target[i] = static_cast<unsigned char>(text[i]);
}

TAGWRIGHT_VECTOR_CLONES std::size_t encodedSize(const char32_t* text, std::size_t n) {
  std::size_t bytes = n;
  for (std::size_t i = 0; i < n; ++i) {
    char32_t c = text[i];
    // A raw byte lies above every code point and is written as one byte.
    bool raw = c >= kRawByteBase;
    bytes += static_cast<std::size_t>(!raw) *
             (static_cast<std::size_t>(c >= 0x80) + static_cast<std::size_t>(c >= 0x800) +
              static_cast<std::size_t>(c >= 0x10000));
  }
  return bytes;
}

TAGWRIGHT_VECTOR_CLONES bool isAsciiText(const char32_t* text, std::size_t n) {
  char32_t any = 0;
  for (std::size_t i = 0; i < n; ++i) any |= text[i];
  return any < 0x80;
}

TAGWRIGHT_VECTOR_CLONES void lowerAscii(const char32_t* text, std::size_t n, char32_t* target) {
  for (std::size_t i = 0; i < n; ++i) {
    char32_t c = text[i];
    target[i] = c + ((c - U'A' < 26u) ? 32u : 0u);
  }
}

unsigned char byteAt(std::string_view s, std::size_t i) { return static_cast<unsigned char>(s[i]); }

bool isContinuation(unsigned char b) { return (b & 0xC0) == 0x80; }

// Decodes one well-formed sequence at `i`, or returns 0 when the bytes there
// are not one (the caller then takes the lead byte as a raw byte).
std::size_t decodeSequence(std::string_view s, std::size_t i, char32_t& out) {
  unsigned char lead = byteAt(s, i);
  std::size_t length;
  char32_t code;
  char32_t minimum;
  if (lead >= 0xC2 && lead <= 0xDF) {
    length = 2, code = lead & 0x1Fu, minimum = 0x80;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    length = 3, code = lead & 0x0Fu, minimum = 0x800;
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    length = 4, code = lead & 0x07u, minimum = 0x10000;
  } else {
    return 0;
  }
  if (i + length > s.size()) return 0;
  for (std::size_t k = 1; k < length; ++k) {
    unsigned char b = byteAt(s, i + k);
    if (!isContinuation(b)) return 0;
    code = (code << 6) | (b & 0x3Fu);
  }
  if (code < minimum || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) return 0;
  out = code;
  return length;
}

// How common a character is in markup and prose, lower being rarer: the
// search scans for the rarest character of what it looks for ("v" of
// "<div", "%" of "<%"), so that it stops at few false candidates.
int commonness(char32_t c) {
  // English letters by frequency, most common first.
  static constexpr std::u32string_view kLetters = U"etaoinsrhldcumfpgwybvkxjqz";
  if (c == U' ' || c == U'<' || c == U'>' || c == U'"' || c == U'=' || c == U'/' || c == U'\r' ||
      c == U'\n') {
    return 100;
  }
  if (c >= U'a' && c <= U'z') return 60 - static_cast<int>(kLetters.find(c));
  if (c >= U'0' && c <= U'9') return 30;
  return 10;
}

std::size_t anchorOf(TextView what) {
  std::size_t best = 0;
  for (std::size_t k = 1; k < what.size(); ++k) {
    if (commonness(what[k]) < commonness(what[best])) best = k;
  }
  return best;
}

// The first occurrence of `c` in [begin, end), by the C library's vectorised
// wide-character search (wchar_t is the same 32-bit unit as char32_t here).
const char32_t* findChar(const char32_t* begin, const char32_t* end, char32_t c) {
  static_assert(sizeof(wchar_t) == sizeof(char32_t));
  if (begin >= end) return nullptr;
  const wchar_t* hit = std::wmemchr(reinterpret_cast<const wchar_t*>(begin),
                                    static_cast<wchar_t>(c), static_cast<std::size_t>(end - begin));
  return reinterpret_cast<const char32_t*>(hit);
}

std::size_t findFrom(TextView text, TextView what, std::size_t start) {
  const std::size_t m = what.size();
  if (m == 0) return start;
  if (text.size() - start < m) return TextView::npos;
  const std::size_t k = anchorOf(what);
  const char32_t* first = text.data() + start;
  // The last place where `what` can begin.
  const char32_t* last = text.data() + (text.size() - m);
  const char32_t* scan = first + k;
  while (const char32_t* hit = findChar(scan, last + k + 1, what[k])) {
    const char32_t* candidate = hit - k;
    if (std::equal(what.begin(), what.end(), candidate)) {
      return static_cast<std::size_t>(candidate - text.data());
    }
    scan = hit + 1;
  }
  return TextView::npos;
}

}  // namespace

void appendDecoded(std::string_view utf8, Text& out) {
  // Every byte gives at most one character: size the text once, write through
  // a pointer, and cut it back at the end.
  const std::size_t base = out.size();
  const std::size_t n = utf8.size();
  out.resize(base + n);
  char32_t* target = out.data() + base;
  const unsigned char* source = reinterpret_cast<const unsigned char*>(utf8.data());
  if (isAscii(source, n)) {
    widen(source, n, target);
    return;
  }
  std::size_t i = 0;
  std::size_t written = 0;
  while (i < n) {
    if (i + 8 <= n) {
      // Widen eight bytes at once and keep the ASCII ones in front of the
      // first byte beyond ASCII; the rest is written again behind. Since no
      // character takes less than a byte, the eight slots are there.
      std::uint64_t word;
      std::memcpy(&word, source + i, 8);
      for (std::size_t k = 0; k < 8; ++k) target[written + k] = source[i + k];
      std::uint64_t high = word & 0x8080808080808080ull;
      if (high == 0) {
        i += 8;
        written += 8;
        continue;
      }
      std::size_t ascii = static_cast<std::size_t>(std::countr_zero(high)) / 8;
      i += ascii;
      written += ascii;
    } else if (source[i] < 0x80) {
      target[written++] = source[i++];
      continue;
    }
    unsigned char b = source[i];
    // Two-byte sequences (Latin, Greek, Cyrillic) inline; the rest checked whole.
    if (b >= 0xC2 && b <= 0xDF && i + 1 < n && isContinuation(source[i + 1])) {
      target[written++] = (char32_t{b & 0x1Fu} << 6) | (source[i + 1] & 0x3Fu);
      i += 2;
      continue;
    }
    char32_t code;
    std::size_t length = decodeSequence(utf8, i, code);
    if (length == 0) {
      target[written++] = kRawByteBase + b;
      ++i;
    } else {
      target[written++] = code;
      i += length;
    }
  }
  out.resize(base + written);
}

Text fromUtf8(std::string_view utf8) {
  Text text;
  appendDecoded(utf8, text);
  return text;
}

void appendEncoded(TextView text, std::string& out) {
  const std::size_t base = out.size();
  if (isAsciiText(text.data(), text.size())) {
    out.resize(base + text.size());
    narrow(text.data(), text.size(), reinterpret_cast<unsigned char*>(out.data() + base));
    return;
  }
  const std::size_t bytes = encodedSize(text.data(), text.size());
  out.resize(base + bytes);
  unsigned char* target = reinterpret_cast<unsigned char*>(out.data() + base);
  std::size_t n = 0;
  std::size_t i = 0;
  while (i < text.size()) {
    if (i + 8 <= text.size()) {
      // Narrow eight characters at once and keep the ASCII ones in front of
      // the first one beyond; every character left takes a byte or more, so
      // the eight bytes are there.
      unsigned mask = 0;
      for (unsigned k = 0; k < 8; ++k) {
        target[n + k] = static_cast<unsigned char>(text[i + k]);
        mask |= static_cast<unsigned>(text[i + k] >= 0x80) << k;
      }
      std::size_t ascii = mask == 0 ? 8 : static_cast<std::size_t>(std::countr_zero(mask));
      i += ascii;
      n += ascii;
      if (ascii == 8) continue;
    }
    char32_t c = text[i++];
    if (c < 0x80) {
      target[n++] = static_cast<unsigned char>(c);
    } else if (c < 0x800) {
      target[n++] = static_cast<unsigned char>(0xC0 | (c >> 6));
      target[n++] = static_cast<unsigned char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
      target[n++] = static_cast<unsigned char>(0xE0 | (c >> 12));
      target[n++] = static_cast<unsigned char>(0x80 | ((c >> 6) & 0x3F));
      target[n++] = static_cast<unsigned char>(0x80 | (c & 0x3F));
    } else if (c < kRawByteBase) {
      target[n++] = static_cast<unsigned char>(0xF0 | (c >> 18));
      target[n++] = static_cast<unsigned char>(0x80 | ((c >> 12) & 0x3F));
      target[n++] = static_cast<unsigned char>(0x80 | ((c >> 6) & 0x3F));
      target[n++] = static_cast<unsigned char>(0x80 | (c & 0x3F));
    } else {
      target[n++] = static_cast<unsigned char>(c - kRawByteBase);
    }
  }
}

std::string toUtf8(TextView text) {
  std::string out;
  appendEncoded(text, out);
  return out;
}

namespace {

// The mapping of the first 1280 characters (Latin, Greek, Cyrillic) as a
// direct table, made from the sorted pairs when the program is compiled.
constexpr char32_t kDirectLimit = 0x500;
constexpr std::array<char32_t, kDirectLimit> kDirectLower = [] {
  std::array<char32_t, kDirectLimit> table{};
  for (char32_t c = 0; c < kDirectLimit; ++c) table[c] = c;
  for (const LowerPair& pair : kLowerTable) {
    if (pair.code < kDirectLimit) table[pair.code] = pair.lower;
  }
  return table;
}();

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
      text[i] = c < kDirectLimit ? kDirectLower[c] : lowerChar(c);
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

}  // namespace

char32_t lowerChar(char32_t c) {
  if (c < kDirectLimit) return kDirectLower[c];
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
  if (!isAsciiText(text.data(), text.size())) lowerBeyondAscii(out.data(), out.size());
}

Text lower(TextView text) {
  Text out;
  lowerInto(text, out);
  return out;
}

Int16 searchFrom(TextView text, TextView what, Int16 from) {
  if (from.value() < 1) throw Failure::invalidArgument();
  std::size_t start = from.index();
  if (start >= text.size()) return 0;
  std::size_t at = findFrom(text, what, start);
  if (at == TextView::npos) return 0;
  return Int16::fromSize(at + 1);
}

bool holdsLowered(TextView text, TextView lowerWhat) {
  if (lowerWhat.empty()) return true;
  // Only an ASCII letter has a capital, and no character beyond ASCII
  // lower-cases to ASCII punctuation, so the first character is found as it is.
  static_assert(noPunctuationFromBeyondAscii(), "the lower-case table maps onto ASCII punctuation");
  const char32_t* end = text.data() + text.size();
  const char32_t* at = text.data();
  while (const char32_t* hit = findChar(at, end, lowerWhat[0])) {
    if (static_cast<std::size_t>(end - hit) < lowerWhat.size()) return false;
    std::size_t k = 1;
    while (k < lowerWhat.size() && lowerChar(hit[k]) == lowerWhat[k]) ++k;
    if (k == lowerWhat.size()) return true;
    at = hit + 1;
  }
  return false;
}

TextView left(TextView text, Int16 count) {
  if (count.value() < 0) throw Failure::invalidArgument();
  return text.substr(0, static_cast<std::size_t>(count.value()));
}

TextView right(TextView text, Int16 count) {
  if (count.value() < 0) throw Failure::invalidArgument();
  std::size_t n = std::min(text.size(), static_cast<std::size_t>(count.value()));
  return text.substr(text.size() - n);
}

TextView mid(TextView text, Int16 start) {
  if (start.value() < 1) throw Failure::invalidArgument();
  if (start.index() >= text.size()) return {};
  return text.substr(start.index());
}

TextView mid(TextView text, Int16 start, Int16 count) {
  if (start.value() < 1 || count.value() < 0) throw Failure::invalidArgument();
  if (start.index() >= text.size()) return {};
  return text.substr(start.index(), static_cast<std::size_t>(count.value()));
}

TextView trim(TextView text) {
  std::size_t first = text.find_first_not_of(kBlank);
  if (first == TextView::npos) return {};
  std::size_t last = text.find_last_not_of(kBlank);
  return text.substr(first, last - first + 1);
}

}  // namespace tagwright
