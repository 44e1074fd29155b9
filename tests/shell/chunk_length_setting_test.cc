// BufferLengthCharacters changes how a document is cut into chunks and
// nothing of the results, except where a rule depends on the chunk: a marker
// beyond position 32767 of one chunk is the overflow, and a tag whose ">"
// lies in the next chunk is no instance.
#include <gtest/gtest.h>

#include <string>

#include "support/fake_platform.h"
#include "support/read_request.h"
#include "tagwright/tagwright.h"

namespace tagwright {
namespace {

// Runs `request` with the chunk length that the settings file gives.
ReadOutcome readWithChunkLength(const std::string& document, const ReadRequest& request,
                                int chunkLength) {
  FakePlatform platform;
  platform.settings = "BufferLengthCharacters=" + std::to_string(chunkLength) + "\n";
  platform.files["/doc.htm"] = document;
  Tagwright instance(platform);
  ReadOutcome outcome;
  outcome.text = instance.readXPointer("C:\\doc.htm", request.element, request.attributeName,
                                       request.attributeValue, request.start, request.count,
                                       request.contentType, request.spanFunction,
                                       request.stringFunction, request.separator, &outcome.matches);
  return outcome;
}

ReadRequest request(const char* element, const char* contentType, std::int16_t start = 1,
                    std::int16_t count = 0) {
  ReadRequest r;
  r.element = element;
  r.contentType = contentType;
  r.start = start;
  r.count = count;
  return r;
}

// About 9000 characters of short lines, with instances on one line and over
// several, so that at 257 many lie across chunk borders and at 30000 none do.
struct ManyLines {
  std::string document;
  std::string innerCode;  // every "#aspcode" content, ";" between
  int codeCount = 0;
  ManyLines() {
    for (int i = 1; i <= 300; ++i) {
      std::string n = std::to_string(i);
      if (i % 7 == 0) {
        document += "text <%first" + n + "\r\nsecond" + n + "%> more\r\n";
        innerCode += (codeCount ? ";" : "") + ("first" + n + "\r\nsecond" + n);
      } else {
        document += "<?pi" + n + "?> line " + n + " <%c" + n + "%>\r\n";
        innerCode += (codeCount ? ";" : "") + ("c" + n);
      }
      ++codeCount;
    }
  }
};

TEST(ChunkLengthSetting, SameResultsWithoutChunkRules) {
  const ManyLines doc;
  const struct {
    const char* name;
    ReadRequest request;
  } cases[] = {
      {"AspcodeInner", request("#aspcode", "innerMarkup")},
      {"AspcodeOuter", request("#aspcode", "outerMarkup")},
      {"PiInner", request("#pi", "innerMarkup")},
      {"StartAndCountAcrossChunks", request("#aspcode", "innerMarkup", 40, 90)},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    ReadOutcome small = readWithChunkLength(doc.document, c.request, 257);
    ReadOutcome large = readWithChunkLength(doc.document, c.request, 30000);
    EXPECT_EQ(small.text, large.text);
    EXPECT_EQ(small.matches, large.matches);
    EXPECT_GT(small.matches, 0);
  }
  ReadOutcome all = readWithChunkLength(doc.document, request("#aspcode", "innerMarkup"), 257);
  EXPECT_EQ(all.text, doc.innerCode);
  EXPECT_EQ(all.matches, doc.codeCount);
}

// `lines` lines of 1000 characters; `marked` of them (1-based) begin with
// "<%x%>" instead.
std::string longLines(int lines, int marked) {
  std::string document;
  for (int i = 1; i <= lines; ++i) {
    document += i == marked ? "<%x%>" + std::string(995, 'a') : std::string(1000, 'a');
    document += "\r\n";
  }
  return document;
}

TEST(ChunkLengthSetting, MarkerBeyond32767OfOneChunk) {
  const struct {
    const char* name;
    std::string document;
    int chunkLength;
    std::string want;
    int matches;
  } cases[] = {
      // At 30000 the first chunk takes 30 lines and five more: line 35
      // begins at 34069. At 257 a chunk is six lines, and the marker stands
      // at 4009 of its chunk.
      {"OneBigChunkOverflows", longLines(40, 35), 30000, "ERROR: Overflow.", -1},
      {"SmallChunksStayShort", longLines(40, 35), 257, "x", 1},
      // A chunk that long with no marker out there is scanned as usual.
      {"BigChunkWithMarkerNearItsStart", longLines(40, 2), 30000, "x", 1},
      // A line is never split, so one line of 40000 characters is one chunk
      // at any length.
      {"LongLineOverflowsAtAnyLength", std::string(35000, 'a') + "<%x%>\r\n", 257,
       "ERROR: Overflow.", -1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    ReadOutcome got =
        readWithChunkLength(c.document, request("#aspcode", "innerMarkup"), c.chunkLength);
    EXPECT_EQ(got.text, c.want);
    EXPECT_EQ(got.matches, c.matches);
  }
}

// A matcher sees one chunk: at 257 the first chunk ends with five lines
// added behind the long first one, the last of them a tag without its ">".
TEST(ChunkLengthSetting, TagEndInTheNextChunk) {
  const std::string document =
      std::string(300, 'a') + "\r\nb\r\nb\r\nb\r\nb\r\n" + "<p class=\"x\"\r\n>text</p>\r\n";
  ReadRequest p = request("p", "innerMarkup");
  ReadOutcome small = readWithChunkLength(document, p, 257);
  EXPECT_EQ(small.text, "");
  EXPECT_EQ(small.matches, 0);
  ReadOutcome large = readWithChunkLength(document, p, 30000);
  EXPECT_EQ(large.text, "text");
  EXPECT_EQ(large.matches, 1);
}

}  // namespace
}  // namespace tagwright
