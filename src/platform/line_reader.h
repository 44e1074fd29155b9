#ifndef TAGWRIGHT_PLATFORM_LINE_READER_H_
#define TAGWRIGHT_PLATFORM_LINE_READER_H_

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "tagwright/plain_types.h"

namespace tagwright {

// Where a LineReader gets its bytes from.
class ByteSource {
 public:
  virtual ~ByteSource() = default;
  // Reads up to `capacity` bytes into `buffer`; 0 means the end. Throws
  // Failure when the read fails.
  virtual std::size_t read(char* buffer, std::size_t capacity) = 0;
  // The bytes that reads are still expected to give, 0 when not known.
  virtual std::size_t bytesLeft() const { return 0; }
  // True when the last read is known to have reached the end, so that no
  // read is needed to find it.
  virtual bool reachedEnd() const { return false; }
};

// Splits a byte stream into lines: a line end is CR or CR LF; a lone LF is
// an ordinary character. Lines are appended to the caller's bytes, so that
// reading allocates nothing per line once the buffers are grown.
class LineReader {
 public:
  explicit LineReader(ByteSource& source, std::size_t bufferSize = 512 * 1024);

  // How the file ends a line: the end of the file ends the last one when it
  // has no line end.
  enum class LineEnd { kCrLf, kCr, kNone };
  // Appends the bytes of the next line to `out`, and returns how the file
  // ends it. REQUIRES: !endOfFile().
  LineEnd readLine(std::string& out);
  // Appends lines, each followed by CR LF, until `out` holds at least
  // `untilSize` bytes or no byte is left. With LineEnds::kAny a lone LF
  // ends a line too.
  //
  // The offset in `out` of every byte of those CR LF that the file does not
  // hold is appended to `addedLineEnds`, in ascending order: the CR in front
  // of a lone LF's LF, the LF behind a lone CR, both behind a last line
  // without a line end.
  void readLines(std::string& out, std::size_t untilSize, LineEnds lineEnds,
                 std::vector<std::size_t>& addedLineEnds);
  // True when no byte is left, which may need a read to find out.
  bool endOfFile();

 private:
  bool fill();
  std::size_t wholeCrLfLines(std::size_t wanted) const;
  void makeRoomForLongLine(std::string& out, std::size_t more) const;
  void readLineAnyEnd(std::string& out, std::vector<std::size_t>& addedLineEnds);
  // Appends the whole lines ending in a lone LF that lie before the next CR
  // of the buffer, as readLines does, and returns how many; 0 when the next
  // CR is not known yet or no such line is whole in the buffer.
  std::size_t appendLfLines(std::string& out, std::size_t untilSize,
                            std::vector<std::size_t>& addedLineEnds);

  ByteSource& source_;
  // Made at the first read and not zero-filled: a reader is made for every
  // document opened, and most documents are much shorter than the buffer.
  std::unique_ptr<char[]> buffer_;
  const std::size_t capacity_;
  bool readBefore_ = false;
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
  // The first CR at or after begin_ in the buffer, end_ when there is none,
  // kUnknown before it is searched: most files that end lines with LF hold
  // no CR, and one search then serves every line of the buffer.
  static constexpr std::size_t kUnknown = static_cast<std::size_t>(-1);
  std::size_t nextCr_ = kUnknown;
  bool exhausted_ = false;
};

}  // namespace tagwright

#endif  // TAGWRIGHT_PLATFORM_LINE_READER_H_
