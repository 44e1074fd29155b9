#ifndef TAGWRIGHT_LOCATE_RESULT_TEXT_H_
#define TAGWRIGHT_LOCATE_RESULT_TEXT_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/platform.h"
#include "platform/text.h"

namespace tagwright {

// The results of a scan, each followed by its separator, collected in the
// UTF-8 they are returned in (a quarter of the memory of 32-bit characters).
//
// The text grows at once to what the whole document will likely give at the
// rate seen so far, rather than by doubling: every doubling copies the text
// and fills fresh memory, which on some machines costs more than the scan.
// Only what is written takes up memory.
class ResultText {
 public:
  // `documentBytes` is the length of the document the results come from.
  ResultText(Platform& platform, std::uint64_t documentBytes)
      : platform_(platform), documentBytes_(documentBytes) {}

  // Counts bytes of the document as read, for the projection.
  void noteRead(std::size_t bytes) { bytesRead_ += bytes; }

  void append(TextView piece);
  // Appends a piece's UTF-8 as it stands in the document; its last character
  // takes `lastCharacterBytes` of it.
  void appendBytes(std::string_view bytes, std::size_t lastCharacterBytes);

  // Everything so far, separators included.
  const std::string& text() const { return text_; }
  // The results less their last character: whatever the separator's length,
  // the last cut takes one character.
  std::string takeWithoutLastCharacter();

 private:
  void makeRoomFor(std::size_t bytes);

  Platform& platform_;
  const std::uint64_t documentBytes_;
  std::uint64_t bytesRead_ = 0;
  std::string text_;
  std::size_t lastCharacterBytes_ = 0;
  std::string encoded_;  // a piece being appended
};

}  // namespace tagwright

#endif  // TAGWRIGHT_LOCATE_RESULT_TEXT_H_
