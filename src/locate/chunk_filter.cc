#include "locate/chunk_filter.h"

#include <cstring>

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

}  // namespace

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

bool ChunkFilter::startTagIsInstance(std::string_view tag) {
  decodeLoweredInto(tag, tagLower_);
  Int16 contentStart = 1;
  return type_.matcher(query_, tagLower_, contentStart, closeMarker_);
}

}  // namespace tagwright
