// Request checking through readXPointer: every failure text, which check wins
// when several fail, the defaults, and the path kinds.
#include <gtest/gtest.h>

#include <string>

#include "support/fake_context.h"
#include "support/fake_platform.h"

namespace tagwright {
namespace {

struct Request {
  std::string document = "C:\\doc.htm";
  std::string element = "#aspcode";
  std::int16_t start = 1;
  std::int16_t count = 0;
  std::string contentType = "innerMarkup";
  std::string span;
  std::string string;
  std::string separator = ";";
};

struct Outcome {
  std::string text;
  int matches;
};

Outcome read(const Request& r, std::shared_ptr<ScriptingContext> context = nullptr) {
  FakePlatform platform;
  platform.files["/doc.htm"] = "<%a%><%b%>";
  platform.files["/site/doc.htm"] = "<%s%>";
  Tagwright instance(platform);
  if (context) instance.OnStartPage(context);
  Outcome outcome{"", 99};
  outcome.text =
      instance.readXPointer(r.document, r.element, "*", "*", r.start, r.count, r.contentType,
                            r.span, r.string, r.separator, &outcome.matches);
  EXPECT_EQ(platform.openFileCount(), 0) << "no file stays open";
  return outcome;
}

TEST(ValidateParameters, EveryFailure) {
  struct Case {
    const char* name;
    Request request;
    const char* want;
  };
  auto with = [](auto change) {
    Request r;
    change(r);
    return r;
  };
  const Case cases[] = {
      {"NoDocument", with([](Request& r) { r.document = ""; }),
       "ERROR: A physical or virtual path and file name of the target document must be "
       "provided."},
      {"BlankDocument", with([](Request& r) { r.document = "   "; }),
       "ERROR: A physical or virtual path and file name of the target document must be "
       "provided."},
      {"VirtualWithoutContext", with([](Request& r) { r.document = "/doc.htm"; }),
       "ERROR: Virtual file paths can only be used when running in ASP."},
      {"BadContentType", with([](Request& r) { r.contentType = "text"; }),
       "ERROR: The return content type parameter must be 'outerMarkup', 'innerMarkup' or "
       "'innerText'."},
      {"StartZero", with([](Request& r) { r.start = 0; }),
       "ERROR: The start element instance number must be greater than zero."},
      {"StartNegative", with([](Request& r) { r.start = -3; }),
       "ERROR: The start element instance number must be greater than zero."},
      {"BadElementType", with([](Request& r) { r.element = "#text"; }),
       "ERROR: The available element types are '#element', '#comment', '#pi', '#aspcode' and "
       "'#dtd'."},
      {"SpanWithoutComma", with([](Request& r) { r.span = " H2 "; }),
       "ERROR: Illegal format in span function parameter: 'h2'."},
      {"StringWithoutComma", with([](Request& r) { r.string = " Price "; }),
       "ERROR: Illegal format in string function parameter: 'Price'."},
      {"MissingFile", with([](Request& r) { r.document = " C:\\none.htm "; }),
       "ERROR: Cannot open document file: 'C:\\none.htm'."},
      {"BothFunctions", with([](Request& r) { r.span = "a,b", r.string = "1,a,0,1"; }),
       "ERROR: The 'StringFunction' and 'SpanFunction' arguments cannot be used at the same "
       "time."},
      // The order of the checks decides which message wins.
      {"ElementTypeBeatsContentType",
       with([](Request& r) { r.element = "#x", r.contentType = "x"; }),
       "ERROR: The available element types are '#element', '#comment', '#pi', '#aspcode' and "
       "'#dtd'."},
      {"StartBeatsContentType", with([](Request& r) { r.start = 0, r.contentType = "x"; }),
       "ERROR: The start element instance number must be greater than zero."},
      {"SpanFormatBeatsBoth", with([](Request& r) { r.span = "ab", r.string = "1,a,0,1"; }),
       "ERROR: Illegal format in span function parameter: 'ab'."},
      {"EveryCheckBeatsMissingFile",
       with([](Request& r) { r.document = "C:\\none.htm", r.contentType = "x"; }),
       "ERROR: The return content type parameter must be 'outerMarkup', 'innerMarkup' or "
       "'innerText'."},
      {"ContextBeatsEverythingElse",
       with([](Request& r) { r.document = "doc.htm", r.element = "#x"; }),
       "ERROR: Virtual file paths can only be used when running in ASP."},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Outcome got = read(c.request);
    EXPECT_EQ(got.text, c.want);
    EXPECT_EQ(got.matches, -1);
  }
}

TEST(ValidateParameters, DefaultsAndNormalisation) {
  struct Case {
    const char* name;
    Request request;
    std::string want;
    int matches;
  };
  auto with = [](auto change) {
    Request r;
    change(r);
    return r;
  };
  const Case cases[] = {
      {"ElementTypeInCapitals", with([](Request& r) { r.element = " #ASPCODE "; }), "a;b", 2},
      // The second instance begins right behind the first and is passed over.
      {"ContentTypeAnyCase", with([](Request& r) { r.contentType = " OuterMarkup "; }), "<%a%>", 1},
      {"BlankContentTypeIsInnerMarkup", with([](Request& r) { r.contentType = "  "; }), "a;b", 2},
      {"CountZeroTakesAll", with([](Request& r) { r.count = 0; }), "a;b", 2},
      {"CountNegativeTakesAll", with([](Request& r) { r.count = -3; }), "a;b", 2},
      {"CountOne", with([](Request& r) { r.count = 1; }), "a", 1},
      {"SeparatorTrimmed", with([](Request& r) { r.separator = " -- "; }), "a--b-", 2},
      {"BlankSeparatorIsNul", with([](Request& r) { r.separator = "   "; }), std::string("a\0b", 3),
       2},
      {"PathWithColonOnlyIsPhysical", with([](Request& r) { r.document = "C:/doc.htm"; }), "a;b",
       2},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Outcome got = read(c.request);
    EXPECT_EQ(got.text, c.want);
    EXPECT_EQ(got.matches, c.matches);
  }
}

TEST(ValidateParameters, VirtualPathsGoThroughTheContext) {
  Request virtualPath;
  virtualPath.document = "/doc.htm";
  Outcome got = read(virtualPath, FakeContext::underSite());
  EXPECT_EQ(got.text, "s");
  EXPECT_EQ(got.matches, 1);

  auto empty = std::make_shared<FakeContext>([](const std::string&) { return std::string(); });
  EXPECT_EQ(read(virtualPath, empty).text,
            "ERROR: The virtual path provided does not map to a physical path on the server.");

  auto failing = std::make_shared<FakeContext>(
      [](const std::string&) -> std::string { throw std::runtime_error("host failure"); });
  EXPECT_EQ(read(virtualPath, failing).text,
            "ERROR: Unidentified Error while validating parameters.");

  // The message of a missing file names the physical path.
  Request missing;
  missing.document = "/none.htm";
  EXPECT_EQ(read(missing, FakeContext::underSite()).text,
            "ERROR: Cannot open document file: 'C:\\site\\none.htm'.");
}

}  // namespace
}  // namespace tagwright
