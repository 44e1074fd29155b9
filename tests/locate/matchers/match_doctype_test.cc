// matchDoctype: which declarations count, "]>" versus ">", and the
// declaration that runs past the chunk.
#include "locate/matchers/match_doctype.h"

#include <gtest/gtest.h>

#include "locate/matchers/matcher_call.h"

namespace tagwright {
namespace {

struct DoctypeCase {
  const char* name;
  std::string before;
  std::string atP;
  bool want;
  std::string closeMarker;
};

const DoctypeCase kDoctypeCases[] = {
    {"NoWord", "", "<!doctype html>", false, ">"},
    {"Public", "", "<!DOCTYPE html PUBLIC \"-//W3C//DTD\">", true, ">"},
    {"System", "", "<!doctype note system \"n.dtd\">", true, ">"},
    {"WordNeedsBlankBehind", "", "<!doctype note public\"x\">", false, ">"},
    {"WordBehindTagEndCountsNot", "", "<!doctype html> public ", false, ">"},
    {"InternalSubset", "", "<!doctype note [<!element note (to)>]>", true, "]>"},
    {"SubsetAfterWord", "", "<!doctype note system \"n.dtd\" [<!entity a \"b\">]>", true, "]>"},
    {"BracketInQuotes", "", "<!doctype html public \"a[b\">", true, "]>"},
    {"BracketBehindTagEnd", "", "<!doctype html><p>[x]</p>", false, ">"},
    {"BracketWithoutTagEnd", "", "<!doctype note [", false, ">"},
    {"NoTagEndWordAheadOfP", "a public b ", "<!doctype note", true, ">"},
    {"NoTagEndNoWord", "", "<!doctype note", false, ">"},
};

TEST(MatchDoctype, Table) {
  for (const DoctypeCase& c : kDoctypeCases) {
    SCOPED_TRACE(c.name);
    // The content starts at "doctype" whatever the answer.
    MatcherOutcome inner =
        callMatcher(matchDoctype, matcherQuery("innermarkup", "#dtd"), c.atP, c.before);
    EXPECT_EQ(inner.result, c.want);
    EXPECT_EQ(inner.closeMarker, c.closeMarker);
    EXPECT_EQ(inner.offset, 2);
    MatcherOutcome outer =
        callMatcher(matchDoctype, matcherQuery("outermarkup", "#dtd"), c.atP, c.before);
    EXPECT_EQ(outer.result, c.want);
    EXPECT_EQ(outer.closeMarker, c.closeMarker);
    EXPECT_EQ(outer.offset, 0);
  }
}

}  // namespace
}  // namespace tagwright
