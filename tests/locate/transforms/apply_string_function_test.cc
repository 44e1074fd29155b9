// applyStringFunction: the four fields, quoted and bare search texts, the
// numeric fields, overlapping occurrences, the piece, its two failure texts,
// and how readXPointer counts and separates what it returns.
#include "locate/transforms/apply_string_function.h"

#include <gtest/gtest.h>

#include <string>

#include "support/read_request.h"

namespace tagwright {
namespace {

const std::string kFormat = "ERROR: Illegal String function format :";
const std::string kUnexpected = "ERROR: Unexpected error while executing String function.";

struct StringCase {
  const char* name;
  const char* foundText;
  const char* stringFunction;
  std::string want;
};

void runCases(const StringCase* begin, const StringCase* end) {
  for (const StringCase* c = begin; c != end; ++c) {
    SCOPED_TRACE(c->name);
    EXPECT_EQ(toUtf8(applyStringFunction(fromUtf8(c->stringFunction), fromUtf8(c->foundText))),
              c->want);
  }
}

constexpr const char* kPrice = "Price: USD 120 net";

TEST(ApplyStringFunction, PriceExamples) {
  const StringCase cases[] = {
      {"BareSearch", kPrice, "1,price:,7,3", "USD"},
      {"QuotedExactMatch", kPrice, "1,\"Price:\",7,3", "USD"},
      {"QuotedFailsOnTheCapital", kPrice, "1,\"price:\",7,3", ""},
      {"SecondOccurrence", kPrice, "2,e,0,2", "et"},
      {"NegativeOffset", kPrice, "1,usd,-7,5", "Price"},
      {"StartWouldBeZero", kPrice, "1,usd,-8,5", ""},
      {"NoThirdOccurrence", kPrice, "3,e,0,2", ""},
      {"OccurrenceBelowOne", kPrice, "0,e,0,2", kFormat + "0,e,0,2"},
  };
  runCases(std::begin(cases), std::end(cases));
}

TEST(ApplyStringFunction, Fields) {
  const StringCase cases[] = {
      {"BareSearchIgnoresCase", kPrice, "1,PRICE,0,5", "Price"},
      {"BlanksAroundFields", kPrice, " 1 , usd , 0 , 3 ", "USD"},
      {"QuotedKeepsItsBlanks", kPrice, "1,\" 120\",0,4", " 120"},
      {"OffsetOfTheSearchLength", kPrice, "1,usd,3,4", " 120"},
      {"PieceShortAtTheEnd", kPrice, "1,net,0,10", "net"},
      {"OffsetBeyondTheText", kPrice, "1,usd,100,3", ""},
      {"OccurrencesOverlap", "xaaay", "2,aa,0,3", "aay"},
      {"EmptyQuotedIsFoundAtTheStart", kPrice, "1,\"\",0,3", "Pri"},
      {"EmptyQuotedCountsPositions", kPrice, "3,\"\",0,3", "ice"},
      {"EmptyQuotedInEmptyText", "", "1,\"\",0,3", ""},
      {"LastCharacterGoesEvenIfNoQuote", "xabyabc", "1,\"abc,0,3", "aby"},
      {"LoneQuote", kPrice, "1,\",0,3", kUnexpected},
      {"LoneQuoteBeforeMissingFields", kPrice, "1,\",x", kUnexpected},
      {"OccurrenceBeyond16Bits", kPrice, "99999,e,0,2", kUnexpected},
      {"OffsetBeyond16Bits", kPrice, "1,e,40000,2", kUnexpected},
      {"HalfOccurrenceRoundsToEven", kPrice, "2.5,e,0,2", "et"},
      {"HalfLengthRoundsDown", kPrice, "1,price,0,2.5", "Pr"},
      {"HalfLengthRoundsUp", kPrice, "1,price,0,3.5", "Pric"},
      {"HalfOffsetRoundsToEven", kPrice, "1,usd,-6.5,5", "rice:"},
  };
  runCases(std::begin(cases), std::end(cases));
}

TEST(ApplyStringFunction, FormatFailures) {
  const char* const functions[] = {
      "1, ,0,3",        // a field of blanks is empty
      "1,\"a,b\",0,3",  // the comma ends field 2 in spite of the quotes
      ",e,0,2",        "1,e,0",   "1,e,0,",  "1,e,,2",   "1,e",       "x,e,0,2",
      "-1,e,0,2",      "1,e,x,2", "1,e,0,0", "1,e,0,-2", "1,e,0,2,3",
  };
  for (const char* function : functions) {
    SCOPED_TRACE(function);
    EXPECT_EQ(toUtf8(applyStringFunction(fromUtf8(function), fromUtf8(kPrice))),
              kFormat + function);
  }
}

TEST(ApplyStringFunction, MarkupIsStrippedFirst) {
  const StringCase cases[] = {
      {"PositionsCountInPlainText", "<b>Price</b>: USD\r\n\t120", "1,usd,0,6", "USD120"},
      {"SearchCannotMatchATag", "<b>Price</b>", "1,<b>,0,3", ""},
      {"OnlyMarkup", "<br/><hr>", "1,\"\",0,3", ""},
      {"MarkupThatCannotBeStripped", "<a>b<c", "1,b,0,1", kUnexpected},
      {"StripFailureBeatsFormat", "<a>b<c", "0,e,0,2", kUnexpected},
  };
  runCases(std::begin(cases), std::end(cases));
}

// A bad string function is no failure of the operation: each instance gets
// the text, and MatchesFound counts the instances.
TEST(ApplyStringFunction, ThroughReadXPointer) {
  const std::string document = "<%Price: USD 120%>\r\n<%no price%>x<%Net 5%>\r\n";
  const struct {
    const char* name;
    std::string document;
    const char* stringFunction;
    const char* contentType;
    std::string want;
    int matches;
  } cases[] = {
      {"BadFormatOncePerInstance", document, "  0,E,0,2 ", "innerMarkup",
       kFormat + "0,E,0,2;" + kFormat + "0,E,0,2;" + kFormat + "0,E,0,2", 3},
      {"LoneQuoteOncePerInstance", document, "1,\",0,2", "innerMarkup",
       kUnexpected + ";" + kUnexpected + ";" + kUnexpected, 3},
      {"NoInstanceNoText", "<p>x</p>\r\n", "0,e,0,2", "innerMarkup", "", 0},
      {"MissesCountAndKeepTheirSeparator", document, "1,usd,4,3", "innerMarkup", "120;;", 3},
      {"QuotedKeepsItsCase", document, "1,\"Net\",4,1", "innerText", ";;5", 3},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    ReadRequest request;
    request.element = "#aspcode";
    request.contentType = c.contentType;
    request.stringFunction = c.stringFunction;
    ReadOutcome got = readDocument(c.document, request);
    EXPECT_EQ(got.text, c.want);
    EXPECT_EQ(got.matches, c.matches);
  }
}

}  // namespace
}  // namespace tagwright
