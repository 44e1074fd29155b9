// The chunk reader: line ends, the length threshold counted in characters,
// and the extension of up to five lines to a ">".
#include "files/read_next_chunk.h"

#include <gtest/gtest.h>

#include "files/open_document_file.h"
#include "support/fake_platform.h"

namespace tagwright {
namespace {

using Chunks = std::vector<std::string>;

// Every chunk of `document` read with `bufferLength`, up to the empty one.
Chunks chunksOf(const std::string& document, std::int32_t bufferLength) {
  FakePlatform platform;
  platform.files["/d.txt"] = document;
  Int16 file = openDocumentFile(platform, U"C:\\d.txt", false);
  Chunks chunks;
  for (Text chunk; chunks.size() < 100; chunks.push_back(toUtf8(chunk))) {
    readNextChunk(platform, file, bufferLength, chunk);
    if (chunk.empty()) break;
  }
  return chunks;
}

TEST(ReadNextChunk, Table) {
  const std::string longLine = std::string(50, 'x') + ">";
  const struct {
    const char* name;
    std::string document;
    std::int32_t bufferLength;
    Chunks want;
  } cases[] = {
      {"EmptyFile", "", 10, {}},
      {"LoneLineEnd", "\r\n", 10, {"\r\n"}},
      {"LastLineWithoutEnd", "abc", 10, {"abc\r\n"}},
      {"CrOnlyEndsLines", "a\rb\r", 100, {"a\r\nb\r\n"}},
      {"LfOnlyStaysInLine", "a\nb\n", 100, {"a\nb\n\r\n"}},
      {"ThresholdReachedTakesNoMore", "<ab>\r\nx\r\n", 6, {"<ab>\r\n", "x\r\n"}},
      {"ThresholdCountsCharacters",
       "\xC3\xA9\xC3\xA9\xC3\xA9>\r\nb",
       4,
       {"\xC3\xA9\xC3\xA9\xC3\xA9>\r\n", "b\r\n"}},
      {"LongLineStaysWhole", longLine + "\r\nz", 4, {longLine + "\r\n", "z\r\n"}},
      {"ExtendsToTagEnd", "aaaa\r\nb\r\n<c>\r\nd", 4, {"aaaa\r\nb\r\n<c>\r\n", "d\r\n"}},
      {"ExtendsAtMostFiveLines",
       "aaaa\r\n1\r\n2\r\n3\r\n4\r\n5\r\n6",
       4,
       {"aaaa\r\n1\r\n2\r\n3\r\n4\r\n5\r\n", "6\r\n"}},
      {"TagEndWithBlankAndTab", "<a> \t\r\nb", 4, {"<a> \t\r\n", "b\r\n"}},
      {"TagEndWithThreeBlanksReadsOn", "<a>   \r\nb\r\nc", 4, {"<a>   \r\nb\r\nc\r\n"}},
      {"EmptyLineBehindTagEnd", "<a>\r\n\r\nb\r\nc", 6, {"<a>\r\n\r\n", "b\r\nc\r\n"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(chunksOf(c.document, c.bufferLength), c.want);
  }
}

}  // namespace
}  // namespace tagwright
