// matchComment: the declaration words in the twelve-character head, and
// "-->" versus ">".
#include "locate/matchers/match_comment.h"

#include <gtest/gtest.h>

#include "locate/matchers/matcher_call.h"

namespace tagwright {
namespace {

struct CommentCase {
  const char* name;
  std::string atP;
  bool want;
  std::string closeMarker;
  int innerOffset;
};

const CommentCase kCommentCases[] = {
    {"Comment", "<!-- c -->", true, "-->", 4},
    {"EmptyComment", "<!---->", true, "-->", 4},
    {"OtherDeclaration", "<!foo bar>", true, ">", 2},
    {"Element", "<!ELEMENT a (b)>", false, kNotSet, 0},
    {"Doctype", "<!doctype html>", false, kNotSet, 0},
    {"Attlist", "<!attlist a b cdata #implied>", false, kNotSet, 0},
    {"Entity", "<!entity a \"b\">", false, kNotSet, 0},
    {"Notation", "<!notation a system \"b\">", false, kNotSet, 0},
    {"Cdata", "<![CDATA[x]]>", false, kNotSet, 0},
    {"EntityFitsAtSix", "<!-- !entity x -->", false, kNotSet, 0},
    {"EntityAtSevenDoesNotFit", "<!--  !entity x -->", true, "-->", 4},
    {"DoctypeAtSixDoesNotFit", "<!-- !doctype x -->", true, "-->", 4},
    {"NotationFitsAtFour", "<!-!notation>", false, kNotSet, 0},
    {"NotationAtFiveDoesNotFit", "<!--!notation>", true, "-->", 4},
    {"BracketInHead", "<!-- ![if ie]> -->", false, kNotSet, 0},
    {"ConditionalComment", "<!--[if ie]> -->", true, "-->", 4},
    {"BracketAtElevenFits", "<!--------![", false, kNotSet, 0},
    {"BracketAtTwelveDoesNotFit", "<!---------![", true, "-->", 4},
    {"WordBehindHead", "<!-- comment !entity -->", true, "-->", 4},
    {"ShortHeadAtChunkEnd", "<!-", true, ">", 2},
};

TEST(MatchComment, Table) {
  for (const CommentCase& c : kCommentCases) {
    SCOPED_TRACE(c.name);
    MatcherOutcome inner =
        callMatcher(matchComment, matcherQuery("innertext", "#comment"), c.atP, "ab");
    EXPECT_EQ(inner.result, c.want);
    EXPECT_EQ(inner.closeMarker, c.closeMarker);
    EXPECT_EQ(inner.offset, c.innerOffset);
    MatcherOutcome outer =
        callMatcher(matchComment, matcherQuery("outermarkup", "#comment"), c.atP);
    EXPECT_EQ(outer.result, c.want);
    EXPECT_EQ(outer.closeMarker, c.closeMarker);
    EXPECT_EQ(outer.offset, 0);
  }
}

}  // namespace
}  // namespace tagwright
