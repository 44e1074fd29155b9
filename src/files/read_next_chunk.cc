#include "files/read_next_chunk.h"

namespace tagwright {
namespace {

constexpr TextView kLineEnd = U"\r\n";

void readLineInto(Platform& platform, Int16 fileNumber, Text& chunk) {
  platform.readLine(fileNumber, chunk);
  chunk.append(kLineEnd);
}

// The extension test: the last five characters of the chunk, less CR, LF
// and TAB, trimmed of blanks, end in ">".
bool endsInTagEnd(TextView chunk) {
  TextView tail = chunk.substr(chunk.size() - std::min<std::size_t>(5, chunk.size()));
  char32_t kept[5];
  std::size_t count = 0;
  for (char32_t c : tail) {
    if (c != U'\r' && c != U'\n' && c != U'\t') kept[count++] = c;
  }
  TextView rest = trim(TextView(kept, count));
  return !rest.empty() && rest.back() == U'>';
}

}  // namespace

void readNextChunk(Platform& platform, Int16 fileNumber, std::int32_t bufferLength, Text& chunk,
                   std::optional<Failure>* readFailure) {
  chunk.clear();
  try {
    const std::size_t threshold = bufferLength > 0 ? static_cast<std::size_t>(bufferLength) : 0;
    while (chunk.size() < threshold && !platform.endOfFile(fileNumber)) {
      readLineInto(platform, fileNumber, chunk);
    }
    if (platform.endOfFile(fileNumber)) return;
    for (int extension = 0; extension <= 4; ++extension) {
      if (endsInTagEnd(chunk) || platform.endOfFile(fileNumber)) break;
      readLineInto(platform, fileNumber, chunk);
    }
  } catch (const Failure& failure) {
    chunk.clear();
    if (readFailure != nullptr) *readFailure = failure;
  }
}

}  // namespace tagwright
