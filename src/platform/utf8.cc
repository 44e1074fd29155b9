#include "platform/utf8.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

#include "platform/lower_case.h"
#include "platform/text.h"
#include "platform/vector_clones.h"
#include "platform/well_formed_utf8.h"

namespace tagwright {
namespace {

TAGWRIGHT_VECTOR_CLONES bool isAscii(const unsigned char* bytes, std::size_t n) {
  unsigned char any = 0;
  for (std::size_t i = 0; i < n; ++i) any |= bytes[i];
  return any < 0x80;
}

TAGWRIGHT_VECTOR_CLONES void widen(const unsigned char* bytes, std::size_t n, char32_t* target) {
  for (std::size_t i = 0; i < n; ++i) target[i] = bytes[i];
}

// An ASCII byte lower-cased: a capital letter gains 32, any other stays.
inline char32_t lowerAsciiByte(unsigned char b) {
  return char32_t{b} + ((b - unsigned{'A'} < 26u) ? 32u : 0u);
}

TAGWRIGHT_VECTOR_CLONES void widenLowered(const unsigned char* bytes, std::size_t n,
                                          char32_t* target) {
  for (std::size_t i = 0; i < n; ++i) target[i] = lowerAsciiByte(bytes[i]);
}

TAGWRIGHT_VECTOR_CLONES void narrow(const char32_t* text, std::size_t n, unsigned char* target) {
  for (std::size_t i = 0; i < n; ++i) target[i] = static_cast<unsigned char>(text[i]);
}

TAGWRIGHT_VECTOR_CLONES std::size_t encodedSize(const char32_t* text, std::size_t n) {
  std::size_t bytes = n;
  for (std::size_t i = 0; i < n; ++i) {
    char32_t c = text[i];
    // A raw byte lies above every code point and is written as one byte; an
    // added line end lies above those and is written as none.
    bool raw = c >= kRawByteBase;
    bytes += static_cast<std::size_t>(!raw) *
             (static_cast<std::size_t>(c >= 0x80) + static_cast<std::size_t>(c >= 0x800) +
              static_cast<std::size_t>(c >= 0x10000));
    bytes -= static_cast<std::size_t>(c >= kAddedCr);
  }
  return bytes;
}

TAGWRIGHT_VECTOR_CLONES bool isAsciiText(const char32_t* text, std::size_t n) {
  char32_t any = 0;
  for (std::size_t i = 0; i < n; ++i) any |= text[i];
  return any < 0x80;
}

unsigned char byteAt(std::string_view s, std::size_t i) { return static_cast<unsigned char>(s[i]); }

bool isContinuation(unsigned char b) { return (b & 0xC0) == 0x80; }

// Decodes `utf8` into `target`, which has room for a character per byte;
// returns the number of characters written. With kLowered the characters
// are written lower-cased; with `offsets`, which has the same room, the byte
// where each one begins is written too.
template <bool kLowered, bool kWithOffsets>
std::size_t decodeTo(std::string_view utf8, char32_t* target, std::uint32_t* offsets) {
  const std::size_t n = utf8.size();
  const unsigned char* source = reinterpret_cast<const unsigned char*>(utf8.data());
  if (isAscii(source, n)) {
    if constexpr (kLowered) {
      widenLowered(source, n, target);
    } else {
      widen(source, n, target);
    }
    if constexpr (kWithOffsets) {
      for (std::size_t k = 0; k < n; ++k) offsets[k] = static_cast<std::uint32_t>(k);
    }
    return n;
  }
  std::size_t i = 0;
  std::size_t written = 0;
  auto put = [&](char32_t c, std::size_t at) {
    if constexpr (kLowered) c = lowerCharInline(c);
    target[written] = c;
    if constexpr (kWithOffsets) offsets[written] = static_cast<std::uint32_t>(at);
    ++written;
  };
  while (i < n) {
    if (i + 8 <= n) {
      // Widen eight bytes at once and keep the ASCII ones in front of the
      // first byte beyond ASCII; the rest is written again behind. Since no
      // character takes less than a byte, the eight slots are there.
      std::uint64_t word;
      std::memcpy(&word, source + i, 8);
      for (std::size_t k = 0; k < 8; ++k) {
        target[written + k] = kLowered ? lowerAsciiByte(source[i + k]) : source[i + k];
      }
      if constexpr (kWithOffsets) {
        for (std::size_t k = 0; k < 8; ++k)
          offsets[written + k] = static_cast<std::uint32_t>(i + k);
      }
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
      put(kLowered ? lowerAsciiByte(source[i]) : source[i], i);
      ++i;
      continue;
    }
    unsigned char b = source[i];
    // Two-byte sequences (Latin, Greek, Cyrillic) inline; the rest checked whole.
    if (b >= 0xC2 && b <= 0xDF && i + 1 < n && isContinuation(source[i + 1])) {
      put((char32_t{b & 0x1Fu} << 6) | (source[i + 1] & 0x3Fu), i);
      i += 2;
      continue;
    }
    char32_t code;
    std::size_t length = decodeSequence(utf8, i, code);
    if (length == 0) {
      put(kRawByteBase + b, i);
      ++i;
    } else {
      put(code, i);
      i += length;
    }
  }
  return written;
}

// Counts as decodeTo decodes, character by character: for text that is not
// well formed, which is rare enough not to need a faster way.
std::size_t countDecoded(std::string_view utf8) {
  std::size_t count = 0;
  char32_t character;
  for (std::size_t i = 0; i < utf8.size(); ++count) i += decodeCharacter(utf8, i, character);
  return count;
}

}  // namespace

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

void appendDecoded(std::string_view utf8, Text& out) {
  // Every byte gives at most one character: size the text once, write through
  // a pointer, and cut it back at the end.
  const std::size_t base = out.size();
  out.resize(base + utf8.size());
  out.resize(base + decodeTo<false, false>(utf8, out.data() + base, nullptr));
}

void decodeInto(std::string_view utf8, Text& out) {
  // Resized from its former length rather than cleared: the chunks of one
  // document are of a size, so the storage is seldom filled with zeros.
  out.resize(utf8.size());
  out.resize(decodeTo<false, false>(utf8, out.data(), nullptr));
}

void decodeLoweredInto(std::string_view utf8, Text& lower) {
  lower.resize(utf8.size());
  lower.resize(decodeTo<true, false>(utf8, lower.data(), nullptr));
}

void decodeLoweredInto(std::string_view utf8, Text& lower, std::vector<std::uint32_t>& offsets) {
  lower.resize(utf8.size());
  offsets.resize(utf8.size() + 1);
  const std::size_t length = decodeTo<true, true>(utf8, lower.data(), offsets.data());
  lower.resize(length);
  offsets.resize(length + 1);
  offsets[length] = static_cast<std::uint32_t>(utf8.size());
}

std::size_t decodedLength(std::string_view utf8) {
  std::size_t characters;
  if (countWellFormed(utf8, characters)) return characters;
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
    if (i + 8 <= text.size() && n + 8 <= bytes) {
      // Narrow eight characters at once and keep the ASCII ones in front of
      // the first one beyond. (Added line ends take no byte, so the room for
      // eight is tested, not implied.)
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
    } else if (c < kAddedCr) {
      target[n++] = static_cast<unsigned char>(c - kRawByteBase);
    }
  }
}

std::string toUtf8(TextView text) {
  std::string out;
  appendEncoded(text, out);
  return out;
}

}  // namespace tagwright
