// applySpanFunction: finding the two elements, the outer and inner spans,
// overlapping spans, the count, the replacement text of write mode and its
// overlap failure, and the spans through readXPointer and writeXPointer.
#include "locate/transforms/apply_span_function.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "rewrite/write_request.h"
#include "support/read_request.h"

namespace tagwright {
namespace {

constexpr const char* kExample = "<H2>One</h2> text <h3>Two</h3><p>x</p>";

struct SpanCase {
  const char* name;
  std::string foundText;
  const char* spanFunction;
  const char* contentType;
  std::string spans;  // each followed by ","
  int count;
  // In write mode, with the new content "NEW"; nullopt where write mode
  // needs no row of its own.
  std::optional<std::string> replacement;
};

struct SpanOutcome {
  std::string spans;
  int count = 0;
  std::string replacement;
};

SpanOutcome runSpan(const SpanCase& c, bool writeMode) {
  Int16 matches = 5;
  Text replacement = U"stale";
  Text spans = applySpanFunction(matches, fromUtf8(c.spanFunction), fromUtf8(c.foundText),
                                 fromUtf8(c.contentType), U"NEW", replacement, writeMode, U",");
  return {toUtf8(spans), matches.value() - 5, toUtf8(replacement)};
}

TEST(ApplySpanFunction, Spans) {
  const SpanCase cases[] = {
      {"ExampleOuter", kExample, "h2,h3", "outermarkup", "<H2>One</h2> text <h3>Two</h3>,", 1,
       "NEW<p>x</p>"},
      {"ExampleInner", kExample, "h2,h3", "innermarkup", " text ,", 1,
       "<H2>One</h2>NEW<h3>Two</h3><p>x</p>"},
      {"InnerTextTakesTheInnerPath", kExample, "h2,h3", "innertext", " text ,", 1,
       "<H2>One</h2>NEW<h3>Two</h3><p>x</p>"},
      {"TwoSpansReplaced", "<a>1</a>x<b>2</b><a>3</a>y<b>4</b>", "a,b", "innermarkup", "x,y,", 2,
       "<a>1</a>NEW<b>2</b><a>3</a>NEW<b>4</b>"},
      {"NoFirstElement", kExample, "h4,h3", "outermarkup", "", 0, kExample},
      {"NoSecondElement", kExample, "h2,h4", "innermarkup", "", 0, kExample},
      {"SelfClosedIsNoOccurrence", "<a/>x<b>y</b>", "a,b", "outermarkup", "", 0, std::nullopt},
      {"BlankBeforeSlashIsOne", "<a />x<b>y</b>", "a,b", "outermarkup", "<a />x<b>y</b>,", 1,
       std::nullopt},
      {"AttributesBeforeSlash", "<a href=\"x\"/>x<b>y</b>", "a,b", "outermarkup",
       "<a href=\"x\"/>x<b>y</b>,", 1, std::nullopt},
      {"LineEndAfterNameIsNoOccurrence", "<a\r\n>x</a><b>y</b>", "a,b", "outermarkup", "", 0,
       std::nullopt},
      {"NameIsNotAPrefix", "<abbr>x</abbr><b>y</b>", "a,b", "outermarkup", "", 0, std::nullopt},
      {"PlainTagWinsOverNearerTagWithAttributes", "<a x=\"1\">1</a> t <a>2</a> u <b>v</b>", "a,b",
       "outermarkup", "<a>2</a> u <b>v</b>,", 1, "<a x=\"1\">1</a> t NEW"},
      {"SelfClosedSecondEndsTheOuterSpan", "<a>1</a><b x=\"1\"/>tail</b>", "a,b", "outermarkup",
       "<a>1</a><b x=\"1\"/>,", 1, "NEWtail</b>"},
      {"FirstClosingTagOfSecondEndsTheOuterSpan", "<a>1</a><b><b>x</b></b>", "a,b", "outermarkup",
       "<a>1</a><b><b>x</b>,", 1, std::nullopt},
      {"OuterWithoutClosingTag", "<a>1</a><b>2", "a,b", "outermarkup", "", 0, "<a>1</a><b>2"},
      {"InnerNothingBetween", "<a>1</a><b>", "a,b", "innermarkup", "", 0, "<a>1</a><b>"},
      {"InnerSelfClosedFirst", "<a x=\"1\"/><b>", "a,b", "innermarkup", "", 0, std::nullopt},
      {"InnerSlashInFrontOfSecond", "<a>1</a>text<br/><b>", "a,b", "innermarkup", "", 0,
       std::nullopt},
      {"InnerSecondInsideFirst", "<a>1<b>2</b></a>", "a,b", "innermarkup", "", 0, std::nullopt},
      {"InnerWithoutClosingTagOfFirst", "<a>1<b>2", "a,b", "innermarkup", "", 0, std::nullopt},
      {"CapitalsAreFoundAndKept", "<A>x</A>Mid<B>y</B>", "a,b", "innermarkup", "Mid,", 1,
       "<A>x</A>NEW<B>y</B>"},
      {"OverlappingSpansInReadMode", "<p>1</p><p>2</p><p>3</p>", "p,p", "outermarkup",
       "<p>1</p><p>2</p>,<p>2</p><p>3</p>,", 2, std::nullopt},
      {"EmptySecondName", "<a>x</a><b>y</b>", "a,", "outermarkup", "", 0, "<a>x</a><b>y</b>"},
      {"FurtherCommaStaysInSecondName", "<a>x</a><b>y</b>", "a,b,c", "outermarkup", "", 0,
       std::nullopt},
  };
  for (const SpanCase& c : cases) {
    SCOPED_TRACE(c.name);
    SpanOutcome read = runSpan(c, false);
    EXPECT_EQ(read.spans, c.spans);
    EXPECT_EQ(read.count, c.count);
    if (c.replacement) {
      SpanOutcome written = runSpan(c, true);
      EXPECT_EQ(written.spans, c.spans);
      EXPECT_EQ(written.count, c.count);
      EXPECT_EQ(written.replacement, *c.replacement);
    }
  }
}

TEST(ApplySpanFunction, InvalidArgument) {
  const struct {
    const char* name;
    const char* foundText;
    const char* spanFunction;
    bool writeMode;
  } cases[] = {
      {"OverlapInWriteMode", "<p>1</p><p>2</p><p>3</p>", "p,p", true},
      {"SecondTagWithBlankAndNoEnd", "<a>1</a><b x", "a,b", false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    Int16 matches = 0;
    Text replacement;
    try {
      applySpanFunction(matches, fromUtf8(c.spanFunction), fromUtf8(c.foundText), U"outermarkup",
                        U"NEW", replacement, c.writeMode, U",");
      ADD_FAILURE() << "no failure";
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.kind(), Failure::Kind::kInvalidArgument);
    }
  }
}

// Through the scan: spans count as matches and carry their own separators,
// an instance without a span adds nothing, and "innertext" strips the whole
// returned text.
TEST(ApplySpanFunction, ThroughReadXPointer) {
  const std::string document =
      "<%<H2>One</h2> text <h3>Two</h3>%>\r\n<%none%>\r\n"
      "<%<h2>a</h2>b<h3>c</h3><h2>d</h2>e<h3>%>\r\n";
  const struct {
    const char* name;
    const char* contentType;
    std::int16_t count;
    const char* separator;
    std::string want;
    int matches;
  } cases[] = {
      {"Inner", "innerMarkup", 0, ";", " text ;b;e", 3},
      // The last "<h3>" has no "</h3>" behind it, which ends no outer span.
      {"Outer", "outerMarkup", 0, ";", "<H2>One</h2> text <h3>Two</h3>;<h2>a</h2>b<h3>c</h3>", 2},
      {"InstanceWithoutSpanUsesItsPlace", "innerMarkup", 2, ";", " text ", 1},
      {"LastCutTakesOneCharacter", "innerMarkup", 0, "--", " text --b--e-", 3},
      // The separator reads as a tag and goes, and the last cut then takes
      // a character of the text.
      {"InnerTextStripsSeparatorsToo", "innerText", 0, "<x>", "textb ", 3},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    ReadRequest request;
    request.element = "#aspcode";
    request.contentType = c.contentType;
    request.count = c.count;
    request.spanFunction = " H2 , H3 ";
    request.separator = c.separator;
    ReadOutcome got = readDocument(document, request);
    EXPECT_EQ(got.text, c.want);
    EXPECT_EQ(got.matches, c.matches);
  }
}

// Through the rewrite: each span gives way to the new content, and an
// overlap fails the rewrite and leaves the document as it was.
TEST(ApplySpanFunction, ThroughWriteXPointer) {
  const std::string example = std::string("<div>") + kExample + "</div>\r\n";
  const std::string overlapping = "<div><p>1</p><p>2</p><p>3</p></div>\r\n";
  const struct {
    const char* name;
    std::string document;
    const char* spanFunction;
    const char* contentType;
    int result;
    std::string errorResult;
    std::string newDocument;
  } cases[] = {
      {"Inner", example, "h2,h3", "innerMarkup", 1, " text ",
       "<div><H2>One</h2>NEW<h3>Two</h3><p>x</p></div>\r\n"},
      {"Outer", example, "h2,h3", "outerMarkup", 1, "<H2>One</h2> text <h3>Two</h3>",
       "<div>NEW<p>x</p></div>\r\n"},
      {"NoSpanKeepsTheStretch", example, "h4,h3", "innerMarkup", 0, "", example},
      {"OverlapFails", overlapping, "p,p", "outerMarkup", -1,
       "ERROR: Invalid procedure call or argument.", overlapping},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    FakePlatform platform;
    platform.files[kDocument] = c.document;
    WriteRequest request;
    request.element = "div";
    request.spanFunction = c.spanFunction;
    request.contentType = c.contentType;
    request.separator = ";";
    WriteOutcome got = writeDocument(platform, request);
    EXPECT_EQ(got.result, c.result);
    EXPECT_EQ(got.errorResult, c.errorResult);
    EXPECT_EQ(platform.files[kDocument], c.newDocument);
    EXPECT_TRUE(tempFiles(platform).empty());
    if (c.result == -1) {
      EXPECT_EQ(platform.files.count(kBackup), 0u);
    }
  }
}

}  // namespace
}  // namespace tagwright
