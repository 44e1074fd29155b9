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

namespace {

// Decodes `utf8` into `target`, which has room for a character per byte;
// returns the number of characters written.
std::size_t decodeTo(std::string_view utf8, char32_t* target) {
  const std::size_t n = utf8.size();
  const unsigned char* source = reinterpret_cast<const unsigned char*>(utf8.data());
  if (isAscii(source, n)) {
    widen(source, n, target);
    return n;
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
  return written;
}

// The character at byte `i`, which begins one; returns its length in bytes.
std::size_t decodeCharacter(std::string_view utf8, std::size_t i, char32_t& out) {
  unsigned char b = byteAt(utf8, i);
  if (b < 0x80) {
    out = b;
    return 1;
  }
  std::size_t length = decodeSequence(utf8, i, out);
  if (length != 0) return length;
  out = kRawByteBase + b;
  return 1;
}

}  // namespace

void appendDecoded(std::string_view utf8, Text& out) {
  // Every byte gives at most one character: size the text once, write through
  // a pointer, and cut it back at the end.
  const std::size_t base = out.size();
  out.resize(base + utf8.size());
  out.resize(base + decodeTo(utf8, out.data() + base));
}

void decodeInto(std::string_view utf8, Text& out) {
  // Resized from its former length rather than cleared: the chunks of one
  // document are of a size, so the storage is seldom filled with zeros.
  out.resize(utf8.size());
  out.resize(decodeTo(utf8, out.data()));
}

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

// For well-formed UTF-8 the characters are the bytes that are no
// continuation bytes. Returns false, leaving `characters` alone, when
// `bytes` is not well formed, where every byte has to be looked at in turn.
TAGWRIGHT_VECTOR_CLONES bool countWellFormed(const unsigned char* bytes, std::size_t n,
                                             std::size_t& characters) {
  if (n < 3) return false;
  bool bad = misplaced(bytes[0], 0, 0, 0) | misplaced(bytes[1], bytes[0], 0, 0) |
             misplaced(bytes[2], bytes[1], bytes[0], 0);
  // A sequence must not run over the end.
  bad |= (bytes[n - 1] >= 0xC0) | (bytes[n - 2] >= 0xE0) | (bytes[n - 3] >= 0xF0);
  std::size_t continuations = static_cast<std::size_t>((bytes[0] & 0xC0) == 0x80) +
                              static_cast<std::size_t>((bytes[1] & 0xC0) == 0x80) +
                              static_cast<std::size_t>((bytes[2] & 0xC0) == 0x80);
  constexpr std::size_t kBlock = 1024;
  for (std::size_t start = 3; start < n; start += kBlock) {
    const std::size_t end = std::min(n, start + kBlock);
    unsigned char blockBad = 0;
    unsigned blockContinuations = 0;
    for (std::size_t i = start; i < end; ++i) {
      blockBad |= static_cast<unsigned char>(
          misplaced(bytes[i], bytes[i - 1], bytes[i - 2], bytes[i - 3]));
      blockContinuations += static_cast<unsigned>((bytes[i] & 0xC0) == 0x80);
    }
    bad |= blockBad != 0;
    continuations += blockContinuations;
  }
  if (bad) return false;
  characters = n - continuations;
  return true;
}

// Counts as decodeTo decodes, for text that is not well formed.
std::size_t countDecoded(std::string_view utf8) {
  const std::size_t n = utf8.size();
  const unsigned char* source = reinterpret_cast<const unsigned char*>(utf8.data());
  std::size_t i = 0;
  std::size_t count = 0;
  while (i < n) {
    if (i + 8 <= n) {
      std::uint64_t word;
      std::memcpy(&word, source + i, 8);
      std::uint64_t high = word & 0x8080808080808080ull;
      if (high == 0) {
        i += 8;
        count += 8;
        continue;
      }
      std::size_t ascii = static_cast<std::size_t>(std::countr_zero(high)) / 8;
      i += ascii;
      count += ascii;
    } else if (source[i] < 0x80) {
      ++i;
      ++count;
      continue;
    }
    unsigned char b = source[i];
    if (b >= 0xC2 && b <= 0xDF && i + 1 < n && isContinuation(source[i + 1])) {
      i += 2;
    } else {
      char32_t code;
      std::size_t length = decodeSequence(utf8, i, code);
      i += length == 0 ? 1 : length;
    }
    ++count;
  }
  return count;
}

}  // namespace

std::size_t decodedLength(std::string_view utf8) {
  std::size_t characters;
  if (countWellFormed(reinterpret_cast<const unsigned char*>(utf8.data()), utf8.size(),
                      characters)) {
    return characters;
  }
  return countDecoded(utf8);
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

namespace {

// The first byte at or after `from` that may begin `lowerWhat` in the
// lower-cased text: `first` followed by `second` or its capital, or by any
// byte beyond ASCII, whose character is told only when decoded. Blocks of
// bytes are tested whole, so that the many "<" of markup that begin some
// other tag cost no branch each. Returns `n` when there is none.
TAGWRIGHT_VECTOR_CLONES std::size_t nextPairCandidate(const unsigned char* bytes, std::size_t n,
                                                      std::size_t from, unsigned char first,
                                                      unsigned char second, unsigned char fold) {
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
  static_assert(noPunctuationFromBeyondAscii(), "the lower-case table maps onto ASCII punctuation");
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

bool holdsLowered(std::string_view utf8, TextView lowerWhat) {
  return findLowered(utf8, lowerWhat, 0) != std::string_view::npos;
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
