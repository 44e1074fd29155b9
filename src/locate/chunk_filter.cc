#include "locate/chunk_filter.h"

#include <array>
#include <cstring>

#include "locate/matchers/attributes_match.h"

namespace tagwright {
namespace {

// A scan reaches at most three characters past the end of its chunk (the
// search on behind a refused tag that ends it). In a chunk no longer than
// this every such position fits 16 bits, so no candidate can overflow.
constexpr std::size_t kLongestOverflowFreeChunk = 32767 - 3;

// The candidate's start tag: from its "<" through the first ">" behind it,
// or to the end of the chunk when there is none.
std::string_view startTagAt(std::string_view bytes, std::size_t at) {
  const void* close = std::memchr(bytes.data() + at, '>', bytes.size() - at);
  if (close == nullptr) return bytes.substr(at);
  return bytes.substr(
      at, static_cast<std::size_t>(static_cast<const char*>(close) - (bytes.data() + at)) + 1);
}

// The longest start tag tested on its bytes; a longer one is decoded.
constexpr std::size_t kLongestFoldedTag = 512;

}  // namespace

ChunkFilter::ChunkFilter(const Query& query, const ElementType& type) : query_(query), type_(type) {
  if (!type_.judgedByStartTag) return;
  for (const Text& pattern : attributePatterns(query))
    attributePatterns_.push_back(toUtf8(pattern));
}

bool ChunkFilter::mayHoldInstance(const Chunk& chunk) {
  const std::string_view bytes = chunk.bytes;
  std::size_t at = findLowered(bytes, type_.openMarker, 0);
  // Without a candidate nothing is searched behind the first search.
  if (at == std::string_view::npos) return false;
  if (!type_.judgedByStartTag || chunk.characters > kLongestOverflowFreeChunk) return true;
  // Each candidate's verdict is the matcher's on its start tag alone, which
  // is the verdict it gets in the whole chunk. The scan judges only some of
  // the candidates; when none of them all is an instance, it finds none.
  for (; at != std::string_view::npos; at = findLowered(bytes, type_.openMarker, at + 1)) {
    if (startTagIsInstance(startTagAt(bytes, at))) return true;
  }
  return false;
}

// Both matchers that judge by the start tag end with the attribute test,
// whose prepared text is what is left of the tag, lower-cased, behind a
// first stretch and without blanks: so when the whole tag, lower-cased and
// without blanks, holds none of the patterns, the tag is no instance. The
// test is made on the bytes of tags in ASCII alone, which lower-case byte by
// byte; beyond ASCII, "İ" and the Kelvin sign lower-case to "i" and "k".
bool ChunkFilter::mayPassAttributes(std::string_view tag) const {
  if (attributePatterns_.empty() || tag.size() > kLongestFoldedTag) return true;
  std::array<char, kLongestFoldedTag> folded;
  std::size_t length = 0;
  unsigned char beyondAscii = 0;
  for (char c : tag) {
    const auto b = static_cast<unsigned char>(c);
    beyondAscii |= b;
    folded[length] = static_cast<char>(b - unsigned{'A'} < 26u ? b + 32 : b);
    length += b != ' ';
  }
  if (beyondAscii >= 0x80) return true;
  const std::string_view text(folded.data(), length);
  for (const std::string& pattern : attributePatterns_) {
    if (text.find(pattern) != std::string_view::npos) return true;
  }
  return false;
}

bool ChunkFilter::startTagIsInstance(std::string_view tag) {
  if (!mayPassAttributes(tag)) return false;
  decodeLoweredInto(tag, tagLower_);
  Int16 contentStart = 1;
  return type_.matcher(query_, ChunkView(tagLower_), contentStart, closeMarker_);
}

}  // namespace tagwright
