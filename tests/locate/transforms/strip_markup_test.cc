// stripMarkup: pieces, tags, line ends and tabs, the text whose first "<"
// opens no tag, and the failures.
#include "locate/transforms/strip_markup.h"

#include <gtest/gtest.h>

#include <string>

namespace tagwright {
namespace {

struct StripCase {
  const char* name;
  std::string text;
  std::string want;
};

const StripCase kStripCases[] = {
    {"PlainText", "plain text", "plain text"},
    {"BlankBehindEveryPiece", "Hello <b>World</b>!", "Hello World !"},
    {"Paragraphs", "<p>one</p><p>two</p>", "one two"},
    {"BlankPiecesAddNothing", "<p>one</p>  <p>  two  </p>", "one two"},
    {"TagsBetweenLetters", "a<b>c<d>e", "a c e"},
    {"LeadingPiece", "lead<a>", "lead"},
    {"TrailingPiece", "<a>tail", "tail"},
    {"TagAlone", "<a>", ""},
    {"GreaterThanBeforeAnyTag", "a>b<c>d", "a>b d"},
    {"FirstGreaterThanEndsTag", "x<!-- a > b -->y", "x b -->y"},
    {"LineEndRemoved", "one\r\ntwo", "onetwo"},
    {"TabRemoved", "one\ttwo", "onetwo"},
    {"Empty", "", ""},
    {"GreaterThanAlone", ">", ">"},
    {"BlanksInsidePieceStay", "<b>a  b</b>", "a  b"},
    {"TrimBeforeLineEndsGo", "\r\n  abc  \r\n", "  abc  "},
    {"BlanksAroundTagsGo", "\r\n  <b>x</b>  \r\n", "x"},
    {"CrAloneIsTrimmedAway", " \r abc \r ", "abc"},
    {"CapitalsAndEntitiesStay", "<P>Caf&eacute; &amp; Bar</P>", "Caf&eacute; &amp; Bar"},
    {"OpenLtIsScriptText", "if (a<b) {x}", "if (a<b) {x}"},
    {"OpenLtAtStart", "<b", "<b"},
    {"OpenLtJoinsTrimmedPiece", "x  <b  ", "x<b"},
    {"OpenLtAfterLineEnds", "if (a\r\n<b) {x}\r\n", "if (a<b) {x}"},
    {"NonAsciiPieces", "<b>été</b>€", "été €"},
};

TEST(StripMarkup, Table) {
  for (const StripCase& c : kStripCases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(toUtf8(stripMarkup(fromUtf8(c.text))), c.want);
  }
}

TEST(StripMarkup, LaterLtWithoutTagEndIsInvalidArgument) {
  try {
    stripMarkup(U"<a>b<c");
    FAIL() << "no failure";
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.kind(), Failure::Kind::kInvalidArgument);
  }
}

// Positions of "<" and ">" are 16-bit; a text with no tag out there, or a
// long piece behind the last tag, is not limited.
TEST(StripMarkup, PositionsBeyond32767) {
  const Text longRun(40000, U'x');
  EXPECT_EQ(stripMarkup(longRun), longRun);
  EXPECT_EQ(stripMarkup(U"<b>" + longRun), longRun);
  EXPECT_EQ(stripMarkup(U"a<" + longRun), U"a<" + longRun);
  const Text farTags[] = {longRun + U"<b>", U"<b>" + longRun + U"<i>", U"<" + longRun + U">"};
  for (const Text& text : farTags) {
    try {
      stripMarkup(text);
      ADD_FAILURE() << "no failure";
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.kind(), Failure::Kind::kOverflow);
    }
  }
}

}  // namespace
}  // namespace tagwright
