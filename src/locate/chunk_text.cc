#include "locate/chunk_text.h"

#include <algorithm>

#include "locate/matchers/named_element_bytes.h"

namespace tagwright {
namespace {

// The characters decoded of a long chunk: every position up to 32,767, and
// room behind the last for what a matcher reads ahead of one (a comment's
// head of 12 characters is the longest).
constexpr std::size_t kDecodedCharacters = 32767 + 64;

}  // namespace

Int16 ChunkView::search(TextView what, Int16 from) const {
  const Int16 hit = searchFrom(lower, what, from);
  if (hit > 0 || bytes.empty()) return hit;
  // A hit that `lower` holds whole was found in it, so any other begins at
  // a character of its own beyond position 32,767, or runs past `lower`.
  const std::size_t start = std::min(from.index(), lower.size());
  const std::size_t at = findLowered(bytes, what, offsets[start]);
  if (at == std::string_view::npos) return 0;
  const std::uint32_t* const end = offsets + lower.size();
  if (at >= *end) throw Failure::overflow();
  const std::size_t index = static_cast<std::size_t>(std::upper_bound(offsets, end, at) - offsets);
  return Int16::fromSize(index);  // the position is the index plus one
}

void LoweredChunk::decode(std::string_view bytes, std::size_t characters, bool whole) {
  bytes_ = bytes;
  characters_ = characters;
  if (whole || characters <= kDecodedCharacters) {
    decodeLoweredInto(bytes, lower_, offsets_);
    view_ = ChunkView(lower_);
    return;
  }
  decodeLoweredInto(bytes.substr(0, charactersFrom(bytes, 0, kDecodedCharacters)), lower_,
                    offsets_);
  view_ = ChunkView(lower_, bytes, offsets_.data());
}

std::size_t LoweredChunk::offset(std::size_t index) const {
  if (index < offsets_.size()) return offsets_[index];
  if (index >= characters_) return bytes_.size();
  return charactersFrom(bytes_, offsets_.back(), index - lower_.size());
}

}  // namespace tagwright
