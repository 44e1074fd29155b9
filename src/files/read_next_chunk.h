#ifndef TAGWRIGHT_FILES_READ_NEXT_CHUNK_H_
#define TAGWRIGHT_FILES_READ_NEXT_CHUNK_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "platform/failure.h"
#include "platform/int16.h"
#include "platform/platform.h"
#include "platform/text.h"

namespace tagwright {

// A chunk as read: the bytes of its lines, each followed by CR LF, and the
// number of characters they decode to. Kept as bytes so that a chunk in
// which nothing is found is neither decoded nor encoded again.
struct Chunk {
  std::string bytes;
  std::size_t characters = 0;

  bool empty() const { return bytes.empty(); }
};

// Makes `chunk` the next chunk of the open file: whole lines, each followed
// by CR LF whatever its line end was, together at least `bufferLength`
// characters unless the file ended, and then up to five more lines until the
// last of them ends in ">" (with at most two blanks or tabs behind it). An
// empty chunk means the document has ended.
//
// A failed read also gives the empty chunk, dropping what was collected; the
// failure is stored in `readFailure` when the caller gives one, so that a
// rewrite can tell it from the end of the document.
void readNextChunk(Platform& platform, Int16 fileNumber, std::int32_t bufferLength, Chunk& chunk,
                   std::optional<Failure>* readFailure = nullptr);

}  // namespace tagwright

#endif  // TAGWRIGHT_FILES_READ_NEXT_CHUNK_H_
