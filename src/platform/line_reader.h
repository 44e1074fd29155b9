#ifndef TAGWRIGHT_PLATFORM_LINE_READER_H_
#define TAGWRIGHT_PLATFORM_LINE_READER_H_

#include <cstddef>
#include <string>

namespace tagwright {

// Where a LineReader gets its bytes from.
class ByteSource {
 public:
  virtual ~ByteSource() = default;
  // Reads up to `capacity` bytes into `buffer`; 0 means the end. Throws
  // Failure when the read fails.
  virtual std::size_t read(char* buffer, std::size_t capacity) = 0;
};

// Splits a byte stream into lines: a line end is CR or CR LF; a lone LF is
// an ordinary character. Lines are appended to the caller's bytes, so that
// reading allocates nothing per line once the buffers are grown.
class LineReader {
 public:
  explicit LineReader(ByteSource& source, std::size_t bufferSize = 512 * 1024);

  // Appends the bytes of the next line to `out`. REQUIRES: !endOfFile().
  void readLine(std::string& out);
  // Appends lines, each followed by CR LF, until `out` holds at least
  // `untilSize` bytes or no byte is left.
  void readLines(std::string& out, std::size_t untilSize);
  // True when no byte is left, which may need a read to find out.
  bool endOfFile();

 private:
  bool fill();
  std::size_t wholeCrLfLines(std::size_t wanted) const;

  ByteSource& source_;
  std::string buffer_;
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
  bool exhausted_ = false;
};

}  // namespace tagwright

#endif  // TAGWRIGHT_PLATFORM_LINE_READER_H_
