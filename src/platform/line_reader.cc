#include "platform/line_reader.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <new>
#include <string_view>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include "platform/vector_clones.h"

namespace tagwright {
namespace {

// Lone LFs are widened kBlock bytes at a time, and every piece of a block
// is copied as kBlock bytes whatever its length: a copy may start anywhere
// in a block, so the buffer holds two blocks behind the last byte it reads
// into, and the output grows by three blocks at most past the room made.
constexpr std::size_t kBlock = 64;
constexpr std::size_t kBufferSlack = 2 * kBlock;
constexpr std::size_t kOutputSlack = 3 * kBlock;
// The length a line may run past the size asked for and still be widened in
// bulk; a longer one goes through readLineAnyEnd.
constexpr std::size_t kLineRoom = 256;
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
  if (!buffer_) {
    buffer_ = std::make_unique_for_overwrite<char[]>(capacity_ + kBufferSlack);
    // Block copies read into the slack; it holds no stale bytes of any kind.
    std::memset(buffer_.get() + capacity_, 0, kBufferSlack);
  }
  end_ = source_.read(buffer_.get(), readBefore_ ? capacity_ : std::min(capacity_, kFirstRead));
  readBefore_ = true;
  if (end_ == 0 || source_.reachedEnd()) exhausted_ = true;
  return end_ > 0;
}

bool LineReader::endOfFile() { return begin_ == end_ && !fill(); }

// A line longer than the buffer comes in a piece per read. Grown by
// doubling, the bytes of a long line would cost up to twice its length, as
// each copy holds the old room and the new. Once a line is long, room is
// made at once for all that the file still holds: only address space, until
// the line fills it. Where that much cannot be had, the bytes grow as they
// would have.
void LineReader::makeRoomForLongLine(std::string& out, std::size_t more) const {
  constexpr std::size_t kLongLine = 1024 * 1024;
  constexpr std::size_t kLineEnd = 2;
  if (out.size() + more <= out.capacity() || out.size() < kLongLine) return;
  const std::size_t rest = (end_ - begin_) + source_.bytesLeft();
  if (rest <= more) return;  // nothing known beyond this piece
  try {
    out.reserve(out.size() + rest + kLineEnd);
  } catch (const std::bad_alloc&) {
  }
}

LineReader::LineEnd LineReader::readLine(std::string& out) {
  for (;;) {
    if (begin_ == end_ && !fill()) return LineEnd::kNone;
    const char* start = buffer_.get() + begin_;
    const void* cr = std::memchr(start, '\r', end_ - begin_);
    if (cr == nullptr) {
      // The line runs over the end of the buffer.
      makeRoomForLongLine(out, end_ - begin_);
      out.append(start, end_ - begin_);
      begin_ = end_;
      continue;
    }
    std::size_t length = static_cast<std::size_t>(static_cast<const char*>(cr) - start);
    out.append(start, length);
    begin_ += length + 1;
    // The LF of a CR LF may lie in the next block.
    if (begin_ == end_) fill();
    if (begin_ >= end_ || buffer_[begin_] != '\n') return LineEnd::kCr;
    ++begin_;
    return LineEnd::kCrLf;
  }
}

namespace {

// Bit i set where bytes[i] is LF, for the kBlock bytes at `bytes`.
inline std::uint64_t lfMask(const char* bytes) {
#ifdef __SSE2__
  const __m128i lf = _mm_set1_epi8('\n');
  std::uint64_t mask = 0;
  for (std::size_t i = 0; i < kBlock; i += 16) {
    const __m128i part = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + i));
    mask |= std::uint64_t{static_cast<std::uint16_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(part, lf)))}
            << i;
  }
  return mask;
#else
  std::uint64_t mask = 0;
  for (std::size_t i = 0; i < kBlock; ++i) mask |= std::uint64_t{bytes[i] == '\n'} << i;
  return mask;
#endif
}

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
    if (nextCr_ == end_) makeRoomForLongLine(out, beforeCr);
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
  // Whole lines that end in a lone LF before the next CR, widened a block at
  // a time: the LFs of a block are found at once, and the pieces between them
  // are copied with a CR put in front of each LF. A line whose copy would run
  // past the room made here is left to readLineAnyEnd.
  const char* const stop = buffer_.get() + nextCr_;
  const std::size_t base = out.size();
  // No more than the bytes before the next CR can become, each at most two.
  const std::size_t wanted = untilSize > base ? untilSize - base : 0;
  const std::size_t room = std::min(wanted, 2 * (nextCr_ - begin_)) + kLineRoom;
  out.resize(base + room + kOutputSlack);
  char* const outStart = out.data();
  char* const roomEnd = outStart + base + room;
  const char* block = buffer_.get() + begin_;
  char* to = outStart + base;
  const char* lineSource = block;  // where the line being copied begins
  char* lineTarget = to;
  std::size_t lines = 0;
  while (to < roomEnd) {
    const auto left = static_cast<std::size_t>(stop - block);
    if (left == 0) break;
    std::uint64_t lfs = lfMask(block);
    if (left < kBlock) lfs &= (std::uint64_t{1} << left) - 1;
    std::size_t piece = 0;  // where in the block the next piece begins
    while (lfs != 0) {
      const auto lf = static_cast<std::size_t>(std::countr_zero(lfs));
      std::memcpy(to, block + piece, kBlock);
      to += lf - piece;
      addedLineEnds.push_back(static_cast<std::size_t>(to - outStart));
      to[0] = '\r';
      to[1] = '\n';
      to += 2;
      piece = lf + 1;
      lfs &= lfs - 1;
      lineSource = block + piece;
      lineTarget = to;
      ++lines;
      if (static_cast<std::size_t>(lineTarget - outStart) >= untilSize) goto done;
    }
    if (left <= kBlock) break;  // the last line runs on past the next CR
    std::memcpy(to, block + piece, kBlock);
    to += kBlock - piece;
    block += kBlock;
  }
done:
  out.resize(static_cast<std::size_t>(lineTarget - outStart));
  begin_ = static_cast<std::size_t>(lineSource - buffer_.get());
  return lines;
}

void LineReader::readLines(std::string& out, std::size_t untilSize, LineEnds lineEnds,
                           std::vector<std::size_t>& addedLineEnds) {
  if (lineEnds == LineEnds::kAny) {
    while (out.size() < untilSize && !endOfFile()) {
      if (appendLfLines(out, untilSize, addedLineEnds) == 0) readLineAnyEnd(out, addedLineEnds);
    }
    return;
  }
  while (out.size() < untilSize && !endOfFile()) {
    if (std::size_t run = wholeCrLfLines(untilSize - out.size()); run > 0) {
      out.append(buffer_.get() + begin_, run);
      begin_ += run;
      continue;
    }
    const LineEnd end = readLine(out);
    if (end == LineEnd::kNone) addedLineEnds.push_back(out.size());
    if (end != LineEnd::kCrLf) addedLineEnds.push_back(out.size() + 1);
    out.append("\r\n");
  }
}

}  // namespace tagwright
