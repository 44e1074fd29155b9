// The chunk reader: line ends, the length threshold counted in characters,
// and the extension of up to five lines to a ">".
#include "files/read_next_chunk.h"

#include <gtest/gtest.h>

#include "files/open_document_file.h"
#include "support/fake_platform.h"

namespace tagwright {
namespace {

// Every chunk of `document` read with `bufferLength`, each followed by "|".
std::string chunksOf(const std::string& document, std::int32_t bufferLength) {
  FakePlatform platform;
  platform.files["/d.txt"] = document;
  Int16 file = openDocumentFile(platform, U"C:\\d.txt", false);
  std::string chunks;
  Text chunk;
  for (int guard = 0; guard < 100; ++guard) {
    readNextChunk(platform, file, bufferLength, chunk);
    if (chunk.empty()) break;
    chunks += toUtf8(chunk) + "|";
  }
  return chunks;
}

TEST(ReadNextChunk, Table) {
  const std::string x = std::string(50, 'x') + ">";
  const std::tuple<std::string, std::int32_t, std::string> cases[] = {
      {"", 10, ""},
      {"\r\n", 10, "\r\n|"},
      {"a\rb\r", 100, "a\r\nb\r\n|"},
      {"a\nb\n", 100, "a\nb\n\r\n|"},
      {"<ab>\r\nx", 6, "<ab>\r\n|x\r\n|"},
      {"\xC3\xA9\xC3\xA9\xC3\xA9>\r\nb", 4, "\xC3\xA9\xC3\xA9\xC3\xA9>\r\n|b\r\n|"},
      {x + "\r\nz", 4, x + "\r\n|z\r\n|"},
      {"aaaa\r\nb\r\n<c>\r\nd", 4, "aaaa\r\nb\r\n<c>\r\n|d\r\n|"},
      {"aaaa\r\n1\r\n2\r\n3\r\n4\r\n5\r\n6", 4, "aaaa\r\n1\r\n2\r\n3\r\n4\r\n5\r\n|6\r\n|"},
      {"<a> \t\r\nb", 4, "<a> \t\r\n|b\r\n|"},
      {"<a>   \r\nb\r\nc", 4, "<a>   \r\nb\r\nc\r\n|"},
      {"<a>\r\n\r\nb\r\nc", 6, "<a>\r\n\r\n|b\r\nc\r\n|"},
  };
  for (const auto& [document, bufferLength, want] : cases) {
    SCOPED_TRACE(document);
    EXPECT_EQ(chunksOf(document, bufferLength), want);
  }
}

}  // namespace
}  // namespace tagwright
