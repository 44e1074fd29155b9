// applySpanFunction: finding the two elements, the outer and inner spans,
// overlapping spans, and in write mode the replacement text and the overlap
// failure (through writeXPointer in write_x_pointer_test.cc).
#include <gtest/gtest.h>

#include "locate/transforms/apply_span_function.h"
#include "support/requests.h"

namespace tagwright {
namespace {

const std::string kExample = "<H2>One</h2> text <h3>Two</h3><p>x</p>";

// The spans (each followed by ","), how many, and in write mode the
// replacement with "NEW"; or the failure's description.
std::string spans(const std::string& function, const std::string& foundText,
                  const char* contentType, bool writeMode) {
  Int16 matches = 5;
  Text replacement = U"stale";
  try {
    Text got = applySpanFunction(matches, fromUtf8(function), fromUtf8(foundText),
                                 fromUtf8(contentType), U"NEW", replacement, writeMode, U",");
    return toUtf8(got) + " " + std::to_string(matches.value() - 5) +
           (writeMode ? " " + toUtf8(replacement) : "");
  } catch (const Failure& failure) {
    return std::string(failure.description());
  }
}

TEST(ApplySpanFunction, Table) {
  const std::string invalid = "Invalid procedure call or argument";
  const struct {
    const char* function;
    std::string foundText;
    const char* contentType;
    std::string read;
    std::string written = "";  // where write mode needs a row of its own
  } cases[] = {
      {"h2,h3", kExample, "outermarkup", "<H2>One</h2> text <h3>Two</h3>, 1",
       "<H2>One</h2> text <h3>Two</h3>, 1 NEW<p>x</p>"},
      {"h2,h3", kExample, "innertext", " text , 1",
       " text , 1 <H2>One</h2>NEW<h3>Two</h3><p>x</p>"},
      {"a,b", "<a>1</a>x<B>2</B><a>3</a>y<b>4</b>", "innermarkup", "x,y, 2",
       "x,y, 2 <a>1</a>NEW<B>2</B><a>3</a>NEW<b>4</b>"},
      {"h2,h4", kExample, "innermarkup", " 0", " 0 " + kExample},
      {"a,b", "<a/>x<b>y</b>", "outermarkup", " 0"},
      {"a,b", "<a />x<b>y</b>", "outermarkup", "<a />x<b>y</b>, 1"},
      {"a,b", "<abbr>x</abbr><b>y</b>", "outermarkup", " 0"},
      {"a,b", "<a x=\"1\">1</a> t <a>2</a> u <b>v</b>", "outermarkup", "<a>2</a> u <b>v</b>, 1",
       "<a>2</a> u <b>v</b>, 1 <a x=\"1\">1</a> t NEW"},
      {"a,b", "<a>1</a><b x=\"1\"/>tail</b>", "outermarkup", "<a>1</a><b x=\"1\"/>, 1"},
      {"a,b", "<a>1</a><b><b>x</b></b>", "outermarkup", "<a>1</a><b><b>x</b>, 1"},
      {"a,b", "<a>1</a><b>2", "outermarkup", " 0"},
      {"a,b", "<a>1</a><b>", "innermarkup", " 0"},
      {"a,b", "<a>1</a>text<br/><b>", "innermarkup", " 0"},
      {"p,p", "<p>1</p><p>2</p><p>3</p>", "outermarkup", "<p>1</p><p>2</p>,<p>2</p><p>3</p>, 2",
       invalid},
      {"a,", "<a>x</a><b>y</b>", "outermarkup", " 0"},
      {"a,b", "<a>1</a><b x", "outermarkup", invalid},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.function + (" on " + c.foundText));
    EXPECT_EQ(spans(c.function, c.foundText, c.contentType, false), c.read);
    if (!c.written.empty()) {
      EXPECT_EQ(spans(c.function, c.foundText, c.contentType, true), c.written);
    }
  }
}

}  // namespace
}  // namespace tagwright
