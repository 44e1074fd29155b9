// The chunk reader: line ends, the length threshold counted in characters,
// and the extension of up to five lines to a ">".
#include "files/read_next_chunk.h"

#include <gtest/gtest.h>

#include "files/open_document_file.h"
#include "support/requests.h"

namespace tagwright {
namespace {

// Every chunk of `document` read with `bufferLength`, each followed by "|".
std::string chunksOf(const std::string& document, std::int32_t bufferLength) {
  FakePlatform platform;
  platform.files["/d.txt"] = document;
  Int16 file = openDocumentFile(platform, U"C:\\d.txt", false);
  std::string chunks;
  Chunk chunk;
  for (int guard = 0; guard < 100; ++guard) {
    readNextChunk(platform, file, bufferLength, LineEnds::kCrLf, chunk);
    if (chunk.empty()) break;
    EXPECT_EQ(chunk.characters, fromUtf8(chunk.bytes).size()) << chunk.bytes;
    chunks += chunk.bytes + "|";
  }
  return chunks;
}

TEST(ReadNextChunk, Table) {
  const std::string x = std::string(50, 'x') + ">";
  const std::string mixed = "\xC3\xA9\xE2\x82\xAC\xFF\xF0\x9F\x98\x80>\r\n";
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
      // The threshold counts characters where bytes are more: a line of 5
      // characters in 7 bytes is short of 6 and takes the next line.
      {"\xC3\xA9\xC3\xA9>\r\na>\r\nb>", 6, "\xC3\xA9\xC3\xA9>\r\na>\r\n|b>\r\n|"},
      {"\xC3\xA9\xC3\xA9>\r\na>\r\nb>", 5, "\xC3\xA9\xC3\xA9>\r\n|a>\r\nb>\r\n|"},
      {"\xF0\x9F\x98\x80>\r\n\xE2\x82\xAC>\r\nz>", 5,
       "\xF0\x9F\x98\x80>\r\n\xE2\x82\xAC>\r\n|z>\r\n|"},
      {"\xE2\x82>\r\na>", 5, "\xE2\x82>\r\n|a>\r\n|"},
      {"\xE2\x82\xAC>\r\na>", 5, "\xE2\x82\xAC>\r\na>\r\n|"},
      {"\xF0\x9F\x98>\r\na>", 6, "\xF0\x9F\x98>\r\n|a>\r\n|"},
      // Counted in one run after many lines: 286 lines of 7 characters
      // (13 bytes) reach 2000, where 154 lines would reach it in bytes.
      {repeat(mixed, 300), 2000, repeat(mixed, 286) + "|" + repeat(mixed, 14) + "|"},
      // The extension test on the last character that is no blank, TAB or
      // line end: beyond ASCII it says no, wherever the ">" stands before it.
      {"\xC3\xA9\xE2\x82\xAC>\r\nb", 1, "\xC3\xA9\xE2\x82\xAC>\r\n|b\r\n|"},
      {"x\xC3\xA9> \t\r\nb", 1, "x\xC3\xA9> \t\r\n|b\r\n|"},
      {">\xC3\xA9\r\nb>\r\nc", 1, ">\xC3\xA9\r\nb>\r\n|c\r\n|"},
      {"> \xF0\x9F\x98\x80\r\nb>\r\nc", 1, "> \xF0\x9F\x98\x80\r\nb>\r\n|c\r\n|"},
      {">\xFF\t\r\nb>\r\nc", 1, ">\xFF\t\r\nb>\r\n|c\r\n|"},
      {">\xE2\x82\r\n\r\nb>\r\nc", 1, ">\xE2\x82\r\n\r\nb>\r\n|c\r\n|"},
  };
  for (const auto& [document, bufferLength, want] : cases) {
    SCOPED_TRACE(document);
    EXPECT_EQ(chunksOf(document, bufferLength), want);
  }
}

}  // namespace
}  // namespace tagwright
