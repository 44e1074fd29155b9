// attributesMatch: the name and value forms on a prepared tag, quotes, and
// the blanks that the preparation removes.
#include "locate/matchers/attributes_match.h"

#include <gtest/gtest.h>

#include <string>

namespace tagwright {
namespace {

// The attribute text of `<A HREF = "X.htm" target=_top title="big news">`.
const std::string kNewsTag = " href = \"x.htm\" target=_top title=\"big news\">";

struct AttributeCase {
  const char* name;
  std::string attributeText;
  std::string attributeName;
  std::string attributeValue;
  bool want;
};

const AttributeCase kAttributeCases[] = {
    {"NoTest", kNewsTag, "*", "*", true},
    {"NameFound", kNewsTag, "href", "*", true},
    {"NameIsSubstring", kNewsTag, "ref", "*", true},
    {"NameMissing", kNewsTag, "alt", "*", false},
    {"NameNeedsNoQuotes", kNewsTag, "target", "*", true},
    {"NameAndValue", kNewsTag, "href", "x.htm", true},
    {"ValueAlone", kNewsTag, "*", "x.htm", true},
    {"ValueIsComparedWhole", kNewsTag, "href", "x", false},
    {"UnquotedValueNeverPasses", kNewsTag, "target", "_top", false},
    {"UnquotedValueAlone", kNewsTag, "*", "_top", false},
    {"ValueKeepsItsBlank", kNewsTag, "title", "big news", false},
    {"TagLosesItsBlank", kNewsTag, "title", "bignews", true},
    {"ValueUnderAnotherName", kNewsTag, "target", "x.htm", false},
    {"SingleQuotes", " href='x'>", "href", "x", true},
    {"SingleQuotedValueAlone", " href='x'>", "*", "x", true},
    {"MixedQuotesAreNoPair", " href=\"x'>", "href", "x", false},
    {"NameInsideAnotherValue", " title=\"id=3\">", "id", "*", true},
    {"BareTagEnd", ">", "*", "*", true},
    {"BareTagEndHasNoName", ">", "href", "*", false},
    {"EmptyTextNeverPasses", "", "*", "*", false},
    {"TextBeforeFirstBlankGoes", "/x=1 y=2>", "x", "*", false},
    {"TextWithoutBlankStaysWhole", "href=\"x\">", "href", "x", true},
    {"LineEndBeforeEqualsDefeatsName", " href\r\n=\"x\">", "href", "*", false},
    {"TabAfterEqualsDefeatsValue", " href=\t\"x\">", "href", "x", false},
    {"ValueOutsideAscii", " title=\"été\">", "title", "été", true},
};

TEST(AttributesMatch, Table) {
  for (const AttributeCase& c : kAttributeCases) {
    SCOPED_TRACE(c.name);
    Text attributeText = fromUtf8(c.attributeText);
    EXPECT_EQ(attributesMatch(fromUtf8(c.attributeName), fromUtf8(c.attributeValue), attributeText),
              c.want);
  }
}

TEST(AttributesMatch, PreparesTheTextInPlaceOnlyForATest) {
  Text attributeText = fromUtf8(kNewsTag);
  EXPECT_TRUE(attributesMatch(U"*", U"*", attributeText));
  EXPECT_EQ(toUtf8(attributeText), kNewsTag);
  EXPECT_TRUE(attributesMatch(U"href", U"*", attributeText));
  EXPECT_EQ(toUtf8(attributeText), "href=\"x.htm\"target=_toptitle=\"bignews\">");
}

}  // namespace
}  // namespace tagwright
