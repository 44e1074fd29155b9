// Whole-document reads through readXPointer: counting, separators and the
// last cut, close markers and tags across chunks, what the stretch a matcher
// leaves hides or shows, the transforms, characters beyond ASCII, and 16-bit
// positions on one-line pages longer than 32767 characters.
#include <gtest/gtest.h>

#include "support/requests.h"

namespace tagwright {
namespace {

const char* const kOuter = "outerMarkup";
const char* const kText = "innerText";

Request q(std::string element, std::string contentType = "innerMarkup", std::int16_t start = 1,
          std::int16_t count = 0) {
  return {.element = element, .start = start, .count = count, .contentType = contentType};
}

using ReadCase = ReadRow<Request>;

TEST(ScanDocument, ServerCodeAndTheDriver) {
  const std::string three = "<?xml version=\"1.0\"?>\r\n<%a=1%><p>x</p>\r\n<%b%>\r\n";
  const std::string abc = "<%a%>x<%b%>x<%c%>", line = "0123456789\r\n", y = repeat("y", 98);
  expectReads<Request>({
      {"InnerMarkup", three, q("#aspcode"), "a=1;b", 2},
      {"OuterMarkup", three, q("#aspcode", kOuter), "<%a=1%>;<%b%>", 2},
      {"ProcessingInstruction", three, q("#pi"), "xml version=\"1.0\"", 1},
      {"StartInstanceTwo", three, q("#aspcode", "", 2), "b", 1},
      {"BlankTextDroppedSeparatorKept", "<% %><%b%>", Request{.separator = ","}, ",b", 2},
      {"SeparatorTrimmedLastCharacterCut", abc, Request{.separator = " -- "}, "a--b--c-", 3},
      {"NulByDefault", abc, Request{.separator = ""}, std::string("a\0b\0c", 5), 3},
      {"StartAndCount", abc, q("#aspcode", "", 2, 1), "b", 1},
      {"StartAndCountOverChunks", "<%a%>\r\n<%b%>\r\n<%c%>\r\n<%d%>", q("#aspcode", "", 2, 2),
       "b;c", 2, 4},
      {"OneCharacterBetweenHidesOuter", abc, q("#aspcode", kOuter), "<%a%>;<%c%>", 2},
      {"MissingCloseMarker", "<%a%>x<%b%>\r\n<%c\r\nd\r\n", Request{.separator = ","},
       "ERROR: Found 'a,b,'--> Missing element end tag '%>'.", -1},
      {"CloseSeveralChunksLater", "<%x" + line + line + "y%>z\r\n<%q%>", q("#aspcode"),
       "x" + line + line + "y;q", 2, 8},
      {"CloseStartsAChunk", "<%" + line + "%>after<%q%>", q("#aspcode"), line + ";q", 2, 8},
      {"NonAsciiBefore", "\xC3\xA9\xE2\x82\xAC<%x%>", q("#aspcode"), "x", 1},
      {"NonAsciiInside", "<%\xC3\xA9\xE2\x82\xAC%><%\xF0\x9F\x98\x80%>", q("#aspcode"),
       "\xC3\xA9\xE2\x82\xAC;\xF0\x9F\x98\x80", 2},
      {"InvalidBytesKept", "\xFF<%\xFE\xC3 \xED\xA0\x80%>", q("#aspcode"), "\xFE\xC3 \xED\xA0\x80",
       1},
      {"ManyInstancesWhole", repeat("<%ab%>\r\n", 12000), q("#aspcode"),
       repeat("ab;", 12000).substr(0, 35999), 12000},
      {"LongInstanceWhole", "<%" + repeat(y + "\r\n", 500) + "%>", q("#aspcode"),
       repeat(y + "\r\n", 500), 1},
  });
}

TEST(ScanDocument, ElementsDeclarationsAndComments) {
  const std::string list = "<li>a</li><li>b</li><li>c</li>", nested = "<p><b>x</b></p>";
  const std::string titled = "<p class=x><b id=1>x</b></p>";
  const std::string subset = "<!DOCTYPE n [\r\n<!ELEMENT n (to)>\r\n]>\r\n<n/>";
  const std::string comments = "<!-- a --><!ELEMENT x (y)><!--b--><!foo>";
  const std::string ete = "<p title=\"ÉTÉ\">x</p><p title=\"ete\">y</p><p title=\"été\">z</p>";
  expectReads<Request>({
      {"OuterHidesTheNeighbour", list, q("li", kOuter), "<li>a</li>;<li>c</li>", 2},
      {"InnerSeesAllThree", list, q("li"), "a;b;c", 3},
      {"PassedOverOuterShowsInside", nested, q("#element", kOuter, 2), "<b>x</b>", 1},
      {"PassedOverInnerHidesInside", nested, q("#element", "", 2), "", 0},
      {"RefusedOuterShowsInside", titled,
       Request{.element = "#element", .attributeName = "id", .contentType = kOuter},
       "<b id=1>x</b>", 1},
      {"FirstCloseMarkerEnds", "<div><div>x</div>y</div>", q("div"), "<div>x", 1},
      {"EmptyInstancesCountWithoutText", "<br/>\r\n<p></p>", q("#element"), "", 2},
      {"NonAsciiValueInDocument", ete,
       Request{.element = "p", .attributeName = "title", .attributeValue = "été"}, "x;z", 2},
      {"NonAsciiValueInParameter", ete,
       Request{.element = "p", .attributeName = "title", .attributeValue = "ÉTÉ"}, "x;z", 2},
      {"UnendedTagPassedOver", "<p>one<p>two</p>", q("p", "", 2), "two", 1},
      {"UnendedTagTaken", "<p>one", q("p"), "ERROR: Found ''--> Missing element end tag '</p>'.",
       -1},
      {"TagEndInNextChunk", "<p title=\"1\r\n2\r\n3\r\n4\r\n5\r\n6\r\n\">x</p><p>y</p>", q("p"),
       "y", 1, 1},
      {"InnerTextOverChunks", "<div>\r\n<B>one</B>\r\ntwo\r\n</div>", q("div", kText), "one two", 1,
       1},
      {"InnerTextOfScript", "<p>if (a<b) {x}</p>", q("p", kText), "if (a<b) {x}", 1},
      {"InnerTextWithOpenLt", "<p><a>b<c</p>", q("p", kText),
       "ERROR: Invalid procedure call or argument.", -1},
      {"InternalSubset", subset, q("#dtd"), "DOCTYPE n [\r\n<!ELEMENT n (to)>\r\n", 1},
      {"InternalSubsetOuter", subset, q("#dtd", kOuter), "<!DOCTYPE n [\r\n<!ELEMENT n (to)>\r\n]>",
       1},
      {"CommentsBesideDeclarations", comments, q("#comment"), " a ;b;foo", 3},
      {"CommentsOuter", comments, q("#comment", kOuter), "<!-- a -->;<!--b-->", 2},
  });
}

// The transforms at work in the scan: a bad string function is no failure
// of the operation but a text per instance, each span counts as a match
// with its own separator, and "innertext" strips what either returns.
TEST(ScanDocument, Transforms) {
  const std::string prices = "<%Price: USD 120%>\r\n<%no price%>x<%Net 5%>";
  const std::string format = "ERROR: Illegal String function format :0,E,0,2";
  const std::string spans =
      "<%<H2>One</h2> text <h3>Two</h3>%>\r\n<%none%>\r\n<%<h2>a</h2>b<h3>c</h3><h2>d</h2>e<h3>%>";
  expectReads<Request>({
      {"BadFormatPerInstance", prices, Request{.string = " 0,E,0,2 "},
       format + ";" + format + ";" + format, 3},
      {"StringThenInnerText", prices, Request{.contentType = kText, .string = "1,\"Net\",4,1"},
       ";;5", 3},
      // Each byte of an invalid sequence is a character of its own.
      {"InvalidBytesCountOneEach", "<%\xE0\x80\xAF\xED\xA0\x80x%>", Request{.string = "1,x,-6,6"},
       "\xE0\x80\xAF\xED\xA0\x80", 1},
      {"SpansInner", spans, Request{.span = " H2 , H3 "}, " text ;b;e", 3},
      // The separator reads as a tag and goes; the last cut then takes a letter.
      {"SpansInnerText", spans, Request{.contentType = kText, .span = "h2,h3", .separator = "<x>"},
       "textb ", 3},
  });
}

// One line is one chunk however long. Every position the scan and the
// matchers compute is 16-bit, also one that is only compared (a tag end, the
// "[" of a doctype): a hit out there fails the read, while an instance taken
// before the scan gets that far is still returned.
TEST(ScanDocument, OneLinePageLongerThan32767) {
  const std::string x(40000, 'x'), overflow = "ERROR: Overflow.";
  const std::string farCode = "<%a%>" + x + "<%b%>", nearChunk = "<%a%>" + x.substr(0, 2100);
  const std::string farTag = "<p>x</p><p>z</p>" + x + "<p>y</p>";
  const std::string farTagEnd = "<p>x</p><p " + x + ">y</p>";
  const std::string doctype = "<!DOCTYPE html PUBLIC \"x\">" + x;
  expectReads<Request>({
      {"NoMarkerOutThere", "<%a%>" + x, q("#aspcode"), "a", 1},
      {"FarMarker", farCode, q("#aspcode"), overflow, -1},
      {"SearchBehindTheLastWantedRuns", farCode, q("#aspcode", "", 1, 1), overflow, -1},
      {"CountEndsTheScanInAnEarlierChunk", nearChunk + ">\r\n" + farCode, q("#aspcode", "", 1, 1),
       "a", 1},
      {"FarNamedElement", farTag, q("p"), overflow, -1},
      {"FarNamedElementNotReached", farTag, q("p", "", 1, 1), "x", 1},
      {"FarAnyElement", farTag, q("#element"), overflow, -1},
      {"FarTagEnd", farTagEnd, q("p"), overflow, -1},
      {"NameEndBeyondLimit", std::string(32765, 'x') + "<p>y</p>", q("p"), overflow, -1},
      {"FirstCharacterBeyondLimit", std::string(32766, 'x') + "<p>", q("#element"), overflow, -1},
      {"DoctypeWithFarBracket", doctype + "[", q("#dtd"), overflow, -1},
      {"DoctypeWithoutFarBracket", doctype, q("#dtd"), "DOCTYPE html PUBLIC \"x\"", 1},
      {"CommentBeyondLimit", std::string(32764, 'x') + "<!--c-->", q("#comment"), overflow, -1},
  });
}

// Chunks whose candidates all fail on their start tags are passed over on
// their bytes, and plain results are copied from the bytes read. Neither may
// change what a read gives: a refused tag still hides the tag right behind
// it, a chunk too long for 16-bit positions is still scanned to its
// overflow, and the last cut takes one character of 1 to 4 bytes.
TEST(ScanDocument, BytesAndChunksPassedOver) {
  const std::string filler = repeat("<div class=\"\xC3\xA9\">y</div>\r\n", 40);
  const std::string hidden = filler + "<div class=\"a\"><DIV id=\"t\">x</div>\r\n" + filler +
                             "<DIV Id='T'>\xC3\xA9z\xFF</div>\r\n" + filler;
  const Request t{.element = "div", .attributeName = "id", .attributeValue = "t"};
  Request tOuter = t, anyT = t, anyTOuter = t;
  tOuter.contentType = anyTOuter.contentType = kOuter;
  anyT.element = anyTOuter.element = "#element";
  const std::string both = "<DIV id=\"t\">x</div>;<DIV Id='T'>\xC3\xA9z\xFF</div>";
  std::vector<ReadCase> cases;
  for (std::int32_t length : {1, 257, 30000}) {
    cases.push_back({"RefusedTagHidesTheNext", hidden, t, "\xC3\xA9z\xFF", 1, length});
    cases.push_back({"RefusedTagHidesTheNextAny", hidden, anyT, "\xC3\xA9z\xFF", 1, length});
    cases.push_back({"RefusedTagOuter", hidden, tOuter, both, 2, length});
    cases.push_back({"RefusedTagOuterAny", hidden, anyTOuter, both, 2, length});
  }
  // Tags told apart on their bytes must get the attribute test's verdict:
  // blanks dropped, capitals lowered, and beyond ASCII "İ" lowered to "i".
  const std::string spaced = filler + "<div i d = \"t\" >1</div><DIV ID='T'>2</div>\r\n" + filler +
                             "<div \xC4\xB0"
                             "d=\"t\">3</div><div id=\"tt\">4</div>\r\n" +
                             filler + "<div x = \"t\">5</div><div I D=x>6</div>\r\n" + filler;
  Request anyName = t, anyValue = t;
  anyName.attributeName = "*";
  anyValue.attributeValue = "*";
  for (std::int32_t length : {257, 2048}) {
    cases.push_back({"BlanksCapitalsAndDottedI", spaced, t, "1;2;3", 3, length});
    cases.push_back({"AnyNameWithValue", spaced, anyName, "1;2;3;5", 4, length});
    cases.push_back({"NameWithAnyValue", spaced, anyValue, "1;2;3;4;6", 5, length});
  }
  const std::string refused = "<p class=\"b\">y</p>", overflow = "ERROR: Overflow.";
  const Request p{.element = "p", .attributeName = "id"};
  const std::string longLine = repeat(std::string(3000, 'x') + "\r\n", 11);
  const std::string lastTag = "<p class=\"b\">";  // a chunk of 15 characters more
  const std::string cut =
      "<p>a\xC3\xA9</p><p>g\xE2\x82\xAC</p><p>h\xF0\x9F\x98\x80</p><p>k\xFF</p><p>\xC3</p>";
  const std::string blanks = "<p>  </p><p> a b </p><p>\t</p><p> </p>";
  const std::string dotted = "<D\xC4\xB0V>\xE2\x84\xAA</D\xC4\xB0V>";
  const std::vector<ReadCase> more = {
      {"OnlyCandidateBeyond32767", std::string(40000, 'x') + refused, p, overflow, -1},
      {"InvalidBytesCountAsCharacters", repeat("\x80", 40000) + refused, p, overflow, -1},
      {"TwoByteCharactersCountOnce", repeat("\xC3\xA9", 20000) + refused, p, "", 0},
      {"ChunkLengthReachedByLongLines", longLine + refused + "\r\n" + longLine, p, overflow, -1,
       30000},
      {"Chunk32764", repeat("\xC3\xA9", 32749) + lastTag, p, "", 0},
      {"Chunk32766", repeat("\xC3\xA9", 32751) + lastTag, p, "", 0},
      {"Chunk32767", repeat("\xC3\xA9", 32752) + lastTag, p, overflow, -1},
      {"LastCutNul", cut, Request{.element = "p", .separator = ""},
       std::string("a\xC3\xA9\0g\xE2\x82\xAC\0h\xF0\x9F\x98\x80\0k\xFF\0\xC3", 19), 5},
      {"LastCutThreeBytes", cut, Request{.element = "p", .separator = "\xE2\x82\xAC"},
       "a\xC3\xA9\xE2\x82\xACg\xE2\x82\xAC\xE2\x82\xACh\xF0\x9F\x98\x80\xE2\x82\xACk\xFF\xE2\x82"
       "\xAC\xC3",
       5},
      {"LastCutRawByte", cut, Request{.element = "p", .separator = "x\xE2\x82"},
       "a\xC3\xA9x\xE2\x82g\xE2\x82\xACx\xE2\x82h\xF0\x9F\x98\x80x\xE2\x82k\xFFx\xE2\x82\xC3x\xE2",
       5},
      {"BlanksDroppedInsideKept", blanks, Request{.element = "p", .separator = "\xC3\xA9"},
       "\xC3\xA9 a b \xC3\xA9\t\xC3\xA9", 4},
      {"LowerCaseOfOtherLength", dotted, q("div"), "\xE2\x84\xAA", 1},
      {"LowerCaseOfOtherLengthOuter", dotted, q("#element", kOuter), dotted, 1},
      {"MissingCloseKeepsBytes", "<p>\xC3\xA9\xFF</p><p>x", q("p"),
       "ERROR: Found '\xC3\xA9\xFF;'--> Missing element end tag '</p>'.", -1},
  };
  cases.insert(cases.end(), more.begin(), more.end());
  expectReads(cases);
}

}  // namespace
}  // namespace tagwright
