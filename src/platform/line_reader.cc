#include "platform/line_reader.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "platform/vector_clones.h"

namespace tagwright {

namespace {

// The first read of a document is short: a search whose parts stand near its
// top (a title, a meta tag) stops without reading the rest.
constexpr std::size_t kFirstRead = 8 * 1024;

}  // namespace

LineReader::LineReader(ByteSource& source, std::size_t bufferSize)
    : source_(source), capacity_(bufferSize) {}

bool LineReader::fill() {
  if (exhausted_) return false;
  begin_ = 0;
  nextCr_ = kUnknown;
  if (!buffer_) buffer_ = std::make_unique_for_overwrite<char[]>(capacity_);
  end_ = source_.read(buffer_.get(), readBefore_ ? capacity_ : std::min(capacity_, kFirstRead));
  readBefore_ = true;
  if (end_ == 0) exhausted_ = true;
  return end_ > 0;
}

bool LineReader::endOfFile() { return begin_ == end_ && !fill(); }

void LineReader::readLine(std::string& out) {
  for (;;) {
    if (begin_ == end_ && !fill()) return;
    const char* start = buffer_.get() + begin_;
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

namespace {

// True when a CR in the first `n` bytes is not followed by LF; the byte
// behind the last of them must be readable.
TAGWRIGHT_VECTOR_CLONES bool holdsLoneCr(const char* bytes, std::size_t n) {
  unsigned char any = 0;
  for (std::size_t i = 0; i < n; ++i) {
    any |= static_cast<unsigned char>((bytes[i] == '\r') & (bytes[i + 1] != '\n'));
  }
  return any != 0;
}

}  // namespace

// The length of the run of whole lines at the front of the buffer that ends
// with the first line end at or past `wanted` bytes, or with the buffer's
// last line end when the buffer is shorter, provided every line of it ends
// in CR LF: such a run is its own chunk form and is copied whole. 0 when
// there is none.
std::size_t LineReader::wholeCrLfLines(std::size_t wanted) const {
  const std::string_view rest(buffer_.get() + begin_, end_ - begin_);
  if (rest.size() < 2) return 0;
  // A CR at `wanted` - 2 or later ends a run of at least `wanted` bytes.
  const std::size_t from = wanted >= 2 ? wanted - 2 : 0;
  const std::size_t cr =
      from < rest.size() - 1 ? rest.find('\r', from) : rest.substr(0, rest.size() - 1).rfind('\r');
  if (cr == std::string_view::npos || cr + 1 >= rest.size() || rest[cr + 1] != '\n') return 0;
  if (holdsLoneCr(rest.data(), cr)) return 0;
  return cr + 2;
}

void LineReader::readLineAnyEnd(std::string& out, std::vector<std::size_t>& addedLineEnds) {
  for (;;) {
    if (begin_ == end_ && !fill()) {
      // The file ended inside a line, which gains both bytes.
      addedLineEnds.push_back(out.size());
      addedLineEnds.push_back(out.size() + 1);
      out.append("\r\n");
      return;
    }
    const char* start = buffer_.get() + begin_;
    if (nextCr_ == kUnknown || nextCr_ < begin_) {
      const void* cr = std::memchr(start, '\r', end_ - begin_);
      nextCr_ = cr == nullptr
                    ? end_
                    : static_cast<std::size_t>(static_cast<const char*>(cr) - buffer_.get());
    }
    const std::size_t beforeCr = nextCr_ - begin_;
    const void* lf = std::memchr(start, '\n', beforeCr);
    if (lf != nullptr) {
      const std::size_t length = static_cast<std::size_t>(static_cast<const char*>(lf) - start);
      out.append(start, length);
      addedLineEnds.push_back(out.size());
      out.append("\r\n");
      begin_ += length + 1;
      return;
    }
    out.append(start, beforeCr);
    begin_ = nextCr_;
    if (begin_ == end_) continue;  // the line runs over the end of the buffer
    ++begin_;
    out.push_back('\r');
    // The LF of a CR LF may lie in the next block.
    if (begin_ == end_) fill();
    if (begin_ < end_ && buffer_[begin_] == '\n') {
      ++begin_;
    } else {
      addedLineEnds.push_back(out.size());
    }
    out.push_back('\n');
    return;
  }
}

std::size_t LineReader::appendLfLines(std::string& out, std::size_t untilSize,
                                      std::vector<std::size_t>& addedLineEnds) {
  if (nextCr_ == kUnknown || nextCr_ < begin_) return 0;
  // Whole lines that end in a lone LF before the next CR: first their LFs,
  // whose CR-to-be offsets go into addedLineEnds, then one copy each into
  // room made once, rather than a call and two appends per line.
  const char* const start = buffer_.get() + begin_;
  const char* const stop = buffer_.get() + nextCr_;
  const std::size_t base = out.size();
  const std::size_t firstAdded = addedLineEnds.size();
  std::size_t size = base;
  const char* from = start;
  while (size < untilSize) {
    const void* lf = std::memchr(from, '\n', static_cast<std::size_t>(stop - from));
    if (lf == nullptr) break;
    const auto length = static_cast<std::size_t>(static_cast<const char*>(lf) - from);
    addedLineEnds.push_back(size + length);
    size += length + 2;
    from = static_cast<const char*>(lf) + 1;
  }
  const std::size_t lines = addedLineEnds.size() - firstAdded;
  if (lines == 0) return 0;
  out.resize(size);
  char* target = out.data() + base;
  const char* source = start;
  for (std::size_t i = firstAdded; i < addedLineEnds.size(); ++i) {
    const std::size_t length = addedLineEnds[i] - static_cast<std::size_t>(target - out.data());
    std::memcpy(target, source, length);
    target[length] = '\r';
    target[length + 1] = '\n';
    target += length + 2;
    source += length + 1;
  }
  begin_ = static_cast<std::size_t>(from - buffer_.get());
  return lines;
}

void LineReader::readLines(std::string& out, std::size_t untilSize,
                           std::vector<std::size_t>* addedLineEnds) {
  if (addedLineEnds != nullptr) {
    while (out.size() < untilSize && !endOfFile()) {
      if (appendLfLines(out, untilSize, *addedLineEnds) == 0) readLineAnyEnd(out, *addedLineEnds);
    }
    return;
  }
  while (out.size() < untilSize && !endOfFile()) {
    if (std::size_t run = wholeCrLfLines(untilSize - out.size()); run > 0) {
      out.append(buffer_.get() + begin_, run);
      begin_ += run;
      continue;
    }
    readLine(out);
    out.append("\r\n");
  }
}

}  // namespace tagwright
