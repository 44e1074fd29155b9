// applySpanFunction: finding the two elements, the outer and inner spans,
// overlapping spans, the replacement text of write mode and its overlap
// failure, and the spans through readXPointer and writeXPointer.
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
      {"a,b", "<a>1</a>x<b>2</b><a>3</a>y<b>4</b>", "innermarkup", "x,y, 2",
       "x,y, 2 <a>1</a>NEW<b>2</b><a>3</a>NEW<b>4</b>"},
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
      {"a,b", "<A>x</A>Mid<B>y</B>", "innermarkup", "Mid, 1", "Mid, 1 <A>x</A>NEW<B>y</B>"},
      {"p,p", "<p>1</p><p>2</p><p>3</p>", "outermarkup", "<p>1</p><p>2</p>,<p>2</p><p>3</p>, 2",
       "Invalid procedure call or argument"},
      {"a,", "<a>x</a><b>y</b>", "outermarkup", " 0"},
      {"a,b", "<a>1</a><b x", "outermarkup", "Invalid procedure call or argument"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.function + (" on " + c.foundText));
    EXPECT_EQ(spans(c.function, c.foundText, c.contentType, false), c.read);
    if (!c.written.empty()) {
      EXPECT_EQ(spans(c.function, c.foundText, c.contentType, true), c.written);
    }
  }
}

// Through the scan each span counts as a match with its own separator, and
// "innertext" strips the whole returned text.
TEST(ApplySpanFunction, ThroughReadXPointer) {
  const std::string document =
      "<%<H2>One</h2> text <h3>Two</h3>%>\r\n<%none%>\r\n<%<h2>a</h2>b<h3>c</h3><h2>d</h2>e<h3>%>";
  const struct {
    const char* contentType;
    std::int16_t count;
    Outcome want;
    const char* separator = ";";
  } cases[] = {
      {"innerMarkup", 0, {" text ;b;e", 3}},
      {"outerMarkup", 0, {"<H2>One</h2> text <h3>Two</h3>;<h2>a</h2>b<h3>c</h3>", 2}},
      {"innerMarkup", 2, {" text ", 1}},
      // The separator reads as a tag and goes; the last cut then takes a letter.
      {"innerText", 0, {"textb ", 3}, "<x>"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.contentType);
    EXPECT_EQ(readDocument(document, {.count = c.count,
                                      .contentType = c.contentType,
                                      .span = " H2 , H3 ",
                                      .separator = c.separator}),
              c.want);
  }
}

// Through the rewrite each span gives way to the new content, and an overlap
// fails the rewrite and leaves the document as it was.
TEST(ApplySpanFunction, ThroughWriteXPointer) {
  const std::string example = "<div>" + kExample + "</div>\r\n";
  const std::string overlapping = "<div><p>1</p><p>2</p><p>3</p></div>\r\n";
  const struct {
    std::string document;
    const char* function;
    const char* contentType;
    Outcome want;
    std::string newDocument;
  } cases[] = {
      {example,
       "h2,h3",
       "innerMarkup",
       {" text ", 1},
       "<div><H2>One</h2>NEW<h3>Two</h3><p>x</p></div>\r\n"},
      {example,
       "h2,h3",
       "outerMarkup",
       {"<H2>One</h2> text <h3>Two</h3>", 1},
       "<div>NEW<p>x</p></div>\r\n"},
      {overlapping,
       "p,p",
       "outerMarkup",
       {"ERROR: Invalid procedure call or argument.", -1},
       overlapping},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.function + std::string(" ") + c.contentType);
    FakePlatform platform;
    platform.files["/doc.htm"] = c.document;
    EXPECT_EQ(write(platform, {.element = "div", .contentType = c.contentType, .span = c.function}),
              c.want);
    EXPECT_EQ(platform.files["/doc.htm"], c.newDocument);
    EXPECT_EQ(platform.files.size(),
              c.want.matches == 1 ? 2u : 1u);  // the backup, no temporary file
  }
}

}  // namespace
}  // namespace tagwright
