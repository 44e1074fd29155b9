// The meta tag reader: the one tag form it knows, the name test, its
// counters across chunks, the pair and the last cut, 16-bit positions and
// its failure texts, through readMetaContent and `tagwright meta`.
#include <gtest/gtest.h>

#include "support/requests.h"

namespace tagwright {
namespace {

// Five tags, one to a line: capitals, two plain tags, one of another form
// (content first) and a name that ends in "author".
const std::string kExample =
    "<META NAME=\"Robots\" CONTENT=\"none\">\r\n"
    "<meta name=\"author\" content=\"The Editors\">\r\n"
    "<meta name=\"description\" content=\"A page\">\r\n"
    "<meta content=\"x\" name=\"y\">\r\n"
    "<meta name=\"page-author\" content=\"Staff\">\r\n";
const std::string kTwoTags = "<meta name=\"a\" content=\"1\">\r\n<meta name=\"b\" content=\"2\">";

struct Meta {
  std::string document = "C:\\doc.htm";
  std::string name = "*";
  std::int16_t start = 1;
  std::int16_t count = 0;
  std::string equals = "$eq$";
  std::string separator = ";";
};

Outcome readMeta(FakePlatform& platform, const Meta& m, std::int32_t bufferLength = 2048) {
  Tagwright instance(platform);
  TagwrightTestAccess::setBufferLength(instance, bufferLength);
  Outcome o;
  o.text = instance.readMetaContent(m.document, m.name, m.start, m.count, m.equals, m.separator,
                                    &o.matches);
  EXPECT_EQ(platform.openFileCount(), 0);
  return o;
}

Outcome readMeta(const std::string& document, const Meta& m, std::int32_t bufferLength = 2048) {
  FakePlatform platform;
  platform.files["/doc.htm"] = document;
  return readMeta(platform, m, bufferLength);
}

TEST(ReadMetaContent, Example) {
  const struct {
    Meta meta;
    std::vector<std::string> options;
    std::string text;
    int matches;
  } cases[] = {
      {{},
       {},
       "Robots$eq$none;author$eq$The Editors;description$eq$A page;page-author$eq$Staff",
       4},
      {{.name = "author"},
       {"--meta-name", "author"},
       "author$eq$The Editors;page-author$eq$Staff",
       2},
      {{.name = "author", .start = 2},
       {"--meta-name", "author", "--start-instance", "2"},
       "page-author$eq$Staff",
       1},
      {{.start = 2, .count = 1},
       {"--start-instance", "2", "--count-instances", "1"},
       "author$eq$The Editors",
       1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    // At a chunk length of 1 every line is a chunk: the counters run across chunks.
    for (std::int32_t bufferLength : {2048, 1}) {
      EXPECT_EQ(readMeta(kExample, c.meta, bufferLength), (Outcome{c.text, c.matches}));
    }
    std::vector<std::string> arguments = {"meta", "C:\\doc.htm", "--separator", ";", "--json"};
    arguments.insert(arguments.end(), c.options.begin(), c.options.end());
    FakePlatform platform;
    platform.files["/doc.htm"] = kExample;
    HostRun run = runTagwright(arguments, &platform);
    EXPECT_EQ(run.out, "{\"result\":\"" + c.text +
                           "\",\"matchesFound\":" + std::to_string(c.matches) + "}\n");
    EXPECT_EQ(run.status, 0);
  }
}

TEST(ReadMetaContent, TagFormsAndPairs) {
  const std::string x(33000, 'x'), overflow = "ERROR: Overflow.";
  const struct {
    const char* name;
    std::string document;
    Meta meta;
    std::string text;
    int matches;
    std::int32_t bufferLength = 2048;
  } cases[] = {
      {"LangBetween",
       "<meta name=\"author\" lang=\"en\" content=\"x\">",
       {.name = "author"},
       "",
       0},
      {"SingleQuotes", "<meta name='author' content='x'>", {}, "", 0},
      {"TwoBlanksBetween", "<meta name=\"author\"  content=\"x\">", {}, "", 0},
      {"LineEndBetween", "<meta name=\"author\"\r\ncontent=\"x\">", {}, "", 0},
      {"NoContentBeforeLaterTag",
       "<meta name=\"author\">\r\n<meta name=\"b\" content=\"c\">",
       {},
       "b$eq$c",
       1},
      {"GreaterThanInContent",
       "<meta name=\"a\" content=\"x>y\">\r\n<meta name=\"b\" content=\"c\">",
       {},
       ";b$eq$c",
       2},
      {"ContentOverLines", "<meta name=\"a\" content=\"one\r\ntwo\">", {}, "a$eq$one\r\ntwo", 1},
      {"NameEndAndCapitals",
       "<meta name=\"My-Author\" CONTENT=\"Ann\">",
       {.name = "AUTHOR"},
       "My-Author$eq$Ann",
       1},
      {"LongerNameIsOther", "<meta name=\"authors\" content=\"s\">", {.name = "author"}, "", 0},
      {"CharactersNotBytes", "é€<meta name=\"ü\" content=\"€\">", {.name = "Ü"}, "ü$eq$€", 1},
      {"TagRightBehindTakenIsPassedOver",
       "<meta name=\"a\" content=\"1\"><meta name=\"b\" content=\"2\">",
       {},
       "a$eq$1",
       1},
      {"TagRightBehindSkippedIsFound",
       "<meta name=\"a\" content=\"1\"><meta name=\"b\" content=\"2\">",
       {.start = 2},
       "b$eq$2",
       1},
      {"SeparatorTrimmedAndCut", kTwoTags, {.separator = " -- "}, "a$eq$1--b$eq$2-", 2},
      {"DefaultSeparatorIsNul", kTwoTags, {.separator = ""}, std::string("a$eq$1\0b$eq$2", 13), 2},
      {"EqualsTrimmed", kTwoTags, {.equals = " = "}, "a=1;b=2", 2},
      {"TagCutByTheChunkEnd",
       "<meta name=\"a\" content=\"1\r\n2\r\n3\r\n4\r\n5\r\n6\r\n7\">\r\n<meta name=\"b\" "
       "content=\"c\">",
       {},
       "b$eq$c",
       1,
       1},
      {"TagBeyond32767", x + "<meta name=\"a\" content=\"b\">", {}, overflow, -1},
      {"PatternBeyond32767", "<meta name=\"a\">" + x + "\" content=\"b", {}, overflow, -1},
      {"ClosingQuoteBeyond32767", "<meta name=\"a\" content=\"b" + x + "\">", {}, overflow, -1},
      {"LongLineBehindTag", "<meta name=\"a\" content=\"b\">" + x, {}, "a$eq$b", 1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(readMeta(c.document, c.meta, c.bufferLength), (Outcome{c.text, c.matches}));
  }
}

TEST(ReadMetaContent, Failures) {
  const struct {
    Meta meta;
    const char* failingCall;
    std::string text;
  } cases[] = {
      {{.document = "  "},
       "",
       "ERROR: A physical or virtual path and file name of the target document must be provided."},
      {{.document = "C:\\nope.htm"}, "", "ERROR: Cannot open document file: 'C:\\nope.htm'."},
      {{.document = "doc.htm"},
       "",
       "ERROR: Virtual file paths can only be used when running in ASP."},
      {{.start = 0}, "", "ERROR: The start element instance number must be greater than zero."},
      {{}, "closeFile", "ERROR: Device I/O error."},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    FakePlatform platform;
    platform.files["/doc.htm"] = kExample;
    platform.failNamedCall(c.failingCall, Failure::Kind::kDeviceIo);
    EXPECT_EQ(readMeta(platform, c.meta), (Outcome{c.text, -1}));
  }
}

}  // namespace
}  // namespace tagwright
