// matchNamedElement: where the name must end, the stretch it leaves, and the
// outputs of a tag that its attributes refuse (both matchers share that rule).
#include "locate/matchers/match_named_element.h"

#include <gtest/gtest.h>

#include "locate/matchers/match_any_element.h"
#include "locate/matchers/matcher_call.h"

namespace tagwright {
namespace {

struct NamedElementCase {
  const char* name;
  std::string element;
  std::string atP;
  bool want;
  std::string closeMarker;
  int innerOffset;
};

const NamedElementCase kNamedElementCases[] = {
    {"BareTag", "p", "<p>", true, "</p>", 3},
    {"WithAttributes", "p", "<p class=\"x\">", true, "</p>", 13},
    {"SelfClosing", "p", "<p/>", true, "<p/>", 0},
    {"SelfClosingWithBlank", "p", "<p />", true, "<p />", 0},
    {"LongerNameIsOut", "p", "<pre>", false, kNotSet, 0},
    {"TabBehindNameIsOut", "p", "<p\tclass=\"x\">", false, kNotSet, 0},
    {"LineEndBehindNameIsOut", "p", "<p\r\nclass=\"x\">", false, kNotSet, 0},
    {"SlashThenMoreIsStartTag", "p", "<p/b c=\"d\">", true, "</p>", 11},
    {"NoTagEndInChunk", "p", "<p class=", false, kNotSet, 0},
    {"CapitalsInDocument", "td", "<TD Align=left>", true, "</td>", 15},
    {"NameOutsideAscii", "été", "<ÉTÉ>x</ÉTÉ>", true, "</été>", 5},
};

TEST(MatchNamedElement, Table) {
  for (const NamedElementCase& c : kNamedElementCases) {
    SCOPED_TRACE(c.name);
    MatcherOutcome inner =
        callMatcher(matchNamedElement, matcherQuery("innermarkup", c.element), c.atP, "€ ");
    EXPECT_EQ(inner.result, c.want);
    EXPECT_EQ(inner.closeMarker, c.closeMarker);
    EXPECT_EQ(inner.offset, c.innerOffset);
    MatcherOutcome outer =
        callMatcher(matchNamedElement, matcherQuery("outermarkup", c.element), c.atP);
    EXPECT_EQ(outer.result, c.want);
    EXPECT_EQ(outer.closeMarker, c.closeMarker);
    EXPECT_EQ(outer.offset, 0);
  }
}

// A tag that its attributes refuse has already set its stretch: the scan
// searches on from there, so what lies inside the tag is passed over.
TEST(ElementMatchers, RefusedByAttributesLeaveTheirStretch) {
  const std::string tag = "<p class=x>y</p>";
  const Query anyElement = matcherQuery("innermarkup", "#element", "id");
  const Query named = matcherQuery("innermarkup", "p", "id");
  for (const auto& [name, got] :
       {std::pair{"AnyElement", callMatcher(matchAnyElement, anyElement, tag)},
        std::pair{"NamedElement", callMatcher(matchNamedElement, named, tag)}}) {
    SCOPED_TRACE(name);
    EXPECT_FALSE(got.result);
    EXPECT_EQ(got.closeMarker, "</p>");
    EXPECT_EQ(got.offset, 11);
  }
}

// An ElementName holding ">" leaves no attribute text behind the name, and
// an empty attribute text never passes.
TEST(MatchNamedElement, NameWithTagEndHasNoAttributeText) {
  EXPECT_FALSE(callMatcher(matchNamedElement, matcherQuery("innermarkup", "p>"), "<p> x").result);
}

}  // namespace
}  // namespace tagwright
