// The scan driver through readXPointer: counting, separators, the last cut,
// close markers across chunks, and its failure texts.
#include <gtest/gtest.h>

#include <string>

#include "support/read_request.h"

namespace tagwright {
namespace {

const std::string kThreeLines = "<?xml version=\"1.0\"?>\r\n<%a=1%><p>x</p>\r\n<%b%>\r\n";

struct ScanCase {
  const char* name;
  std::string document;
  ReadRequest request;
  std::string want;
  int matches;
};

ReadRequest aspcode(std::string contentType = "innerMarkup") {
  ReadRequest r;
  r.element = "#aspcode";
  r.contentType = std::move(contentType);
  return r;
}

TEST(ScanDocument, ThreeLineExample) {
  ReadRequest pi = aspcode();
  pi.element = "#pi";
  ReadRequest second = aspcode();
  second.start = 2;
  const ScanCase cases[] = {
      {"InnerMarkup", kThreeLines, aspcode(), "a=1;b", 2},
      {"OuterMarkup", kThreeLines, aspcode("outerMarkup"), "<%a=1%>;<%b%>", 2},
      {"ProcessingInstruction", kThreeLines, pi, "xml version=\"1.0\"", 1},
      {"StartInstanceTwo", kThreeLines, second, "b", 1},
  };
  for (const ScanCase& c : cases) {
    SCOPED_TRACE(c.name);
    ReadOutcome got = readDocument(c.document, c.request);
    EXPECT_EQ(got.text, c.want);
    EXPECT_EQ(got.matches, c.matches);
  }
}

}  // namespace
}  // namespace tagwright
