// The scan driver through readXPointer: counting, separators, the last cut,
// close markers across chunks, and its failure texts.
#include <gtest/gtest.h>

#include <string>

#include "support/read_request.h"

namespace tagwright {
namespace {

const std::string kThreeLines = "<?xml version=\"1.0\"?>\r\n<%a=1%><p>x</p>\r\n<%b%>\r\n";

struct ScanCase {
  const char* name;
  std::string document;
  ReadRequest request;
  std::string want;
  int matches;
};

ReadRequest aspcode(std::string contentType = "innerMarkup") {
  ReadRequest r;
  r.element = "#aspcode";
  r.contentType = std::move(contentType);
  return r;
}

TEST(ScanDocument, ThreeLineExample) {
  ReadRequest pi = aspcode();
  pi.element = "#pi";
  ReadRequest second = aspcode();
  second.start = 2;
  const ScanCase cases[] = {
      {"InnerMarkup", kThreeLines, aspcode(), "a=1;b", 2},
      {"OuterMarkup", kThreeLines, aspcode("outerMarkup"), "<%a=1%>;<%b%>", 2},
      {"ProcessingInstruction", kThreeLines, pi, "xml version=\"1.0\"", 1},
      {"StartInstanceTwo", kThreeLines, second, "b", 1},
  };
  for (const ScanCase& c : cases) {
    SCOPED_TRACE(c.name);
    ReadOutcome got = readDocument(c.document, c.request);
    EXPECT_EQ(got.text, c.want);
    EXPECT_EQ(got.matches, c.matches);
  }
}

ReadRequest separatedBy(std::string separator, std::string contentType = "innerMarkup") {
  ReadRequest r = aspcode(std::move(contentType));
  r.separator = std::move(separator);
  return r;
}

ReadRequest counted(std::int16_t start, std::int16_t count) {
  ReadRequest r = aspcode();
  r.start = start;
  r.count = count;
  return r;
}

TEST(ScanDocument, SeparatorsCountsAndTheLastCut) {
  const ScanCase cases[] = {
      {"EmptyDocument", "", aspcode(), "", 0},
      {"NoCandidate", "<p>x</p>\r\n", aspcode(), "", 0},
      {"BlankTextDroppedSeparatorKept", "<% %><%b%>", separatedBy(","), ",b", 2},
      {"OnlyLastCharacterOfSeparatorCut", "<%a%>x<%b%>", separatedBy("--"), "a--b-", 2},
      {"NulByDefault", "<%a%>x<%b%>", separatedBy(""), std::string("a\0b", 3), 2},
      {"SingleBlankInstance", "<%  %>", separatedBy(""), "", 1},
      {"TabIsNotBlank", "<%\t%>", aspcode(), "\t", 1},
      {"CapitalsKept", "<?XML Version=\"1\"?>",
       [] {
         ReadRequest r;
         r.element = "#pi";
         return r;
       }(),
       "XML Version=\"1\"", 1},
      {"StartBeyondLast", "<%a%>x<%b%>", counted(3, 0), "", 0},
      {"CountStopsMidChunk", "<%a%>x<%b%>x<%c%>", counted(1, 2), "a;b", 2},
      {"StartAndCount", "<%a%>x<%b%>x<%c%>", counted(2, 1), "b", 1},
      {"OneCharacterBetweenHidesOuter", "<%a%>x<%b%>", separatedBy(";", "outerMarkup"), "<%a%>", 1},
      {"TwoCharactersBetweenDoNot", "<%a%>xx<%b%>", separatedBy(";", "outerMarkup"), "<%a%>;<%b%>",
       2},
      {"ConsecutiveLines", "<%a%>\r\n<%b%>", separatedBy(";", "outerMarkup"), "<%a%>;<%b%>", 2},
      {"PassedOverNeedsNoCloseMarker", "<%a", counted(2, 0), "", 0},
  };
  for (const ScanCase& c : cases) {
    SCOPED_TRACE(c.name);
    ReadOutcome got = readDocument(c.document, c.request);
    EXPECT_EQ(got.text, c.want);
    EXPECT_EQ(got.matches, c.matches);
  }
}

TEST(ScanDocument, MissingCloseMarker) {
  EXPECT_EQ(readDocument("<%one", aspcode()).text,
            "ERROR: Found ''--> Missing element end tag '%>'.");
  ReadOutcome got = readDocument("<%a%>x<%b%>\r\n<%c\r\nd\r\n", separatedBy(","));
  EXPECT_EQ(got.text, "ERROR: Found 'a,b,'--> Missing element end tag '%>'.");
  EXPECT_EQ(got.matches, -1);
}

TEST(ScanDocument, InstancesOverManyChunks) {
  // Lines of 10 characters in chunks of at least 8: every line is a chunk.
  const std::string lines = "0123456789\r\n";
  struct Case {
    const char* name;
    std::string document;
    std::string want;
  };
  const Case cases[] = {
      {"CloseSeveralChunksLater", "ab<%x" + lines + lines + "y%>z\r\n<%q%>",
       "x" + lines + lines + "y;q"},
      {"CloseStartsAChunk", "<%" + lines + "%>after<%q%>", lines + ";q"},
      {"SearchGoesOnBehindTheMarker", "<%a\r\nb%><%c%>\r\n", "a\r\nb;c"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    ReadOutcome got = readDocument(c.document, aspcode(), 8);
    EXPECT_EQ(got.text, c.want);
    EXPECT_EQ(got.matches, 2);
  }
}

TEST(ScanDocument, StartAndCountRunAcrossChunks) {
  const std::string document = "<%a%>\r\n<%b%>\r\n<%c%>\r\n<%d%>\r\n";
  ReadOutcome got = readDocument(document, counted(2, 2), 4);
  EXPECT_EQ(got.text, "b;c");
  EXPECT_EQ(got.matches, 2);
}

TEST(ScanDocument, PositionsCountCharacters) {
  const ScanCase cases[] = {
      {"NonAsciiBefore", "\xC3\xA9\xE2\x82\xAC<%x%>", aspcode(), "x", 1},
      {"NonAsciiInside", "<%\xC3\xA9\xE2\x82\xAC%><%\xF0\x9F\x98\x80%>", aspcode(),
       "\xC3\xA9\xE2\x82\xAC;\xF0\x9F\x98\x80", 2},
      {"InvalidBytesKept", "\xFF<%\xFE\xC3 \xED\xA0\x80%>", aspcode(), "\xFE\xC3 \xED\xA0\x80", 1},
  };
  for (const ScanCase& c : cases) {
    SCOPED_TRACE(c.name);
    ReadOutcome got = readDocument(c.document, c.request);
    EXPECT_EQ(got.text, c.want);
    EXPECT_EQ(got.matches, c.matches);
  }
}

TEST(ScanDocument, LongLinesAndTheSixteenBitLimit) {
  const std::string filler(40000, 'x');
  ReadOutcome far = readDocument("<%a%>" + filler + "<%b%>", aspcode());
  EXPECT_EQ(far.text, "ERROR: Overflow.");
  EXPECT_EQ(far.matches, -1);

  ReadOutcome near = readDocument("<%a%>" + filler, aspcode());
  EXPECT_EQ(near.text, "a");
  EXPECT_EQ(near.matches, 1);

  // The search for the next candidate runs after the last wanted instance too.
  EXPECT_EQ(readDocument("<%a%>" + filler + "<%b%>", counted(1, 1)).text, "ERROR: Overflow.");

  // An instance in an earlier chunk is found when the count ends the scan there.
  const std::string firstChunk = "<%a%>" + std::string(2100, 'y') + ">\r\n";
  EXPECT_EQ(readDocument(firstChunk + filler + "<%b%>", counted(1, 1)).text, "a");
  EXPECT_EQ(readDocument(firstChunk + filler + "<%b%>", counted(1, 0)).text, "ERROR: Overflow.");
}

TEST(ScanDocument, LongResultsAreWhole) {
  std::string many;
  for (int i = 0; i < 12000; ++i) many += "<%ab%>\r\n";
  ReadOutcome got = readDocument(many, aspcode());
  EXPECT_EQ(got.matches, 12000);
  EXPECT_EQ(got.text.size(), 12000u * 3 - 1);

  std::string longInstance = "<%";
  for (int i = 0; i < 500; ++i) longInstance += std::string(98, 'y') + "\r\n";
  longInstance += "%>";
  got = readDocument(longInstance, aspcode());
  EXPECT_EQ(got.matches, 1);
  EXPECT_EQ(got.text.size(), 500u * 100);
}

}  // namespace
}  // namespace tagwright
