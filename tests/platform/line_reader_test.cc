// The line reader in both modes against a line-by-line model, over buffers
// and requested sizes that cut lines and blocks at every place.
#include "platform/line_reader.h"

#include <gtest/gtest.h>

#include <random>

namespace tagwright {
namespace {

struct StringSource : ByteSource {
  explicit StringSource(const std::string& text) : bytes(text) {}
  std::size_t read(char* buffer, std::size_t capacity) override {
    const std::size_t n = bytes.copy(buffer, capacity, at);
    at += n;
    return n;
  }
  std::size_t bytesLeft() const override { return bytes.size() - at; }
  const std::string& bytes;
  std::size_t at = 0;
};

// The bytes readLines gives, each line followed by CR LF, with the offsets
// of the bytes it adds, and where each line ends in them.
struct Widened {
  std::string bytes;
  std::vector<std::size_t> added;
  std::vector<std::size_t> lineEnds;
};

Widened widenLineByLine(const std::string& document, LineEnds lineEnds) {
  Widened w;
  const char* const ends = lineEnds == LineEnds::kAny ? "\r\n" : "\r";
  for (std::size_t at = 0; at < document.size();) {
    const std::size_t end = std::min(document.find_first_of(ends, at), document.size());
    w.bytes.append(document, at, end - at);
    const bool cr = end < document.size() && document[end] == '\r';
    const bool crLf = cr && end + 1 < document.size() && document[end + 1] == '\n';
    if (!cr) w.added.push_back(w.bytes.size());
    if (!crLf && (cr || end == document.size())) w.added.push_back(w.bytes.size() + 1);
    w.bytes += "\r\n";
    w.lineEnds.push_back(w.bytes.size());
    at = end + (crLf ? 2 : 1);
  }
  return w;
}

TEST(LineReader, AgreesWithLineByLine) {
  std::mt19937 random(16);
  const std::string pieces[] = {"\n", "\r", "\r\n", "a", "<p>", std::string(70, 'b')};
  for (int round = 0; round < 60; ++round) {
    // The first is a line long enough for room to be made for it at once.
    std::string document = round == 0 ? std::string((1 << 20) + 5000, 'y') + "\r\n<p>\n" : "";
    const std::size_t length = random() % 3000;
    while (document.size() < length) {
      document += pieces[random() % std::size(pieces)];
      if (random() % 8 == 0) document += std::string(random() % 400, 'x');
    }
    for (LineEnds lineEnds : {LineEnds::kAny, LineEnds::kCrLf}) {
      const Widened want = widenLineByLine(document, lineEnds);
      for (std::size_t bufferSize : {7U, 64U, 100U, 4096U}) {
        for (std::size_t step : {1U, 50U, 3000U}) {
          SCOPED_TRACE(testing::Message() << round << " " << bufferSize << " " << step << " "
                                          << (lineEnds == LineEnds::kAny));
          StringSource source(document);
          LineReader reader(source, bufferSize);
          std::string out;
          std::vector<std::size_t> added;
          while (!reader.endOfFile()) {
            const std::size_t until = out.size() + step;
            reader.readLines(out, until, lineEnds, added);
            // Whole lines, up to the first line end at or past `until`.
            const auto end = std::lower_bound(want.lineEnds.begin(), want.lineEnds.end(), until);
            ASSERT_EQ(out.size(), end == want.lineEnds.end() ? want.bytes.size() : *end);
          }
          EXPECT_EQ(out, want.bytes);
          EXPECT_EQ(added, want.added);
        }
      }
    }
  }
}

}  // namespace
}  // namespace tagwright
