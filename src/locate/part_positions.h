#ifndef TAGWRIGHT_LOCATE_PART_POSITIONS_H_
#define TAGWRIGHT_LOCATE_PART_POSITIONS_H_

#include <cstddef>
#include <cstdint>

#include "files/read_next_chunk.h"
#include "tagwright/plain_types.h"

namespace tagwright {

// Follows a scan through its document to tell where a byte of a chunk lies
// in the document: its byte offset there (the added line-end bytes left
// out), line and column. It counts each chunk once, as the scan passes on,
// so a scan that asks nothing of it pays one pass over its chunks.
class PartPositions {
 public:
  PartPositions(const Chunk& chunk, LineEnds lineEnds) : chunk_(chunk), lineEnds_(lineEnds) {}

  // The chunk is about to be replaced by the next one: its rest is counted.
  void leaveChunk();
  // Where the chunk's byte `offset` lies. REQUIRES: within one chunk the
  // offsets asked for do not decrease.
  TextPosition at(std::size_t offset);

 private:
  void advanceTo(std::size_t offset);

  const Chunk& chunk_;
  const LineEnds lineEnds_;
  std::uint64_t chunkStartByte_ = 0;  // of the document, where the chunk begins
  std::size_t cursor_ = 0;            // in the chunk's bytes, counted up to here
  std::uint64_t line_ = 1;
  std::uint64_t column_ = 1;
};

}  // namespace tagwright

#endif  // TAGWRIGHT_LOCATE_PART_POSITIONS_H_
