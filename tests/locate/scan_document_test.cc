// Whole-document reads through readXPointer: counting, separators and the
// last cut, close markers and tags across chunks, what the stretch a matcher
// leaves hides or shows, characters beyond ASCII, and 16-bit positions on
// one-line pages longer than 32767 characters.
#include <gtest/gtest.h>

#include "support/requests.h"

namespace tagwright {
namespace {

std::string repeat(const std::string& text, int times) {
  std::string out;
  for (int i = 0; i < times; ++i) out += text;
  return out;
}

struct ReadCase {
  const char* name;
  std::string document;
  Request request;
  std::string text;
  int matches;
  std::int32_t bufferLength = 2048;
};

void expectReads(const std::vector<ReadCase>& cases) {
  for (const ReadCase& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(readDocument(c.document, c.request, c.bufferLength), (Outcome{c.text, c.matches}));
  }
}

const std::string kThreeLines = "<?xml version=\"1.0\"?>\r\n<%a=1%><p>x</p>\r\n<%b%>\r\n";
const std::string kLines = "0123456789\r\n";  // in chunks of 8, every line is a chunk

TEST(ScanDocument, ServerCodeAndTheDriver) {
  const std::string y98 = std::string(98, 'y') + "\r\n";
  expectReads({
      {"InnerMarkup", kThreeLines, Request{}, "a=1;b", 2},
      {"OuterMarkup", kThreeLines, Request{.contentType = "outerMarkup"}, "<%a=1%>;<%b%>", 2},
      {"ProcessingInstruction", kThreeLines, Request{.element = "#pi"}, "xml version=\"1.0\"", 1},
      {"StartInstanceTwo", kThreeLines, Request{.start = 2}, "b", 1},
      {"BlankTextDroppedSeparatorKept", "<% %><%b%>", Request{.separator = ","}, ",b", 2},
      {"SeparatorTrimmedAndOneCharacterCut", "<%a%>x<%b%>", Request{.separator = " -- "}, "a--b-",
       2},
      {"NulByDefault", "<%a%>x<%b%>", Request{.separator = ""}, std::string("a\0b", 3), 2},
      {"TabIsNotBlank", "<%\t%>", Request{}, "\t", 1},
      {"CountStopsMidChunk", "<%a%>x<%b%>x<%c%>", Request{.count = 2}, "a;b", 2},
      {"StartAndCount", "<%a%>x<%b%>x<%c%>", Request{.start = 2, .count = 1}, "b", 1},
      {"StartAndCountAcrossChunks", "<%a%>\r\n<%b%>\r\n<%c%>\r\n<%d%>",
       Request{.start = 2, .count = 2}, "b;c", 2, 4},
      {"OneCharacterBetweenHidesOuter", "<%a%>x<%b%>", Request{.contentType = "outerMarkup"},
       "<%a%>", 1},
      {"ConsecutiveLinesOuter", "<%a%>\r\n<%b%>", Request{.contentType = "outerMarkup"},
       "<%a%>;<%b%>", 2},
      {"MissingCloseMarker", "<%a%>x<%b%>\r\n<%c\r\nd\r\n", Request{.separator = ","},
       "ERROR: Found 'a,b,'--> Missing element end tag '%>'.", -1},
      {"CloseSeveralChunksLater", "ab<%x" + kLines + kLines + "y%>z\r\n<%q%>", Request{},
       "x" + kLines + kLines + "y;q", 2, 8},
      {"CloseStartsAChunk", "<%" + kLines + "%>after<%q%>", Request{}, kLines + ";q", 2, 8},
      {"NonAsciiBefore", "\xC3\xA9\xE2\x82\xAC<%x%>", Request{}, "x", 1},
      {"NonAsciiInside", "<%\xC3\xA9\xE2\x82\xAC%><%\xF0\x9F\x98\x80%>", Request{},
       "\xC3\xA9\xE2\x82\xAC;\xF0\x9F\x98\x80", 2},
      {"InvalidBytesKept", "\xFF<%\xFE\xC3 \xED\xA0\x80%>", Request{}, "\xFE\xC3 \xED\xA0\x80", 1},
      {"ManyInstancesReturnedWhole", repeat("<%ab%>\r\n", 12000), Request{},
       repeat("ab;", 12000).substr(0, 35999), 12000},
      {"LongInstanceReturnedWhole", "<%" + repeat(y98, 500) + "%>", Request{}, repeat(y98, 500), 1},
  });
}

TEST(ScanDocument, ElementsDeclarationsAndComments) {
  const std::string list = "<li>a</li><li>b</li><li>c</li>\r\n";
  const std::string nested = "<p><b>x</b></p>\r\n";
  const std::string titled = "<p class=x><b id=1>x</b></p>\r\n";
  const std::string subset = "<!DOCTYPE note [\r\n<!ELEMENT note (to)>\r\n]>\r\n<note/>\r\n";
  const std::string comments = "<!-- a --><!ELEMENT x (y)><!--b--><!foo>\r\n";
  const std::string ete = "<p title=\"ÉTÉ\">x</p><p title=\"ete\">y</p><p title=\"été\">z</p>";
  expectReads({
      {"OuterHidesTheNeighbour", list, Request{.element = "li", .contentType = "outerMarkup"},
       "<li>a</li>;<li>c</li>", 2},
      {"InnerSeesAllThree", list, Request{.element = "li"}, "a;b;c", 3},
      {"PassedOverOuterShowsInside", nested,
       Request{.element = "#element", .start = 2, .contentType = "outerMarkup"}, "<b>x</b>", 1},
      {"PassedOverInnerHidesInside", nested, Request{.element = "#element", .start = 2}, "", 0},
      {"RefusedOuterShowsInside", titled,
       Request{.element = "#element", .attributeName = "id", .contentType = "outerMarkup"},
       "<b id=1>x</b>", 1},
      {"RefusedInnerHidesInside", titled, Request{.element = "#element", .attributeName = "id"}, "",
       0},
      {"FirstCloseMarkerEnds", "<div><div>x</div>y</div>\r\n", Request{.element = "div"}, "<div>x",
       1},
      {"EmptyInstancesCountWithoutText", "<br/>\r\n<p></p>\r\n", Request{.element = "#element"}, "",
       2},
      {"SelfClosingOuterIsTheTag", "<BR/>\r\n",
       Request{.element = "br", .contentType = "outerMarkup"}, "<BR/>", 1},
      {"QuotedGreaterThanEndsTag", "<a title=\"1>2\" href=x>t</a>\r\n", Request{.element = "a"},
       "2\" href=x>t", 1},
      {"AttributeInnerText", "<P Class=\"A\">Hello <B>World</B>!</P>\r\n",
       Request{.element = "p",
               .attributeName = "class",
               .attributeValue = "a",
               .contentType = "innerText"},
       "Hello World !", 1},
      {"NonAsciiValueInDocument", ete,
       Request{.element = "p", .attributeName = "title", .attributeValue = "été"}, "x;z", 2},
      {"NonAsciiValueInParameter", ete,
       Request{.element = "p", .attributeName = "title", .attributeValue = "ÉTÉ"}, "x;z", 2},
      {"UnendedTagPassedOver", "<p>one<p>two</p>\r\n", Request{.element = "p", .start = 2}, "two",
       1},
      {"UnendedTagTaken", "<p>one\r\n", Request{.element = "p"},
       "ERROR: Found ''--> Missing element end tag '</p>'.", -1},
      {"TagEndInNextChunk", "<p title=\"1\r\n2\r\n3\r\n4\r\n5\r\n6\r\n\">x</p><p>y</p>\r\n",
       Request{.element = "p"}, "y", 1, 1},
      {"InnerTextOverChunks", "<div>\r\n<b>one</b>\r\ntwo\r\n</div>\r\n",
       Request{.element = "div", .contentType = "innerText"}, "one two", 1, 1},
      {"InnerTextOfScript", "<p>if (a<b) {x}</p>\r\n",
       Request{.element = "p", .contentType = "innerText"}, "if (a<b) {x}", 1},
      {"InnerTextWithOpenLt", "<p><a>b<c</p>\r\n",
       Request{.element = "p", .contentType = "innerText"},
       "ERROR: Invalid procedure call or argument.", -1},
      {"InternalSubset", subset, Request{.element = "#dtd"},
       "DOCTYPE note [\r\n<!ELEMENT note (to)>\r\n", 1},
      {"InternalSubsetOuter", subset, Request{.element = "#dtd", .contentType = "outerMarkup"},
       "<!DOCTYPE note [\r\n<!ELEMENT note (to)>\r\n]>", 1},
      {"CommentsBesideDeclarations", comments, Request{.element = "#comment"}, " a ;b;foo", 3},
      {"CommentsOuter", comments, Request{.element = "#comment", .contentType = "outerMarkup"},
       "<!-- a -->;<!--b-->", 2},
  });
}

// One line is one chunk however long. Every position the scan and the
// matchers compute is 16-bit, also one that is only compared (a tag end, the
// "[" of a doctype): a hit out there fails the read, while an instance taken
// before the scan gets that far is still returned.
TEST(ScanDocument, OneLinePageLongerThan32767) {
  const std::string x(40000, 'x'), overflow = "ERROR: Overflow.";
  const std::string farCode = "<%a%>" + x + "<%b%>",
                    nearChunk = "<%a%>" + x.substr(0, 2100) + ">\r\n";
  const std::string farTag = "<p>x</p><p>z</p>" + x + "<p>y</p>\r\n";
  const std::string farTagEnd = "<p>x</p><p " + x + ">y</p>\r\n";
  expectReads({
      {"NoMarkerOutThere", "<%a%>" + x, Request{}, "a", 1},
      {"FarMarker", farCode, Request{}, overflow, -1},
      {"SearchBehindTheLastWantedStillRuns", farCode, Request{.count = 1}, overflow, -1},
      {"CountEndsTheScanInAnEarlierChunk", nearChunk + farCode, Request{.count = 1}, "a", 1},
      {"EarlierChunkThenFarMarker", nearChunk + farCode, Request{}, overflow, -1},
      {"FarNamedElement", farTag, Request{.element = "p"}, overflow, -1},
      {"FarNamedElementNotReached", farTag, Request{.element = "p", .count = 1}, "x", 1},
      {"FarAnyElement", farTag, Request{.element = "#element"}, overflow, -1},
      {"FarTagEnd", farTagEnd, Request{.element = "p"}, overflow, -1},
      {"FarTagEndNotReached", farTagEnd, Request{.element = "p", .count = 1}, "x", 1},
      {"NameEndBeyondLimit", std::string(32765, 'x') + "<p>y</p>", Request{.element = "p"},
       overflow, -1},
      {"FirstCharacterBeyondLimit", std::string(32766, 'x') + "<p>", Request{.element = "#element"},
       overflow, -1},
      {"DoctypeWithFarBracket", "<!DOCTYPE html PUBLIC \"x\">" + x + "[",
       Request{.element = "#dtd"}, overflow, -1},
      {"DoctypeWithoutFarBracket", "<!DOCTYPE html PUBLIC \"x\">" + x, Request{.element = "#dtd"},
       "DOCTYPE html PUBLIC \"x\"", 1},
      {"CommentContentBeyondLimit", std::string(32764, 'x') + "<!--c-->",
       Request{.element = "#comment"}, overflow, -1},
  });
}

}  // namespace
}  // namespace tagwright
