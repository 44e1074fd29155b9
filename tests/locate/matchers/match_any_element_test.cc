// matchAnyElement: which "<" opens an element, the cut of its name, and the
// stretch and close marker it leaves for each ContentType.
#include "locate/matchers/match_any_element.h"

#include <gtest/gtest.h>

#include "locate/matchers/matcher_call.h"

namespace tagwright {
namespace {

struct AnyElementCase {
  const char* name;
  std::string atP;
  bool want;
  std::string closeMarker;
  int innerOffset;  // contentStart - P for "innermarkup"; "outermarkup" always leaves 0
};

const AnyElementCase kAnyElementCases[] = {
    {"StartTag", "<p>y</p>", true, "</p>", 3},
    {"TagWithAttributes", "<a href=x>t</a>", true, "</a>", 10},
    {"SelfClosing", "<br/>", true, "<br/>", 0},
    {"SelfClosingWithBlank", "<br />", true, "<br />", 0},
    {"DigitStartsName", "<1>", true, "</1>", 3},
    {"EqualsStartsName", "<=3 >", true, "</=3>", 5},
    {"CapitalsAreLowered", "<DIV Class=x>", true, "</div>", 13},
    {"BlankIsCode32", "< a>", false, kNotSet, 0},
    {"EndTag", "</a>", false, kNotSet, 0},
    {"DeleteIsCode127", std::string("<\x7f") + "a>", false, kNotSet, 0},
    {"LetterOutsideAscii", "<é>", false, kNotSet, 0},
    {"LetterOutsideAsciiLowered", "<Ä>", false, kNotSet, 0},
    {"InvalidUtf8Byte", "<\xff>", false, kNotSet, 0},
    {"LineEndBehindLt", "<", false, kNotSet, 0},
    {"NoTagEndInChunk", "<a", false, kNotSet, 0},
    {"LineEndStaysInName", "<a\r\n b=\"c\">", true, "</a\r\n>", 11},
    {"TabStaysInName", "<a\tb=\"c\">", true, "</a\tb=\"c\">", 9},
    {"SlashStaysInName", "<br/ x>", true, "</br/>", 7},
    {"QuotedGreaterThanEndsTag", "<a title=\"1>2\" href=x>", true, "</a>", 12},
    {"LastTwoCharactersCloseTag", "<a href=x/>", true, "<a href=x/>", 0},
    {"QuotedSlashDoesNotClose", "<a href=\"x/\">", true, "</a>", 13},
    {"SpacedSlashDoesNotClose", "<p / >", true, "</p>", 6},
};

TEST(MatchAnyElement, Table) {
  for (const AnyElementCase& c : kAnyElementCases) {
    SCOPED_TRACE(c.name);
    MatcherOutcome inner = callMatcher(matchAnyElement, matcherQuery("innermarkup"), c.atP, "x ");
    EXPECT_EQ(inner.result, c.want);
    EXPECT_EQ(inner.closeMarker, c.closeMarker);
    EXPECT_EQ(inner.offset, c.innerOffset);
    MatcherOutcome innerText = callMatcher(matchAnyElement, matcherQuery("innertext"), c.atP);
    EXPECT_EQ(innerText.offset, c.innerOffset);
    MatcherOutcome outer = callMatcher(matchAnyElement, matcherQuery("outermarkup"), c.atP);
    EXPECT_EQ(outer.result, c.want);
    EXPECT_EQ(outer.closeMarker, c.closeMarker);
    EXPECT_EQ(outer.offset, 0);
  }
}

TEST(MatchAnyElement, EveryExcludedFirstCharacterIsRefused) {
  const Text excluded = fromUtf8("/?!£$%^&*([{:;@'~#|\\<,>.");
  ASSERT_EQ(excluded.size(), 24u);
  for (char32_t c : excluded) {
    const std::string atP = "<" + toUtf8(Text(1, c)) + "a>x</a>";
    SCOPED_TRACE(atP);
    MatcherOutcome got = callMatcher(matchAnyElement, matcherQuery("innermarkup"), atP);
    EXPECT_FALSE(got.result);
    EXPECT_EQ(got.closeMarker, kNotSet);
    EXPECT_EQ(got.offset, 0);
  }
  // The nine punctuation characters outside the table start a name.
  for (char c : std::string("\")+-=]_`}")) {
    const std::string atP = std::string("<") + c + "a>";
    SCOPED_TRACE(atP);
    EXPECT_TRUE(callMatcher(matchAnyElement, matcherQuery("innermarkup"), atP).result);
  }
}

}  // namespace
}  // namespace tagwright
