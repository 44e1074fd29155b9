// Request checking through readXPointer: every failure text, which check wins
// when several fail, the normalised parameters, and paths through the page
// context.
#include <gtest/gtest.h>

#include "support/requests.h"

namespace tagwright {
namespace {

const std::string kNoDocument =
    "ERROR: A physical or virtual path and file name of the target document must be provided.";
const std::string kVirtualOnly = "ERROR: Virtual file paths can only be used when running in ASP.";
const std::string kContentType =
    "ERROR: The return content type parameter must be 'outerMarkup', 'innerMarkup' or 'innerText'.";
const std::string kStart = "ERROR: The start element instance number must be greater than zero.";
const std::string kElementType =
    "ERROR: The available element types are '#element', '#comment', '#pi', '#aspcode' and '#dtd'.";

TEST(ValidateParameters, Table) {
  const struct {
    const char* name;
    Request request;
    std::string text;
    int matches = -1;
    std::function<std::string(const std::string&)> map = nullptr;
  } cases[] = {
      {"NoDocument", Request{.document = ""}, kNoDocument},
      {"BlankDocument", Request{.document = "   "}, kNoDocument},
      {"VirtualWithoutContext", Request{.document = "/doc.htm"}, kVirtualOnly},
      {"BadContentType", Request{.contentType = "text"}, kContentType},
      {"StartZero", Request{.start = 0}, kStart},
      {"BadElementType", Request{.element = "#text"}, kElementType},
      {"SpanWithoutComma", Request{.span = " H2 "},
       "ERROR: Illegal format in span function parameter: 'h2'."},
      {"StringWithoutComma", Request{.string = " Price "},
       "ERROR: Illegal format in string function parameter: 'Price'."},
      {"MissingFile", Request{.document = " C:\\none.htm "},
       "ERROR: Cannot open document file: 'C:\\none.htm'."},
      {"BothFunctions", Request{.span = "a,b", .string = "1,a,0,1"},
       "ERROR: The 'StringFunction' and 'SpanFunction' arguments cannot be used at the same time."},
      {"ElementTypeBeatsContentType", Request{.element = "#x", .contentType = "x"}, kElementType},
      {"StartBeatsContentType", Request{.start = 0, .contentType = "x"}, kStart},
      {"SpanFormatBeatsBoth", Request{.span = "ab", .string = "1,a,0,1"},
       "ERROR: Illegal format in span function parameter: 'ab'."},
      {"EveryCheckBeatsMissingFile", Request{.document = "C:\\none.htm", .contentType = "x"},
       kContentType},
      {"ContextBeatsEverythingElse", Request{.document = "doc.htm", .element = "#x"}, kVirtualOnly},
      {"ElementTypeInCapitals", Request{.element = " #ASPCODE "}, "a;b", 2},
      {"ContentTypeAnyCase", Request{.contentType = " OuterMarkup "}, "<%a%>", 1},
      {"ColonMakesAPathPhysical", Request{.document = "C:/doc.htm"}, "a;b", 2},
      {"VirtualPathMapped", Request{.document = "/doc.htm"}, "s", 1, underSite},
      {"MissingFileNamedByItsPhysicalPath", Request{.document = "/none.htm"},
       "ERROR: Cannot open document file: 'C:\\site\\none.htm'.", -1, underSite},
      {"MappedToNothing", Request{.document = "/doc.htm"},
       "ERROR: The virtual path provided does not map to a physical path on the server.", -1,
       [](const std::string&) { return std::string(); }},
      {"ContextFails", Request{.document = "/doc.htm"},
       "ERROR: Unidentified Error while validating parameters.", -1,
       [](const std::string&) -> std::string { throw std::runtime_error("host failure"); }},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    FakePlatform platform;
    platform.files = {{"/doc.htm", "<%a%><%b%>"}, {"/site/doc.htm", "<%s%>"}};
    EXPECT_EQ(read(platform, c.request, 2048, c.map ? mappedContext(c.map) : nullptr),
              (Outcome{c.text, c.matches}));
    EXPECT_EQ(platform.openFileCount(), 0);
  }
}

}  // namespace
}  // namespace tagwright
