#include "platform/line_reader.h"

#include <cstring>

namespace tagwright {

LineReader::LineReader(ByteSource& source, std::size_t bufferSize)
    : source_(source), buffer_(bufferSize, '\0') {}

bool LineReader::fill() {
  if (exhausted_) return false;
  begin_ = 0;
  end_ = source_.read(buffer_.data(), buffer_.size());
  if (end_ == 0) exhausted_ = true;
  return end_ > 0;
}

bool LineReader::endOfFile() { return begin_ == end_ && !fill(); }

void LineReader::readLine(std::string& out) {
  for (;;) {
    if (begin_ == end_ && !fill()) return;
    const char* start = buffer_.data() + begin_;
    const void* cr = std::memchr(start, '\r', end_ - begin_);
    if (cr == nullptr) {
      // The line runs over the end of the buffer.
      out.append(start, end_ - begin_);
      begin_ = end_;
      continue;
    }
    std::size_t length = static_cast<std::size_t>(static_cast<const char*>(cr) - start);
    out.append(start, length);
    begin_ += length + 1;
    // The LF of a CR LF may lie in the next block.
    if (begin_ == end_) fill();
    if (begin_ < end_ && buffer_[begin_] == '\n') ++begin_;
    return;
  }
}

}  // namespace tagwright
