// LineEnds::kAny: line by line on pages that mix LF, CR LF and CR, and
// differentially on this machine's LF pages against their CR LF copies.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "platform/platform.h"
#include "support/requests.h"
#include "support/temp_folder.h"

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

// This machine's documentation pages above 32 KB whose lines end in LF
// alone, up to `most` of them spread over the sorted list.
std::vector<std::string> lfPages(std::size_t most) {
  std::vector<std::string> pages;
  std::error_code error;
  namespace fs = std::filesystem;
  for (fs::recursive_directory_iterator
           it("/usr/share/doc", fs::directory_options::skip_permission_denied, error),
       end;
       !error && it != end; it.increment(error)) {
    if (it->path().extension() != ".html" || !it->is_regular_file(error)) continue;
    if (it->file_size(error) <= 32 * 1024) continue;
    std::ifstream in(it->path(), std::ios::binary);
    std::string bytes(std::istreambuf_iterator<char>(in), {});
    if (bytes.find('\r') == std::string::npos) pages.push_back(it->path().string());
  }
  std::sort(pages.begin(), pages.end());
  std::vector<std::string> spread;
  for (std::size_t k = 0; k < std::min(most, pages.size()); ++k) {
    spread.push_back(pages[k * pages.size() / std::min(most, pages.size())]);
  }
  return spread;
}

// kAny on an LF page gives what the default mode gives on its CR LF copy,
// once CR LF is LF again; reads, meta and rewrites alike.
TEST(LineEndsAny, RealLfPagesAgreeWithTheirCrLfCopies) {
  const std::vector<std::string> pages = lfPages(6);
  if (pages.empty()) GTEST_SKIP() << "no LF page above 32 KB under /usr/share/doc";
  const Request reads[] = {
      {.element = "a", .separator = "|"},
      {.element = "a",
       .attributeName = "href",
       .start = 3,
       .count = 40,
       .contentType = "outerMarkup"},
      {.element = "#element", .contentType = "innerText"},
      {.element = "div", .attributeName = "class"},
      {.element = "pre"},
      {.element = "#comment", .contentType = "outerMarkup"},
      {.element = "#dtd", .contentType = "outerMarkup"},
      {.element = "ul", .span = "a,a"},
      {.element = "dl", .contentType = "outerMarkup", .span = "dt,dd"},
      {.element = "p", .string = "1,the,-5,30"},
      {.element = "li", .contentType = "innerText", .separator = "\n"},
  };
  const Request writes[] = {
      {.element = "a", .start = 5, .count = 1, .newContent = "<b>N\nEW</b>"},
      {.element = "pre", .count = 2},
      {.element = "dl", .count = 0, .span = "dt,dd"},
  };
  TempFolder folder;
  Platform& platform = systemPlatform();
  for (const std::string& page : pages) {
    SCOPED_TRACE(page);
    std::ifstream in(page, std::ios::binary);
    const std::string original(std::istreambuf_iterator<char>(in), {});
    folder.write("lf.htm", original);
    folder.write("crlf.htm", lfToCrLf(original));
    for (Request r : reads) {
      SCOPED_TRACE(r.element + " " + r.span + r.string);
      r.document = folder.physical("crlf.htm");
      Outcome want = read(platform, r);
      want.text = crLfToLf(want.text);
      r.document = folder.physical("lf.htm");
      r.lineEnds = kAny;
      EXPECT_EQ(read(platform, r), want);
    }
    MetaRequest meta{.document = folder.physical("crlf.htm")};
    Outcome want = read(platform, meta);
    meta.document = folder.physical("lf.htm");
    meta.lineEnds = kAny;
    EXPECT_EQ(read(platform, meta), (Outcome{crLfToLf(want.text), want.matches}));

    for (Request r : writes) {
      SCOPED_TRACE("write " + r.element + " " + r.span);
      folder.write("lf.htm", original);
      folder.write("crlf.htm", lfToCrLf(original));
      r.document = folder.physical("crlf.htm");
      Outcome wantOutcome = write(platform, r);
      wantOutcome.text = crLfToLf(wantOutcome.text);
      r.document = folder.physical("lf.htm");
      r.lineEnds = kAny;
      EXPECT_EQ(write(platform, r), wantOutcome);
      const std::string rewritten = folder.read("lf.htm").value_or("");
      // The copy gains a line end behind a last line without one; the page does not.
      std::string wantDocument = crLfToLf(folder.read("crlf.htm").value_or(""));
      if (!original.ends_with('\n') && wantOutcome.matches >= 0) wantDocument.pop_back();
      EXPECT_EQ(rewritten, wantDocument);
      // Outside the one stretch replaced, the page is as it was.
      if (r.count == 1 && wantOutcome.matches == 1 && r.span.empty()) {
        auto prefix =
            std::mismatch(original.begin(), original.end(), rewritten.begin(), rewritten.end());
        auto suffix =
            std::mismatch(original.rbegin(), original.rend(), rewritten.rbegin(), rewritten.rend());
        const auto kept = static_cast<std::size_t>((prefix.first - original.begin()) +
                                                   (suffix.first - original.rbegin()));
        EXPECT_LE(original.size(), kept + wantOutcome.text.size());
      }
    }
  }
}

}  // namespace
}  // namespace tagwright
