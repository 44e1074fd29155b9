#include "files/read_next_chunk.h"

#include <algorithm>
#include <cstring>

namespace tagwright {
namespace {

// The characters of a chunk, counted as its lines come in. A byte gives at
// most one character, so the bytes not yet counted bound what they add, and
// counting waits until that bound could reach the threshold: most of a chunk
// is then counted in one long run rather than line by line.
class CharacterCount {
 public:
  explicit CharacterCount(const std::string& bytes) : bytes_(bytes) {}

  bool below(std::size_t threshold) {
    if (counted_ + (bytes_.size() - countedBytes_) < threshold) return true;
    return total() < threshold;
  }
  // The length the bytes may grow to, while below(threshold), before their
  // characters could reach it.
  std::size_t safeLength(std::size_t threshold) const {
    return countedBytes_ + (threshold - counted_);
  }
  std::size_t total() {
    counted_ += decodedLength(std::string_view(bytes_).substr(countedBytes_));
    countedBytes_ = bytes_.size();
    return counted_;
  }

 private:
  const std::string& bytes_;
  std::size_t counted_ = 0;
  std::size_t countedBytes_ = 0;
};

// The extension test: the last five characters of the chunk, less CR, LF
// and TAB, trimmed of blanks, end in ">". Read from the end, the first
// character that is none of those decides. A byte beyond ASCII belongs to a
// character beyond ASCII, which decides for "no" wherever it begins.
bool endsInTagEnd(std::string_view bytes) {
  constexpr std::size_t kWindow = 5;
  std::size_t seen = 0;
  for (auto at = bytes.rbegin(); at != bytes.rend() && seen < kWindow; ++at, ++seen) {
    char c = *at;
    if (c == '\r' || c == '\n' || c == '\t' || c == ' ') continue;
    return c == '>';
  }
  return false;
}

}  // namespace

void readNextChunk(Platform& platform, Int16 fileNumber, std::int32_t bufferLength,
                   LineEnds lineEnds, Chunk& chunk, std::optional<Failure>* readFailure) {
  chunk.bytes.clear();
  chunk.characters = 0;
  chunk.addedLineEnds.clear();
  chunk.keptAddedLineEnds.clear();
  std::vector<std::size_t>& added =
      lineEnds == LineEnds::kAny ? chunk.addedLineEnds : chunk.keptAddedLineEnds;
  try {
    const std::size_t threshold = bufferLength > 0 ? static_cast<std::size_t>(bufferLength) : 0;
    CharacterCount count(chunk.bytes);
    // Lines come in bulk up to the length at which the threshold could be
    // reached, then one at a time, counted, until it is.
    while (count.below(threshold) && !platform.endOfFile(fileNumber)) {
      const std::size_t oneLine = chunk.bytes.size() + 1;
      platform.readLines(fileNumber, chunk.bytes, std::max(oneLine, count.safeLength(threshold)),
                         lineEnds, added);
    }
    if (!platform.endOfFile(fileNumber)) {
      for (int extension = 0; extension <= 4; ++extension) {
        if (endsInTagEnd(chunk.bytes) || platform.endOfFile(fileNumber)) break;
        platform.readLines(fileNumber, chunk.bytes, chunk.bytes.size() + 1, lineEnds, added);
      }
    }
    chunk.characters = count.total();
  } catch (const Failure& failure) {
    chunk.bytes.clear();
    chunk.characters = 0;
    chunk.addedLineEnds.clear();
    chunk.keptAddedLineEnds.clear();
    if (readFailure != nullptr) *readFailure = failure;
  }
}

}  // namespace tagwright

namespace tagwright {
namespace {

// The first added line-end byte at or after `from`.
std::vector<std::size_t>::const_iterator firstAddedFrom(const Chunk& chunk, std::size_t from) {
  return std::lower_bound(chunk.addedLineEnds.begin(), chunk.addedLineEnds.end(), from);
}

// Pieces between added bytes are copied kPieceBlock bytes at a time, which
// may run past the piece: the next piece, or the room left behind the
// output, takes what runs over. A chunk of short lines has a piece every few
// bytes, each too short for a call to memcpy to pay.
constexpr std::size_t kPieceBlock = 64;

// Copies [from, to) to `target`, and maybe bytes behind it up to a block;
// reads at most up to `readable`.
inline void copyPiece(char* target, const char* from, const char* to, const char* readable) {
  if (readable - to < static_cast<std::ptrdiff_t>(kPieceBlock)) {
    std::memcpy(target, from, static_cast<std::size_t>(to - from));
    return;
  }
  do {
    std::memcpy(target, from, kPieceBlock);
    target += kPieceBlock;
    from += kPieceBlock;
  } while (from < to);
}

}  // namespace

void appendDocumentBytes(const Chunk& chunk, std::size_t from, std::size_t to, std::string& out) {
  const auto first = firstAddedFrom(chunk, from);
  const auto last = std::lower_bound(first, chunk.addedLineEnds.end(), to);
  // Room made once, with a block behind it for the last piece to run into.
  const std::size_t at = out.size();
  const std::size_t length = (to - from) - static_cast<std::size_t>(last - first);
  out.resize(at + length + kPieceBlock);
  char* target = out.data() + at;
  const char* const bytes = chunk.bytes.data();
  const char* const readable = bytes + chunk.bytes.size();
  for (auto added = first; added != last; ++added) {
    copyPiece(target, bytes + from, bytes + *added, readable);
    target += *added - from;
    from = *added + 1;
  }
  copyPiece(target, bytes + from, bytes + to, readable);
  out.resize(at + length);
}

void appendChunkCharacters(const Chunk& chunk, std::size_t from, std::size_t to, Text& out) {
  const std::string_view bytes = chunk.bytes;
  for (auto added = firstAddedFrom(chunk, from); added != chunk.addedLineEnds.end() && *added < to;
       ++added) {
    appendDecoded(bytes.substr(from, *added - from), out);
    out.push_back(bytes[*added] == '\r' ? kAddedCr : kAddedLf);
    from = *added + 1;
  }
  appendDecoded(bytes.substr(from, to - from), out);
}

}  // namespace tagwright
