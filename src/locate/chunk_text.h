#ifndef TAGWRIGHT_LOCATE_CHUNK_TEXT_H_
#define TAGWRIGHT_LOCATE_CHUNK_TEXT_H_

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "platform/int16.h"
#include "platform/text.h"

namespace tagwright {

// The lower-cased characters of a chunk as the matchers and the scan see
// them. Every position they hold is 16-bit, so nothing past character 32,767
// can be found, cut or looked at without the overflow: of a longer chunk
// only the first characters are decoded (`lower`), and a search that finds
// nothing among them goes on in the chunk's bytes, only to raise the
// overflow where a search of all its characters would.
struct ChunkView {
  // A text that is the whole chunk (a start tag alone, for one).
  ChunkView(TextView wholeLower) : lower(wholeLower) {}  // NOLINT
  ChunkView(TextView firstLower, std::string_view allBytes, const std::uint32_t* firstOffsets)
      : lower(firstLower), bytes(allBytes), offsets(firstOffsets) {}

  // searchFrom on all of the chunk's lower-cased characters.
  Int16 search(TextView what, Int16 from) const;

  TextView lower;
  // Empty when `lower` is the whole chunk; else all of its bytes, and the
  // byte where each character of `lower` begins (and where the next does).
  std::string_view bytes;
  const std::uint32_t* offsets = nullptr;
};

// Decodes chunks for the scan: the whole chunk when it is short or `whole`
// is asked for, else the characters that a 16-bit position can reach and a
// few behind them, which the matchers may look at ahead of a position.
class LoweredChunk {
 public:
  void decode(std::string_view bytes, std::size_t characters, bool whole);

  const ChunkView& view() const { return view_; }
  // The number of characters of the whole chunk.
  std::size_t characters() const { return characters_; }
  // The byte where the character at `index` begins; the chunk's length for
  // its character count.
  std::size_t offset(std::size_t index) const;

 private:
  std::string_view bytes_;
  std::size_t characters_ = 0;
  Text lower_;
  std::vector<std::uint32_t> offsets_;
  ChunkView view_{TextView()};
};

}  // namespace tagwright

#endif  // TAGWRIGHT_LOCATE_CHUNK_TEXT_H_
