#include "locate/result_text.h"

#include <algorithm>

namespace tagwright {

void ResultText::append(TextView piece) {
  if (piece.empty()) return;
  // Encoded apart first, so that the room is projected from its true size.
  // The last character that takes bytes is the one the last cut may take:
  // an added line end behind it takes none.
  std::size_t last = piece.size() - 1;
  while (last > 0 && piece[last] >= kAddedCr) --last;
  encoded_.clear();
  appendEncoded(piece.substr(0, last), encoded_);
  const std::size_t before = encoded_.size();
  appendEncoded(piece.substr(last), encoded_);
  appendBytes(encoded_, encoded_.size() - before);
}

void ResultText::appendBytes(std::string_view bytes, std::size_t lastCharacterBytes) {
  if (bytes.empty()) return;
  makeRoomFor(bytes.size());
  text_.append(bytes);
  lastCharacterBytes_ = lastCharacterBytes;
}

std::string ResultText::takeWithoutLastCharacter() {
  if (text_.empty()) return {};
  text_.resize(text_.size() - lastCharacterBytes_);
  return std::move(text_);
}

void ResultText::makeRoomFor(std::size_t bytes) {
  const std::size_t needed = text_.size() + bytes;
  if (needed <= text_.capacity()) return;
  std::size_t room = std::max(needed, 2 * text_.capacity());
  // The rate of the first stretch read says little (a page's head holds
  // other things than its body), so it is trusted from 1/32 of the document on.
  if (bytesRead_ >= documentBytes_ / 32 && documentBytes_ > bytesRead_) {
    // An eighth more than the rate so far, so that a rate that creeps up
    // does not cost a second copy near the end.
    const double rate = static_cast<double>(needed) / static_cast<double>(bytesRead_);
    const double projected = 1.125 * rate * static_cast<double>(documentBytes_);
    if (projected > static_cast<double>(room)) room = static_cast<std::size_t>(projected);
  }
  text_.reserve(room);
  constexpr std::size_t kLargeText = 2 * 1024 * 1024;
  if (room >= kLargeText) platform_.adviseLargeBuffer(text_.data(), text_.capacity());
}

}  // namespace tagwright
