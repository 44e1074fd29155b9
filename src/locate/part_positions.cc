#include "locate/part_positions.h"

#include <algorithm>
#include <string_view>

#include "platform/text.h"

namespace tagwright {

void PartPositions::advanceTo(std::size_t offset) {
  const std::string_view bytes = chunk_.bytes;
  while (cursor_ < offset) {
    const std::size_t lf = bytes.find('\n', cursor_);
    if (lf == std::string_view::npos || lf >= offset) {
      column_ += decodedLength(bytes.substr(cursor_, offset - cursor_));
      cursor_ = offset;
      return;
    }
    // Every line of a chunk ends in CR LF; a lone LF within a line is a
    // character of it in the default mode.
    if (lineEnds_ == LineEnds::kAny || (lf > 0 && bytes[lf - 1] == '\r')) {
      line_ += 1;
      column_ = 1;
    } else {
      column_ += decodedLength(bytes.substr(cursor_, lf + 1 - cursor_));
    }
    cursor_ = lf + 1;
  }
}

void PartPositions::leaveChunk() {
  advanceTo(chunk_.bytes.size());
  chunkStartByte_ += chunk_.bytes.size() - chunk_.bytesNotInDocument().size();
  cursor_ = 0;
}

TextPosition PartPositions::at(std::size_t offset) {
  advanceTo(offset);
  const auto& added = chunk_.bytesNotInDocument();
  const auto addedBefore = static_cast<std::size_t>(
      std::lower_bound(added.begin(), added.end(), offset) - added.begin());
  return {chunkStartByte_ + offset - addedBefore, line_, column_};
}

}  // namespace tagwright
