// stripMarkup and applyStringFunction, which cuts its piece from the plain
// text: the four fields, quoted and bare search texts, the numeric fields,
// the two failure texts, and how readXPointer counts and separates them.
#include <gtest/gtest.h>

#include "locate/transforms/apply_string_function.h"
#include "locate/transforms/strip_markup.h"
#include "support/requests.h"

namespace tagwright {
namespace {

// The plain text, or the description of the failure.
std::string stripped(const Text& text) {
  try {
    return toUtf8(stripMarkup(text));
  } catch (const Failure& failure) {
    return std::string(failure.description());
  }
}

TEST(StripMarkup, Table) {
  const std::string x(40000, 'x');
  const struct {
    std::string text;
    std::string want;
  } cases[] = {
      {"Hello <b>World</b>!", "Hello World !"},
      {"<p>one</p>  <p>  two  </p>", "one two"},
      {"lead<a>", "lead"},
      {"a>b<c>d", "a>b d"},
      {"x<!-- a > b -->y", "x b -->y"},
      {"one\r\ntwo\tthree", "onetwothree"},
      {"<b>a  b</b>", "a  b"},
      {"\r\n  abc  \r\n", "  abc  "},
      {" \r abc \r ", "abc"},
      {"<P>Caf&eacute; &amp; Bar</P>", "Caf&eacute; &amp; Bar"},
      {"if (a<b) {x}", "if (a<b) {x}"},
      {"x  <b  ", "x<b"},
      {"if (a\r\n<b) {x}\r\n", "if (a<b) {x}"},
      {"<b>été</b>€", "été €"},
      {"<a>b<c", "Invalid procedure call or argument"},
      {"<b>" + x, x},
      {"a<" + x, "a<" + x},
      {x + "<b>", "Overflow"},
      {"<" + x + ">", "Overflow"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text.substr(0, 30));
    EXPECT_EQ(stripped(fromUtf8(c.text)), c.want);
  }
}

const std::string kFormat = "ERROR: Illegal String function format :";
const std::string kUnexpected = "ERROR: Unexpected error while executing String function.";

TEST(ApplyStringFunction, Table) {
  const struct {
    std::string function;
    std::string want;  // "format" stands for kFormat + function
    std::string foundText = "Price: USD 120 net";
  } cases[] = {
      {"1,price:,7,3", "USD"},
      {"1,\"Price:\",7,3", "USD"},
      {"1,\"price:\",7,3", ""},
      {"2,e,0,2", "et"},
      {"1,usd,-7,5", "Price"},
      {"1,usd,-8,5", ""},
      {"3,e,0,2", ""},
      {"0,e,0,2", "format"},
      {" 1 , usd , 0 , 3 ", "USD"},
      {"1,\" 120\",0,4", " 120"},
      {"1,usd,3,4", " 120"},
      {"1,net,0,10", "net"},
      {"2,aa,0,3", "aay", "xaaay"},
      {"1,\"\",0,3", "Pri"},
      {"3,\"\",0,3", "ice"},
      {"1,\"abc,0,3", "aby", "xabyabc"},
      {"1,\",0,3", kUnexpected},
      {"99999,e,0,2", kUnexpected},
      {"2.5,e,0,2", "et"},
      {"1,price,0,2.5", "Pr"},
      {"1,price,0,3.5", "Pric"},
      {"1, ,0,3", "format"},
      {"1,\"a,b\",0,3", "format"},
      {",e,0,2", "format"},
      {"1,e,0", "format"},
      {"1,e,,2", "format"},
      {"x,e,0,2", "format"},
      {"1,e,0,0", "format"},
      {"1,e,0,2,3", "format"},
      {"1,usd,0,6", "USD120", "<b>Price</b>: USD\r\n\t120"},
      {"1,<b>,0,3", "", "<b>Price</b>"},
      {"1,\"\",0,3", "", "<br/><hr>"},
      {"0,e,0,2", kUnexpected, "<a>b<c"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.function + " on " + c.foundText);
    EXPECT_EQ(toUtf8(applyStringFunction(fromUtf8(c.function), fromUtf8(c.foundText))),
              c.want == "format" ? kFormat + c.function : c.want);
  }
}

// A bad string function is no failure of the operation: each instance gets
// the text, and MatchesFound counts the instances.
TEST(ApplyStringFunction, ThroughReadXPointer) {
  const std::string document = "<%Price: USD 120%>\r\n<%no price%>x<%Net 5%>\r\n";
  const struct {
    std::string function;
    const char* contentType;
    std::string text;
  } cases[] = {
      {"  0,E,0,2 ", "innerMarkup",
       kFormat + "0,E,0,2;" + kFormat + "0,E,0,2;" + kFormat + "0,E,0,2"},
      {"1,\",0,2", "innerMarkup", kUnexpected + ";" + kUnexpected + ";" + kUnexpected},
      {"1,usd,4,3", "innerMarkup", "120;;"},
      {"1,\"Net\",4,1", "innerText", ";;5"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.function);
    EXPECT_EQ(readDocument(document, {.contentType = c.contentType, .string = c.function}),
              (Outcome{c.text, 3}));
  }
}

}  // namespace
}  // namespace tagwright
