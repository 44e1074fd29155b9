// LineEnds::kAny: line by line on pages that mix LF, CR LF and CR, and
// differentially on this machine's LF pages against their CR LF copies.
#include <gtest/gtest.h>

#include <algorithm>

#include "support/pages.h"
#include "support/requests.h"

namespace tagwright {
namespace {

constexpr LineEnds kAny = LineEnds::kAny;

std::string crLfToLf(std::string text) {
  for (std::size_t at = 0; (at = text.find("\r\n", at)) != std::string::npos; ++at) {
    text.erase(at, 1);
  }
  return text;
}

std::string lfToCrLf(const std::string& text) {
  std::string out;
  for (char c : text) out += c == '\n' ? std::string("\r\n") : std::string(1, c);
  return out;
}

// Every line end of a kind, and a last line without one.
const std::string kMixed =
    "<p>a</p>\n<p>b\r\nc</p>\r<div id=\"x\">\n<p>d\n</p></div>\r\n"
    "<h2>t</h2>\n<p>\r  e  \r</p>\n<meta name=\"m\" content=\"x\ry\">\r\n<p>f</p>";

// Results carry the document's own line ends, wherever a chunk ends.
TEST(LineEndsAny, ResultsKeepEachLineEnd) {
  const struct {
    Request request;
    Outcome want;
  } cases[] = {
      {{.element = "p", .separator = "|", .lineEnds = kAny}, {"a|b\r\nc|d\n|\r  e  \r|f", 5}},
      {{.element = "div", .contentType = "outerMarkup", .lineEnds = kAny},
       {"<div id=\"x\">\n<p>d\n</p></div>", 1}},
      // stripMarkup sees CR LF: the blanks stay, as on the copy.
      {{.element = "p", .start = 4, .count = 1, .contentType = "innerText", .lineEnds = kAny},
       {"  e  ", 1}},
      {{.element = "p", .start = 2, .count = 1, .string = "1,b,0,3", .lineEnds = kAny}, {"bc", 1}},
      // The default mode: a lone LF stays in its line, CR alone ends one.
      {{.element = "p", .separator = "|"}, {"a|b\r\nc|d\n|\r\n  e  \r\n|f", 5}},
  };
  for (const auto& c : cases) {
    for (std::int32_t bufferLength : {2048, 1}) {
      SCOPED_TRACE(c.request.element + " " + std::to_string(bufferLength));
      EXPECT_EQ(readDocument(kMixed, c.request, bufferLength), c.want);
    }
  }
  for (std::int32_t bufferLength : {2048, 1}) {
    EXPECT_EQ(readDocument(kMixed, MetaRequest{.lineEnds = kAny}, bufferLength),
              (Outcome{"m$eq$x\ry", 1}));
  }
}

// A rewrite changes the replaced stretches only: every other line keeps its
// end, the last line stays without one, NewContent goes in as given.
TEST(LineEndsAny, RewriteKeepsEachLineEnd) {
  const std::string body = "<body>\n<h2>t</h2>\n<p>x</p>\r</body>";
  const struct {
    std::string document;
    Request request;
    std::string want;
    Outcome outcome;
  } cases[] = {
      {kMixed,
       {.element = "p", .count = 0, .newContent = "N\r\n", .lineEnds = kAny},
       "<p>N\r\n</p>\n<p>N\r\n</p>\r<div id=\"x\">\n<p>N\r\n</p></div>\r\n"
       "<h2>t</h2>\n<p>N\r\n</p>\n<meta name=\"m\" content=\"x\ry\">\r\n<p>N\r\n</p>",
       {"a;b\r\nc;d\n;\r  e  \r;f", 5}},
      {kMixed, {.element = "nothing", .lineEnds = kAny}, kMixed, {"", 0}},
      {kMixed,
       {.element = "div", .contentType = "outerMarkup", .lineEnds = kAny},
       "<p>a</p>\n<p>b\r\nc</p>\rNEW\r\n<h2>t</h2>\n<p>\r  e  \r</p>\n"
       "<meta name=\"m\" content=\"x\ry\">\r\n<p>f</p>",
       {"<div id=\"x\">\n<p>d\n</p></div>", 1}},
      {body,
       {.element = "body", .span = "h2,p", .lineEnds = kAny},
       "<body>\n<h2>t</h2>NEW<p>x</p>\r</body>",
       {"\n", 1}},
      {"a\n\n\r\r\n<p>\n</p>\n\n",
       {.element = "p", .lineEnds = kAny},
       "a\n\n\r\r\n<p>NEW</p>\n\n",
       {"\n", 1}},
  };
  for (const auto& c : cases) {
    for (std::int32_t bufferLength : {2048, 1}) {
      SCOPED_TRACE(c.request.element + " " + std::to_string(bufferLength));
      FakePlatform platform;
      platform.files["/doc.htm"] = c.document;
      EXPECT_EQ(write(platform, c.request, bufferLength), c.outcome);
      EXPECT_EQ(platform.files["/doc.htm"], c.want);
      EXPECT_EQ(platform.files["/doc.bak"], c.document);
    }
  }
}

// kAny on an LF page gives what the default mode gives on its CR LF copy,
// once CR LF is LF again; reads, meta and rewrites alike.
TEST(LineEndsAny, LfPagesAgreeWithTheirCrLfCopies) {
  const Request reads[] = {
      {.element = "a", .separator = "|"},
      {.element = "a",
       .attributeName = "href",
       .start = 3,
       .count = 40,
       .contentType = "outerMarkup"},
      {.element = "#element", .attributeName = "class", .contentType = "innerText"},
      {.element = "div", .attributeName = "id"},
      {.element = "pre"},
      {.element = "#comment", .contentType = "outerMarkup"},
      {.element = "ul", .span = "a,b"},
      {.element = "ul", .contentType = "outerMarkup", .span = "li,li"},
      {.element = "p", .string = "1,the,-5,30"},
      {.element = "li", .contentType = "innerText", .separator = "\n"},
  };
  const Request writes[] = {
      {.element = "a", .start = 5, .count = 1, .newContent = "<b>N\nEW</b>"},
      {.element = "pre", .count = 2},
      {.element = "ul", .count = 0, .span = "a,b"},
  };
  for (const std::string& original :
       {generatedPage(3, 400, "\n"), generatedPage(19, 300, "\n") + "<p>no line end</p>"}) {
    SCOPED_TRACE(original.size());
    // Runs `r` by `run` on the CR LF copy, then in kAny on the page itself.
    const auto agree = [&](FakePlatform& platform, auto r, auto run) {
      platform.files = {{"/lf.htm", original}, {"/crlf.htm", lfToCrLf(original)}};
      r.document = "C:\\crlf.htm";
      Outcome want = run(platform, r);
      want.text = crLfToLf(want.text);
      r.document = "C:\\lf.htm";
      r.lineEnds = kAny;
      EXPECT_EQ(run(platform, r), want);
      return want;
    };
    const auto reading = [](Platform& platform, const auto& r) { return read(platform, r); };
    FakePlatform platform;
    for (const Request& r : reads) {
      SCOPED_TRACE(r.element + " " + r.span + r.string);
      agree(platform, r, reading);
    }
    agree(platform, MetaRequest{}, reading);
    for (const Request& r : writes) {
      SCOPED_TRACE("write " + r.element + " " + r.span);
      const Outcome former =
          agree(platform, r, [](Platform& on, const Request& w) { return write(on, w); });
      const std::string& rewritten = platform.files["/lf.htm"];
      // The copy gains a line end behind a last line without one; the page does not.
      std::string wantDocument = crLfToLf(platform.files["/crlf.htm"]);
      if (!original.ends_with('\n') && former.matches >= 0) wantDocument.pop_back();
      EXPECT_EQ(rewritten, wantDocument);
      // Outside the one stretch replaced, the page is as it was.
      if (r.count == 1 && former.matches == 1) {
        auto prefix =
            std::mismatch(original.begin(), original.end(), rewritten.begin(), rewritten.end());
        auto suffix =
            std::mismatch(original.rbegin(), original.rend(), rewritten.rbegin(), rewritten.rend());
        const auto kept = static_cast<std::size_t>((prefix.first - original.begin()) +
                                                   (suffix.first - original.rbegin()));
        EXPECT_LE(original.size(), kept + former.text.size());
      }
    }
  }
}

}  // namespace
}  // namespace tagwright
