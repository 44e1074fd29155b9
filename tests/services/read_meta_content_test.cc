// The meta tag reader: the one tag form it knows, the name test, counting
// across chunks, the pair and the last cut, 16-bit positions and failures.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "services/meta_example.h"
#include "services/scan_meta_tags.h"
#include "support/fake_platform.h"
#include "support/tagwright_test_access.h"
#include "tagwright/tagwright.h"

namespace tagwright {
namespace {

struct MetaRequest {
  std::string name = "*";
  std::int16_t start = 1;
  std::int16_t count = 0;
  std::string equals = "$eq$";
  std::string separator = ";";
};

struct MetaOutcome {
  std::string text;
  int matches = 0;
  int openFiles = 0;
};

MetaOutcome readMeta(FakePlatform& platform, const std::string& document,
                     const MetaRequest& request, std::int32_t bufferLength = 2048) {
  platform.files["/doc.htm"] = document;
  Tagwright instance(platform);
  TagwrightTestAccess::setBufferLength(instance, bufferLength);
  MetaOutcome outcome;
  outcome.text = instance.readMetaContent("C:\\doc.htm", request.name, request.start, request.count,
                                          request.equals, request.separator, &outcome.matches);
  outcome.openFiles = platform.openFileCount();
  return outcome;
}

MetaOutcome readMeta(const std::string& document, const MetaRequest& request,
                     std::int32_t bufferLength = 2048) {
  FakePlatform platform;
  return readMeta(platform, document, request, bufferLength);
}

struct MetaCase {
  const char* name;
  std::string document;
  MetaRequest request;
  std::string want;
  int matches;
};

MetaRequest named(std::string name, std::int16_t start = 1, std::int16_t count = 0) {
  MetaRequest r;
  r.name = std::move(name);
  r.start = start;
  r.count = count;
  return r;
}

MetaRequest separatedBy(std::string separator, std::string equals = "$eq$") {
  MetaRequest r;
  r.separator = std::move(separator);
  r.equals = std::move(equals);
  return r;
}

void expectCases(const MetaCase* begin, const MetaCase* end, std::int32_t bufferLength) {
  for (const MetaCase* c = begin; c != end; ++c) {
    SCOPED_TRACE(c->name);
    MetaOutcome got = readMeta(c->document, c->request, bufferLength);
    EXPECT_EQ(got.text, c->want);
    EXPECT_EQ(got.matches, c->matches);
    EXPECT_EQ(got.openFiles, 0);
  }
}

TEST(ReadMetaContent, ExampleInOneChunkAndLineByLine) {
  const MetaCase cases[] = {
      {"AllTags", kMetaExample, named("*"),
       "Robots$eq$none;author$eq$The Editors;description$eq$A page;page-author$eq$Staff", 4},
      {"NameEndsInAuthor", kMetaExample, named("author"),
       "author$eq$The Editors;page-author$eq$Staff", 2},
      {"SecondAuthor", kMetaExample, named("author", 2), "page-author$eq$Staff", 1},
      {"SecondOfAllOnlyOne", kMetaExample, named("*", 2, 1), "author$eq$The Editors", 1},
  };
  // A chunk length of 1 makes every line a chunk of its own: both counters
  // then run across chunks.
  for (std::int32_t bufferLength : {2048, 1}) {
    SCOPED_TRACE(bufferLength);
    expectCases(std::begin(cases), std::end(cases), bufferLength);
  }
}

TEST(ReadMetaContent, TagFormsAndPairs) {
  const std::string twoTags =
      "<meta name=\"a\" content=\"1\">\r\n<meta name=\"b\" content=\"2\">\r\n";
  const MetaCase cases[] = {
      {"LangBetweenAttributes", "<meta name=\"author\" lang=\"en\" content=\"x\">\r\n",
       named("author"), "", 0},
      {"LongerNameIsOther", "<meta name=\"authors\" content=\"s\">\r\n", named("author"), "", 0},
      {"SingleQuotes", "<meta name='author' content='x'>\r\n", named("*"), "", 0},
      {"TwoBlanksBetween", "<meta name=\"author\"  content=\"x\">\r\n", named("*"), "", 0},
      {"LineEndBetween", "<meta name=\"author\"\r\ncontent=\"x\">\r\n", named("*"), "", 0},
      {"NoContentBeforeLaterTag", "<meta name=\"author\">\r\n<meta name=\"b\" content=\"c\">\r\n",
       named("*"), "b$eq$c", 1},
      {"GreaterThanInContentGivesEmptyPair",
       "<meta name=\"a\" content=\"x>y\">\r\n<meta name=\"b\" content=\"c\">\r\n", named("*"),
       ";b$eq$c", 2},
      {"ContentOverLines", "<meta name=\"a\" content=\"one\r\ntwo\">\r\n", named("*"),
       "a$eq$one\r\ntwo", 1},
      {"CapitalsInOneAttribute", "<meta name=\"Author\" CONTENT=\"Ann\">\r\n", named("AUTHOR"),
       "Author$eq$Ann", 1},
      {"EmptyNameIsEveryName", twoTags, named(""), "a$eq$1;b$eq$2", 2},
      {"CharactersNotBytes", "é€<meta name=\"ü\" content=\"€\">\r\n", named("Ü"), "ü$eq$€", 1},
      {"InsideCommentAndBody", "<body><!-- <meta name=\"a\" content=\"1\"> --></body>\r\n",
       named("*"), "a$eq$1", 1},
      {"TagRightBehindTakenTagIsPassedOver",
       "<meta name=\"a\" content=\"1\"><meta name=\"b\" content=\"2\">\r\n", named("*"), "a$eq$1",
       1},
      {"TagRightBehindSkippedTagIsFound",
       "<meta name=\"a\" content=\"1\"><meta name=\"b\" content=\"2\">\r\n", named("*", 2),
       "b$eq$2", 1},
      {"SeparatorTwoDashesLeavesOne", twoTags, separatedBy("--"), "a$eq$1--b$eq$2-", 2},
      {"SeparatorTrimmed", twoTags, separatedBy(" ; "), "a$eq$1;b$eq$2", 2},
      {"DefaultSeparatorIsNul", twoTags, separatedBy(""), std::string("a$eq$1\0b$eq$2", 13), 2},
      {"EqualsTrimmed", twoTags, separatedBy(";", " = "), "a=1;b=2", 2},
      {"EmptyEquals", twoTags, separatedBy(";", ""), "a1;b2", 2},
  };
  expectCases(std::begin(cases), std::end(cases), 2048);
}

// A chunk holds whole lines and at most five more looking for a ">": a tag
// whose ">" lies further on is cut off, lost, and not counted.
TEST(ReadMetaContent, TagCutOffByChunkEndIsLost) {
  MetaOutcome got = readMeta(
      "<meta name=\"a\" content=\"1\r\n2\r\n3\r\n4\r\n5\r\n6\r\n7\">\r\n<meta name=\"b\" "
      "content=\"c\">\r\n",
      named("*"), 1);
  EXPECT_EQ(got.text, "b$eq$c");
  EXPECT_EQ(got.matches, 1);
}

// Positions are 16-bit: what the reader finds beyond 32767 in one chunk is
// the overflow, while a long chunk alone is not.
TEST(ReadMetaContent, PositionsAreSixteenBit) {
  const std::string padding(33000, 'x');
  const MetaCase cases[] = {
      {"TagBeyondLimit", padding + "<meta name=\"a\" content=\"b\">\r\n", named("*"),
       "ERROR: Overflow.", -1},
      {"PatternBeyondLimit", "<meta name=\"a\">" + padding + "\" content=\"b\r\n", named("*"),
       "ERROR: Overflow.", -1},
      {"ClosingMarkerBeyondLimit", "<meta name=\"a\" content=\"b" + padding + "\">\r\n", named("*"),
       "ERROR: Overflow.", -1},
      {"LongLineBehindTag", "<meta name=\"a\" content=\"b\">" + padding + "\r\n", named("*"),
       "a$eq$b", 1},
  };
  expectCases(std::begin(cases), std::end(cases), 2048);
}

TEST(ReadMetaContent, FailureTexts) {
  struct FailureCase {
    const char* name;
    std::string document;
    MetaRequest request;
    const char* failNamed;
    std::string want;
    bool allowPhysical = true;
  };
  const FailureCase cases[] = {
      {"BlankDocumentName", "  ", named("*"), nullptr,
       "ERROR: A physical or virtual path and file name of the target document must be "
       "provided."},
      {"MissingDocument", "C:\\nope.htm", named("*"), nullptr,
       "ERROR: Cannot open document file: 'C:\\nope.htm'."},
      {"VirtualWithoutContext", "doc.htm", named("*"), nullptr,
       "ERROR: Virtual file paths can only be used when running in ASP."},
      {"StartInstanceZero", "C:\\doc.htm", named("*", 0), nullptr,
       "ERROR: The start element instance number must be greater than zero."},
      {"CloseFails", "C:\\doc.htm", named("*"), "closeFile", "ERROR: Device I/O error."},
      {"PhysicalPathRefused", "C:\\doc.htm", named("*"), nullptr,
       "ERROR: The use of physical file paths is denied by the administrator.", false},
  };
  for (const FailureCase& c : cases) {
    SCOPED_TRACE(c.name);
    FakePlatform platform;
    platform.files["/doc.htm"] = kMetaExample;
    if (c.failNamed != nullptr) platform.failNamedCall(c.failNamed, Failure::Kind::kDeviceIo);
    Tagwright instance(platform);
    TagwrightTestAccess::setAllowPhysicalDocRead(instance, c.allowPhysical);
    int matches = 0;
    EXPECT_EQ(instance.readMetaContent(c.document, c.request.name, c.request.start, c.request.count,
                                       c.request.equals, c.request.separator, &matches),
              c.want);
    EXPECT_EQ(matches, -1);
    EXPECT_EQ(platform.openFileCount(), 0);
  }
}

TEST(ExtractMetaPair, Table) {
  struct Case {
    const char* name;
    std::u32string tag;
    std::u32string equals;
    std::u32string want;
  };
  const Case cases[] = {
      {"KeepsCase", U"<META NAME=\"Robots\" CONTENT=\"None\"", U"$eq$", U"Robots$eq$None"},
      {"EmptyValues", U"<meta name=\"\" content=\"\"", U"=", U"="},
      {"ContentWithoutClosingQuote", U"<meta name=\"a\" content=\"x", U"=", U""},
      {"ContentKeepsLineEnds", U"<meta name=\"a\" content=\"1\r\n2\"", U"", U"a1\r\n2"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Text tag = c.tag;
    extractMetaPair(tag, c.equals);
    EXPECT_EQ(tag, c.want);
  }
}

}  // namespace
}  // namespace tagwright
