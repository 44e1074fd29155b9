// Whole-document reads through the element, declaration and comment
// matchers: what the position a matcher leaves hides or shows, tags across
// chunks, "innertext", and 16-bit positions on a long one-line page.
#include <gtest/gtest.h>

#include <string>

#include "support/read_request.h"

namespace tagwright {
namespace {

struct DocumentCase {
  const char* name;
  std::string document;
  ReadRequest request;
  std::string want;
  int matches;
  int bufferLength = 2048;
};

ReadRequest request(std::string element, std::string contentType = "innerMarkup",
                    std::int16_t start = 1) {
  ReadRequest r;
  r.element = std::move(element);
  r.contentType = std::move(contentType);
  r.start = start;
  return r;
}

ReadRequest withAttribute(ReadRequest r, std::string name, std::string value = "*") {
  r.attributeName = std::move(name);
  r.attributeValue = std::move(value);
  return r;
}

void expectCases(const DocumentCase* begin, const DocumentCase* end) {
  for (const DocumentCase* c = begin; c != end; ++c) {
    SCOPED_TRACE(c->name);
    ReadOutcome got = readDocument(c->document, c->request, c->bufferLength);
    EXPECT_EQ(got.text, c->want);
    EXPECT_EQ(got.matches, c->matches);
  }
}

const std::string kList = "<li>a</li><li>b</li><li>c</li>\r\n";
const std::string kNested = "<p><b>x</b></p>\r\n";
const std::string kTitled = "<p class=x><b id=1>x</b></p>\r\n";
const std::string kSplitTag = "<p title=\"1\r\n2\r\n3\r\n4\r\n5\r\n6\r\n\">x</p><p>y</p>\r\n";
const std::string kSpanningDiv = "<div>\r\n<b>one</b>\r\ntwo\r\n</div>\r\n";

TEST(ElementTypes, ElementsInDocuments) {
  const DocumentCase cases[] = {
      {"OuterHidesTheNeighbour", kList, request("li", "outerMarkup"), "<li>a</li>;<li>c</li>", 2},
      {"InnerSeesAllThree", kList, request("li"), "a;b;c", 3},
      {"OuterOnConsecutiveLines", "<li>a</li>\r\n<li>b</li>\r\n", request("li", "outerMarkup"),
       "<li>a</li>;<li>b</li>", 2},
      {"PassedOverOuterShowsInside", kNested, request("#element", "outerMarkup", 2), "<b>x</b>", 1},
      {"PassedOverInnerHidesInside", kNested, request("#element", "innerMarkup", 2), "", 0},
      {"RefusedOuterShowsInside", kTitled, withAttribute(request("#element", "outerMarkup"), "id"),
       "<b id=1>x</b>", 1},
      {"RefusedInnerHidesInside", kTitled, withAttribute(request("#element"), "id"), "", 0},
      {"FirstCloseMarkerEnds", "<div><div>x</div>y</div>\r\n", request("div"), "<div>x", 1},
      {"EmptyInstancesCountWithoutText", "<br/>\r\n<p></p>\r\n", request("#element"), "", 2},
      {"SelfClosingOuterIsTheTag", "<BR/>\r\n", request("#element", "outerMarkup"), "<BR/>", 1},
      {"LtBehindLtIsNeverSeen", "<<b>x</b>\r\n", request("#element"), "", 0},
      {"QuotedGreaterThanEndsTag", "<a title=\"1>2\" href=x>t</a>\r\n", request("#element"),
       "2\" href=x>t", 1},
      {"AttributeBehindQuotedGreaterThan", "<a title=\"1>2\" href=x>t</a>\r\n",
       withAttribute(request("#element"), "href"), "", 0},
      {"AttributeValueKeepsCapitalsOfText", "<P Class=\"A\">Hello <B>World</B>!</P>\r\n",
       withAttribute(request("p", "innerText"), "class", "a"), "Hello World !", 1},
      {"NonAsciiValueInDocumentCapitals", "<p title=\"ÉTÉ\">x</p><p title=\"ete\">y</p>\r\n",
       withAttribute(request("p"), "title", "été"), "x", 1},
      {"NonAsciiValueInParameterCapitals", "<p title=\"été\">x</p>\r\n",
       withAttribute(request("p"), "title", "ÉTÉ"), "x", 1},
      {"PositionsCountCharacters", "é€<p>x</p>\r\n", request("p"), "x", 1},
      {"UnendedTagPassedOver", "<p>one<p>two</p>\r\n", request("p", "innerMarkup", 2), "two", 1},
      {"UnendedTagTaken", "<p>one\r\n", request("p"),
       "ERROR: Found ''--> Missing element end tag '</p>'.", -1},
      {"UnendedTagAfterAResult", "<b>x</b><br>\r\n", request("#element"),
       "ERROR: Found 'x;'--> Missing element end tag '</br>'.", -1},
      {"TagEndInNextChunkIsNoInstance", kSplitTag, request("p"), "y", 1, 1},
      {"InnerTextOverChunks", kSpanningDiv, request("div", "innerText"), "one two", 1, 1},
      {"InnerTextOfScript", "<p>if (a<b) {x}</p>\r\n", request("p", "innerText"), "if (a<b) {x}",
       1},
      {"InnerTextWithOpenLt", "<p><a>b<c</p>\r\n", request("p", "innerText"),
       "ERROR: Invalid procedure call or argument.", -1},
  };
  expectCases(std::begin(cases), std::end(cases));
}

TEST(ElementTypes, DeclarationsAndComments) {
  const std::string subset = "<!DOCTYPE note [\r\n<!ELEMENT note (to)>\r\n]>\r\n<note/>\r\n";
  const std::string comments = "<!-- a --><!ELEMENT x (y)><!--b--><!foo>\r\n";
  const DocumentCase cases[] = {
      {"DoctypeWithWord", "<!DOCTYPE html PUBLIC \"-//W3C//DTD\">\r\n<html>\r\n", request("#dtd"),
       "DOCTYPE html PUBLIC \"-//W3C//DTD\"", 1},
      {"DoctypeWithoutWord", "<!doctype html>\r\n<p>x</p>\r\n", request("#dtd"), "", 0},
      {"DoctypeBeforeLineEndIsNoCandidate", "<!doctype\r\nhtml public \"x\">\r\n", request("#dtd"),
       "", 0},
      {"InternalSubset", subset, request("#dtd"), "DOCTYPE note [\r\n<!ELEMENT note (to)>\r\n", 1},
      {"InternalSubsetOuter", subset, request("#dtd", "outerMarkup"),
       "<!DOCTYPE note [\r\n<!ELEMENT note (to)>\r\n]>", 1},
      {"CommentsBesideDeclarations", comments, request("#comment"), " a ;b;foo", 3},
      {"CommentsOuter", comments, request("#comment", "outerMarkup"), "<!-- a -->;<!--b-->", 2},
      {"CommentOverChunks", "<!--\r\nx\r\n-->\r\n", request("#comment"), "\r\nx\r\n", 1, 1},
  };
  expectCases(std::begin(cases), std::end(cases));
}

// A minified page of one line is one chunk longer than 32767 characters.
// Every position a matcher computes is 16-bit, also one that is only
// compared, so a hit out there fails the read; an instance taken before the
// scan gets that far is still returned, once CountInstances has stopped it at
// a nearer candidate.
TEST(ElementTypes, OneLinePageLongerThan32767) {
  const std::string filler(40000, 'x');
  ReadRequest first = request("p");
  first.count = 1;
  ReadRequest firstElement = request("#element");
  firstElement.count = 1;
  const std::string farTag = "<p>x</p>" + filler + "<p>y</p>\r\n";
  const std::string nearThenFarTag = "<p>x</p><p>z</p>" + filler + "<p>y</p>\r\n";
  const std::string farTagEnd = "<p>x</p><p " + filler + ">y</p>\r\n";
  const std::string overflow = "ERROR: Overflow.";
  const DocumentCase cases[] = {
      {"NoMarkerOutThere", "<p>x</p>" + filler + "\r\n", request("p"), "x", 1},
      {"FarNamedElement", farTag, request("p"), overflow, -1},
      // The search behind the last instance taken still runs.
      {"FarNamedElementRightBehindLastTaken", farTag, first, overflow, -1},
      {"FarNamedElementNotReached", nearThenFarTag, first, "x", 1},
      {"FarAnyElement", farTag, request("#element"), overflow, -1},
      {"FarAnyElementNotReached", nearThenFarTag, firstElement, "x", 1},
      {"FarTagEnd", farTagEnd, request("p"), overflow, -1},
      {"FarTagEndNotReached", farTagEnd, first, "x", 1},
      {"FarTagEndOuter", farTagEnd, request("#element", "outerMarkup"), overflow, -1},
      {"NameEndBeyondLimit", std::string(32765, 'x') + "<p>y</p>\r\n", request("p"), overflow, -1},
      {"FirstCharacterBeyondLimit", std::string(32766, 'x') + "<p>\r\n", request("#element"),
       overflow, -1},
      {"DoctypeWithFarBracket", "<!DOCTYPE html PUBLIC \"x\">" + filler + "[\r\n", request("#dtd"),
       overflow, -1},
      {"DoctypeWithoutFarBracket", "<!DOCTYPE html PUBLIC \"x\">" + filler + "\r\n",
       request("#dtd"), "DOCTYPE html PUBLIC \"x\"", 1},
      {"CommentContentBeyondLimit", std::string(32764, 'x') + "<!--c-->\r\n", request("#comment"),
       overflow, -1},
  };
  expectCases(std::begin(cases), std::end(cases));
}

}  // namespace
}  // namespace tagwright
