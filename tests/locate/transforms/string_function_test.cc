// stripMarkup, and applyStringFunction that cuts its piece from the plain
// text: the four fields, quoted and bare search texts, the numeric fields,
// and its two failure texts.
#include <gtest/gtest.h>

#include <optional>

#include "locate/transforms/apply_string_function.h"
#include "locate/transforms/strip_markup.h"

namespace tagwright {
namespace {

// The plain text, or the description of the failure; on bytes when
// `bytes`, and then the empty optional when the bytes are left to stripMarkup.
std::optional<std::string> stripped(const std::string& text, bool bytes = false) {
  try {
    if (!bytes) return toUtf8(stripMarkup(fromUtf8(text)));
    std::string cleaned, out;
    if (!stripMarkupBytes(text, cleaned, out)) return std::nullopt;
    return out;
  } catch (const Failure& failure) {
    return std::string(failure.description());
  }
}

TEST(StripMarkup, Table) {
  const std::string x(40000, 'x');
  const std::pair<std::string, std::string> cases[] = {
      {"Hello <b>World</b>!", "Hello World !"},
      {"<p>one</p>  <p>  two  </p>", "one two"},
      {"a>b<c>d", "a>b d"},
      {"x<!-- a > b -->y", "x b -->y"},
      {"one\r\ntwo\tthree", "onetwothree"},
      {" \r abc \r ", "abc"},
      {"if (a<b) {x}", "if (a<b) {x}"},
      {"x  <b  ", "x<b"},
      {"if (a\r\n<b) {x}\r\n", "if (a<b) {x}"},
      {"<b>été</b>€", "été €"},
      {" \r\n <b> a  b </b> \r\n <i>c\t</i>  ", "a  b c"},
      {"\t <a>  </a><b/>\t", ""},
      {"<a>b<c", "Invalid procedure call or argument"},
      {"<b>" + x, x},
      {"a<" + x, "a<" + x},
      {x + "<b>", "Overflow"},
      {"<" + x + ">", "Overflow"},
  };
  for (const auto& [text, want] : cases) {
    SCOPED_TRACE(text.substr(0, 30));
    EXPECT_EQ(stripped(text), want);
    // On bytes the same, unless positions beyond 32767 could matter.
    const std::optional<std::string> onBytes = stripped(text, true);
    EXPECT_EQ(onBytes.value_or(want), want);
    EXPECT_TRUE(onBytes || text.size() > 32767);
  }
}

TEST(ApplyStringFunction, Table) {
  const std::string format = "ERROR: Illegal String function format :";
  const std::string unexpected = "ERROR: Unexpected error while executing String function.";
  const struct {
    std::string function;
    std::string want;  // "format" stands for the format failure with the function
    std::string foundText = "Price: USD 120 net";
  } cases[] = {
      {"1,price:,7,3", "USD"},
      {"1,\"Price:\",7,3", "USD"},
      {"2,e,0,2", "et"},
      {"1,usd,-7,5", "Price"},
      {"0,e,0,2", "format"},
      {" 1 , usd , 0 , 3 ", "USD"},
      {"1,\" 120\",0,4", " 120"},
      {"2,aa,0,3", "aay", "xaaay"},
      {"1,\"\",0,3", "Pri"},
      {"1,\"abc,0,3", "aby", "xabyabc"},
      {"1,\",0,3", unexpected},
      {"99999,e,0,2", unexpected},
      {"2.5,e,0,2", "et"},
      {"1,price,0,3.5", "Pric"},
      {"1, ,0,3", "format"},
      {"1,\"a,b\",0,3", "format"},
      {"1,e,0", "format"},
      {"x,e,0,2", "format"},
      {"1,e,0,2,3", "format"},
      {"1,usd,0,6", "USD120", "<b>Price</b>: USD\r\n\t120"},
      {"1,<b>,0,3", "", "<b>Price</b>"},
      {"1,\"\",0,3", "", "<br/><hr>"},
      {"0,e,0,2", unexpected, "<a>b<c"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.function + " on " + c.foundText);
    EXPECT_EQ(toUtf8(applyStringFunction(fromUtf8(c.function), fromUtf8(c.foundText))),
              c.want == "format" ? format + c.function : c.want);
  }
}

}  // namespace
}  // namespace tagwright
