// The meta tag reader: the one tag form it knows, the name test, its
// counters across chunks, the pair and the last cut, 16-bit positions and
// its failure texts.
#include <gtest/gtest.h>

#include "support/requests.h"

namespace tagwright {
namespace {

using Meta = MetaRequest;

TEST(ReadMetaContent, Table) {
  const std::string x(33000, 'x'), overflow = "ERROR: Overflow.";
  const std::string two = "<meta name=\"a\" content=\"1\">\r\n<meta name=\"b\" content=\"2\">";
  const std::string adjacent = "<meta name=\"a\" content=\"1\"><meta name=\"b\" content=\"2\">";
  std::vector<ReadRow<Meta>> rows = {
      {"LangBetween", "<meta name=\"author\" lang=\"en\" content=\"x\">", Meta{.name = "author"},
       "", 0},
      {"SingleQuotes", "<meta name='author' content='x'>", Meta{}, "", 0},
      {"TwoBlanksBetween", "<meta name=\"author\"  content=\"x\">", Meta{}, "", 0},
      {"LineEndBetween", "<meta name=\"author\"\r\ncontent=\"x\">", Meta{}, "", 0},
      {"NoContentBeforeLaterTag", "<meta name=\"author\">\r\n<meta name=\"b\" content=\"c\">",
       Meta{}, "b$eq$c", 1},
      {"GreaterThanInContent", "<meta name=\"a\" content=\"x>y\">\r\n" + two, Meta{},
       ";a$eq$1;b$eq$2", 3},
      {"ContentOverLines", "<meta name=\"a\" content=\"one\r\ntwo\">", Meta{}, "a$eq$one\r\ntwo",
       1},
      {"NameEndAndCapitals", "<meta name=\"My-Author\" CONTENT=\"Ann\">", Meta{.name = "AUTHOR"},
       "My-Author$eq$Ann", 1},
      {"LongerNameIsOther", "<meta name=\"authors\" content=\"s\">", Meta{.name = "author"}, "", 0},
      {"TagRightBehindTakenIsPassedOver", adjacent, Meta{}, "a$eq$1", 1},
      {"TagRightBehindSkippedIsFound", adjacent, Meta{.start = 2}, "b$eq$2", 1},
      {"SeparatorTrimmedAndCut", two, Meta{.separator = " -- "}, "a$eq$1--b$eq$2-", 2},
      {"DefaultSeparatorIsNul", two, Meta{.separator = ""}, std::string("a$eq$1\0b$eq$2", 13), 2},
      {"EqualsTrimmed", two, Meta{.equals = " = "}, "a=1;b=2", 2},
      {"TagCutByTheChunkEnd",
       "<meta name=\"a\" content=\"1\r\n2\r\n3\r\n4\r\n5\r\n6\r\n7\">\r\n" + two, Meta{},
       "a$eq$1;b$eq$2", 2, 1},
      {"TagBeyond32767", x + "<meta name=\"a\" content=\"b\">", Meta{}, overflow, -1},
      {"PatternBeyond32767", "<meta name=\"a\">" + x + "\" content=\"b", Meta{}, overflow, -1},
      {"QuoteBeyond32767", "<meta name=\"a\" content=\"b" + x + "\">", Meta{}, overflow, -1},
      {"LongLineBehindTag", "<meta name=\"a\" content=\"b\">" + x, Meta{}, "a$eq$b", 1},
      {"StartZero", two, Meta{.start = 0},
       "ERROR: The start element instance number must be greater than zero.", -1},
  };
  // Capitals, two plain tags, one of another form (content first) and a name
  // that ends in "author"; at a chunk length of 1 every line is a chunk, and
  // the counters run across chunks.
  const std::string example =
      "<META NAME=\"Robots\" CONTENT=\"none\">\r\n<meta name=\"author\" content=\"The "
      "Editors\">\r\n<meta name=\"description\" content=\"A page\">\r\n"
      "<meta content=\"x\" name=\"y\">\r\n<meta name=\"page-author\" content=\"Staff\">\r\n";
  const std::string all =
      "Robots$eq$none;author$eq$The Editors;description$eq$A page;page-author$eq$Staff";
  for (std::int32_t length : {2048, 1}) {
    rows.push_back({"Example", example, Meta{}, all, 4, length});
    rows.push_back({"ExampleName", example, Meta{.name = "author"},
                    "author$eq$The Editors;page-author$eq$Staff", 2, length});
    rows.push_back({"ExampleNameFromTwo", example, Meta{.name = "author", .start = 2},
                    "page-author$eq$Staff", 1, length});
    rows.push_back({"ExampleSecondAlone", example, Meta{.start = 2, .count = 1},
                    "author$eq$The Editors", 1, length});
  }
  expectReads(rows);
}

}  // namespace
}  // namespace tagwright
