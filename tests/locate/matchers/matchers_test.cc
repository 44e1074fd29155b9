// The element, declaration and comment matchers called directly: which
// candidates are instances, and the stretch and close marker each leaves,
// then attributesMatch on a prepared tag.
#include <gtest/gtest.h>

#include "locate/matchers/attributes_match.h"
#include "locate/matchers/match_any_element.h"
#include "locate/matchers/match_comment.h"
#include "locate/matchers/match_doctype.h"
#include "locate/matchers/match_named_element.h"

namespace tagwright {
namespace {

const std::string kUntouched = "(untouched)";

struct Called {
  bool result;
  int offset;  // contentStart less P
  std::string closeMarker;
};

// Calls `matcher` on the lower-cased chunk `before` + `atP` + CR LF with P on
// the first character of `atP`.
Called call(Matcher matcher, const std::string& element, const std::string& contentType,
            const std::string& atP, const std::string& before) {
  Query query;
  query.ElementName = fromUtf8(element);
  query.AttributeName = query.AttributeValue = U"*";
  query.ContentType = fromUtf8(contentType);
  const Int16 p = lengthOf(fromUtf8(before)) + 1;
  Int16 contentStart = p;
  Text closeMarker = fromUtf8(kUntouched);
  const Text chunk = lower(fromUtf8(before + atP + "\r\n"));
  bool result = matcher(query, ChunkView(chunk), contentStart, closeMarker);
  return {result, (contentStart - p).value(), toUtf8(closeMarker)};
}

TEST(Matchers, Table) {
  const std::string no = kUntouched;
  // Matcher, element, the text at P (any text ahead of P before a "^"), the
  // answer, the close marker, and where the content starts behind P for
  // "innermarkup" and "innertext" ("outermarkup" always leaves it on P).
  std::vector<std::tuple<Matcher, const char*, std::string, bool, std::string, int>> cases = {
      {matchAnyElement, "#element", "<a href=x>t</a>", true, "</a>", 10},
      {matchAnyElement, "#element", "<=3 >", true, "</=3>", 5},
      {matchAnyElement, "#element", "< a>", false, no, 0},
      {matchAnyElement, "#element", "<\177a>", false, no, 0},
      {matchAnyElement, "#element", "<Ä>", false, no, 0},
      {matchAnyElement, "#element", "<a", false, no, 0},
      {matchAnyElement, "#element", "<a\r\n b=\"c\">", true, "</a\r\n>", 11},
      {matchAnyElement, "#element", "<a\tb=\"c\">", true, "</a\tb=\"c\">", 9},
      {matchAnyElement, "#element", "<br/ x>", true, "</br/>", 7},
      {matchAnyElement, "#element", "<a title=\"1>2\" href=x>", true, "</a>", 12},
      {matchAnyElement, "#element", "<a href=x/>", true, "<a href=x/>", 0},
      {matchAnyElement, "#element", "<p / >", true, "</p>", 6},
      {matchNamedElement, "p", "<p class=\"x\">", true, "</p>", 13},
      {matchNamedElement, "p", "<pre>", false, no, 0},
      {matchNamedElement, "p", "<p\tclass=\"x\">", false, no, 0},
      {matchNamedElement, "p", "<p/b c=\"d\">", true, "</p>", 11},
      {matchNamedElement, "été", "<ÉTÉ>x</ÉTÉ>", true, "</été>", 5},
      {matchNamedElement, "p>", "<p> x", false, "</p>>", 3},
      {matchDoctype, "#dtd", "<!doctype html>", false, ">", 2},
      {matchDoctype, "#dtd", "<!DOCTYPE html PUBLIC \"-//W3C//DTD\">", true, ">", 2},
      {matchDoctype, "#dtd", "<!doctype html> public ", false, ">", 2},
      {matchDoctype, "#dtd", "<!doctype note [<!element note (to)>]>", true, "]>", 2},
      {matchDoctype, "#dtd", "<!doctype html system \"a\">", true, ">", 2},
      {matchDoctype, "#dtd", "<!doctype html><p>[x]</p>", false, ">", 2},
      {matchDoctype, "#dtd", "<!doctype note [", false, ">", 2},
      {matchDoctype, "#dtd", "a public b ^<!doctype note", true, ">", 2},
      {matchComment, "#comment", "<!-- c -->", true, "-->", 4},
      {matchComment, "#comment", "<!foo bar>", true, ">", 2},
      {matchComment, "#comment", "<![CDATA[x]]>", false, no, 0},
      {matchComment, "#comment", "<!-- !entity x -->", false, no, 0},
      {matchComment, "#comment", "<!--  !entity x -->", true, "-->", 4},
      {matchComment, "#comment", "<!-!notation>", false, no, 0},
      {matchComment, "#comment", "<!--------![", false, no, 0},
      {matchComment, "#comment", "<!-", true, ">", 2},
  };
  // The 24 characters that cannot begin an element name, then some that can.
  const Text excluded = fromUtf8("/?!£$%^&*([{:;@'~#|\\<,>.");
  for (char32_t c : excluded + U"\")+-=]_`}") {
    const std::string first = toUtf8(Text(1, c)), tag = "<" + first + "a>";
    if (excluded.find(c) != Text::npos)
      cases.push_back({matchAnyElement, "#element", tag, false, no, 0});
    else
      cases.push_back({matchAnyElement, "#element", tag, true, "</" + first + "a>", 4});
  }
  for (const auto& [matcher, element, row, want, closeMarker, innerOffset] : cases) {
    SCOPED_TRACE(row);
    const std::size_t caret = row.find('^');
    const std::string before = caret == std::string::npos ? "é " : row.substr(0, caret);
    const std::string atP = caret == std::string::npos ? row : row.substr(caret + 1);
    for (const char* contentType : {"innermarkup", "innertext", "outermarkup"}) {
      SCOPED_TRACE(contentType);
      Called got = call(matcher, element, contentType, atP, before);
      EXPECT_EQ(got.result, want);
      EXPECT_EQ(got.closeMarker, closeMarker);
      EXPECT_EQ(got.offset, contentType[0] == 'o' ? 0 : innerOffset);
    }
  }
}

TEST(AttributesMatch, Table) {
  // The attribute text of <A HREF = "X.htm" target=_top title="big news">.
  const std::string tag = " href = \"x.htm\" target=_top title=\"big news\">";
  const std::string y251(251, 'y'), y252(252, 'y');
  const std::tuple<std::string, const char*, std::string, bool> cases[] = {
      {tag, "*", "*", true},
      {tag, "href", "*", true},
      {tag, "ref", "*", true},
      {tag, "alt", "*", false},
      {tag, "href", "x.htm", true},
      {tag, "*", "x.htm", true},
      {tag, "href", "x", false},
      {tag, "target", "_top", false},
      {tag, "title", "big news", false},
      {tag, "title", "bignews", true},
      {tag, "target", "x.htm", false},
      {" href='x'>", "href", "x", true},
      {" href=\"x'>", "href", "x", false},
      {"", "*", "*", false},
      {"/x=1 y=2>", "x", "*", false},
      {" href\r\n=\"x\">", "href", "*", false},
      {" title=\"été\">", "title", "été", true},
      {" a=' x y '>", "a", "xy", true},
      // Longer than the matchers' buffer on the stack, before and after the
      // blanks go.
      {"v=\"" + y251 + "\">", "v", y251, true},
      {"v=\"" + y252 + "\">", "*", y252, true},
      {"v=\"" + y252 + "\">", "v", "y", false},
      {" a" + std::string(300, ' ') + "= \"t\" >", "a", "t", true}};
  for (const auto& [text, name, value, want] : cases) {
    SCOPED_TRACE(text + " " + name + " " + value);
    Query query;
    query.AttributeName = fromUtf8(name);
    query.AttributeValue = fromUtf8(value);
    EXPECT_EQ(attributesMatch(query, fromUtf8(text)), want);
    Text attributeText = fromUtf8(text);
    EXPECT_EQ(attributesMatch(query.AttributeName, query.AttributeValue, attributeText), want);
  }
}

}  // namespace
}  // namespace tagwright
