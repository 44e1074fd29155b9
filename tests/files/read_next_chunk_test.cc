// The chunk reader: line ends, the length threshold, the extension of up to
// five lines to a ">", and a failed read.
#include "files/read_next_chunk.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "files/open_document_file.h"
#include "support/fake_platform.h"

namespace tagwright {
namespace {

// Every chunk of `document` read with `bufferLength`, up to the empty one.
std::vector<std::string> chunksOf(const std::string& document, std::int32_t bufferLength) {
  FakePlatform platform;
  platform.files["/d.txt"] = document;
  Int16 file = openDocumentFile(platform, U"C:\\d.txt", false);
  EXPECT_NE(file, 0);
  std::vector<std::string> chunks;
  Text chunk;
  for (int guard = 0; guard < 1000; ++guard) {
    readNextChunk(platform, file, bufferLength, chunk);
    if (chunk.empty()) break;
    chunks.push_back(toUtf8(chunk));
  }
  readNextChunk(platform, file, bufferLength, chunk);
  EXPECT_TRUE(chunk.empty()) << "an ended document keeps giving the empty chunk";
  return chunks;
}

using Chunks = std::vector<std::string>;

TEST(ReadNextChunk, Table) {
  struct Case {
    const char* name;
    std::string document;
    std::int32_t bufferLength;
    Chunks want;
  };
  const std::string longLine = std::string(50, 'x') + ">";
  const Case cases[] = {
      {"EmptyFile", "", 10, {}},
      {"LoneLineEnd", "\r\n", 10, {"\r\n"}},
      {"LastLineWithoutEnd", "abc", 10, {"abc\r\n"}},
      {"CrOnlyEndsLines", "a\rb\r", 100, {"a\r\nb\r\n"}},
      {"LfOnlyStaysInLine", "a\nb\n", 100, {"a\nb\n\r\n"}},
      {"ShortFileIsOneChunk", "<a>\r\nb\r\nc", 100, {"<a>\r\nb\r\nc\r\n"}},
      {"ThresholdReachedExactlyTakesNoMore", "<ab>\r\nx\r\n", 6, {"<ab>\r\n", "x\r\n"}},
      {"LongLineStaysWhole", longLine + "\r\nz", 4, {longLine + "\r\n", "z\r\n"}},
      {"ExtendsToTagEnd", "aaaa\r\nb\r\n<c>\r\nd", 4, {"aaaa\r\nb\r\n<c>\r\n", "d\r\n"}},
      {"ExtendsAtMostFiveLines",
       "aaaa\r\n1\r\n2\r\n3\r\n4\r\n5\r\n6",
       4,
       {"aaaa\r\n1\r\n2\r\n3\r\n4\r\n5\r\n", "6\r\n"}},
      {"TagEndWithTwoBlanksOrTabs", "<a> \t\r\nb", 4, {"<a> \t\r\n", "b\r\n"}},
      {"TagEndWithThreeBlanksReadsOn", "<a>   \r\nb\r\nc", 4, {"<a>   \r\nb\r\nc\r\n"}},
      {"EmptyLineBehindTagEnd", "<a>\r\n\r\nb\r\nc", 6, {"<a>\r\n\r\n", "b\r\nc\r\n"}},
      {"TwoEmptyLinesBehindTagEndReadOn",
       "<a>\r\n\r\n\r\nb\r\nc",
       8,
       {"<a>\r\n\r\n\r\nb\r\nc\r\n"}},
      {"EndDuringExtensionStops", "aaaa\r\nb", 4, {"aaaa\r\nb\r\n"}},
      {"CrLfSplitAcrossReadBlocks", "abcdef\r\nghijkl\r\n", 100, {"abcdef\r\nghijkl\r\n"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(chunksOf(c.document, c.bufferLength), c.want);
  }
}

TEST(ReadNextChunk, CountsCharactersNotBytes) {
  // Four two-byte characters reach a threshold of 4 on the first line.
  EXPECT_EQ(chunksOf("\xC3\xA9\xC3\xA9\xC3\xA9>\r\nb", 4),
            (Chunks{"\xC3\xA9\xC3\xA9\xC3\xA9>\r\n", "b\r\n"}));
}

TEST(ReadNextChunk, FailedReadGivesEmptyChunkAndTellsWhy) {
  FakePlatform platform;
  platform.files["/d.txt"] = "one\r\ntwo\r\n";
  Int16 file = openDocumentFile(platform, U"C:\\d.txt", false);
  platform.failNamedCall("read", Failure::Kind::kDeviceIo);
  Text chunk = U"stale";
  std::optional<Failure> failure;
  readNextChunk(platform, file, 2048, chunk, &failure);
  EXPECT_TRUE(chunk.empty());
  ASSERT_TRUE(failure.has_value());
  EXPECT_EQ(failure->description(), "Device I/O error");
}

TEST(OpenDocumentFile, GivesZeroOnAnyFailure) {
  FakePlatform platform;
  EXPECT_EQ(openDocumentFile(platform, U"C:\\missing.htm", false), 0);
  platform.failNamedCall("nextFreeFileNumber", Failure::Kind::kTooManyFiles);
  platform.files["/a.htm"] = "x";
  EXPECT_EQ(openDocumentFile(platform, U"C:\\a.htm", false), 0);
  EXPECT_NE(openDocumentFile(platform, U"C:\\new.htm", true), 0);
  EXPECT_TRUE(platform.files.contains("/new.htm")) << "a missing file opened for output is made";
}

}  // namespace
}  // namespace tagwright
