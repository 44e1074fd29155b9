#ifndef TAGWRIGHT_FILES_READ_NEXT_CHUNK_H_
#define TAGWRIGHT_FILES_READ_NEXT_CHUNK_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/failure.h"
#include "platform/int16.h"
#include "platform/platform.h"
#include "platform/text.h"
#include "tagwright/plain_types.h"

namespace tagwright {

// A chunk as read: the bytes of its lines, each followed by CR LF, and the
// number of characters they decode to. Kept as bytes so that a chunk in
// which nothing is found is neither decoded nor encoded again.
//
// When LF alone ends a line too, `addedLineEnds` holds the offsets in
// `bytes`, ascending, of the CR and LF bytes that the document does not hold
// (a lone LF gains a CR in front, a lone CR an LF behind, a last line
// without a line end both). Every search runs on `bytes`; what is cut for a
// result or a rewrite leaves these bytes out, so that it holds the
// document's own line ends. It is empty in the default mode.
//
// In the default mode results keep the chunk's CR LF, yet the document
// holds a lone CR where the chunk holds CR LF, and no line end behind a
// last line without one: `keptAddedLineEnds` holds the offsets of those
// added bytes, so that a position in the chunk can be told in the document.
// It is empty with LineEnds::kAny.
struct Chunk {
  std::string bytes;
  std::size_t characters = 0;
  std::vector<std::size_t> addedLineEnds;
  std::vector<std::size_t> keptAddedLineEnds;

  bool empty() const { return bytes.empty(); }
  // The offsets of the bytes the document does not hold, in either mode.
  const std::vector<std::size_t>& bytesNotInDocument() const {
    return addedLineEnds.empty() ? keptAddedLineEnds : addedLineEnds;
  }
};

// Appends bytes[from, to) of `chunk` as the document holds them: without
// the added line-end bytes.
void appendDocumentBytes(const Chunk& chunk, std::size_t from, std::size_t to, std::string& out);
// Appends the characters of bytes[from, to) of `chunk`, each added CR or LF
// as kAddedCr or kAddedLf. REQUIRES: `from` and `to` begin characters.
void appendChunkCharacters(const Chunk& chunk, std::size_t from, std::size_t to, Text& out);

// Makes `chunk` the next chunk of the open file: whole lines, each followed
// by CR LF whatever its line end was, together at least `bufferLength`
// characters unless the file ended, and then up to five more lines until the
// last of them ends in ">" (with at most two blanks or tabs behind it). An
// empty chunk means the document has ended. With LineEnds::kAny a lone LF
// ends a line too, and the chunk records the line-end bytes it added.
//
// A failed read also gives the empty chunk, dropping what was collected; the
// failure is stored in `readFailure` when the caller gives one, so that a
// rewrite can tell it from the end of the document.
void readNextChunk(Platform& platform, Int16 fileNumber, std::int32_t bufferLength,
                   LineEnds lineEnds, Chunk& chunk, std::optional<Failure>* readFailure = nullptr);

}  // namespace tagwright

#endif  // TAGWRIGHT_FILES_READ_NEXT_CHUNK_H_
