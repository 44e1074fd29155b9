#ifndef TAGWRIGHT_BENCH_GENERATED_PAGE_H_
#define TAGWRIGHT_BENCH_GENERATED_PAGE_H_

#include <cstddef>
#include <cstdint>
#include <string>

namespace tagwright {

// What a generated page holds, to check results before timing them.
struct GeneratedPage {
  std::string bytes;
  int paragraphs = 0;
  int serverBlocks = 0;
};

// A reproducible page of about `size` bytes with CR LF lines: nested divs,
// paragraphs with inline markup and entities, comments, server code and
// non-ASCII text, and one <div id="target"> at 95% of the document.
inline GeneratedPage generatePage(std::size_t size) {
  GeneratedPage page;
  std::uint32_t state = 12345;
  auto next = [&state] {
    state = state * 1664525u + 1013904223u;
    return state >> 8;
  };
  static const char* const kWords[] = {"harbour", "ferry", "Öresund", "tide",  "&amp;",
                                       "café",    "pier",  "storm",   "north", "lantern"};
  std::string& out = page.bytes;
  out.reserve(size + 1024);
  out += "<!DOCTYPE html>\r\n<html>\r\n<head><title>Generated</title></head>\r\n<body>\r\n";
  bool targetWritten = false;
  while (out.size() < size) {
    if (!targetWritten && out.size() >= size / 100 * 95) {
      out += "<div id=\"target\"><p>The one target paragraph.</p></div>\r\n";
      ++page.paragraphs;
      targetWritten = true;
    }
    switch (next() % 6) {
      case 0:
        out += "<!-- section " + std::to_string(next() % 1000) + " -->\r\n";
        break;
      case 1:
        out += "<% Response.Write(\"" + std::string(kWords[next() % 10]) + "\") %>\r\n";
        ++page.serverBlocks;
        break;
      case 2:
        out += "<div class=\"box\"><div class=\"inner\">\r\n";
        break;
      case 3:
        out += "</div></div>\r\n";
        break;
      default: {
        out += "<p class=\"news\">";
        int words = 5 + static_cast<int>(next() % 12);
        for (int i = 0; i < words; ++i) {
          if (i % 4 == 2) {
            out += "<b>" + std::string(kWords[next() % 10]) + "</b> ";
          } else {
            out += std::string(kWords[next() % 10]) + " ";
          }
        }
        out += "</p>\r\n";
        ++page.paragraphs;
      }
    }
  }
  out += "</body>\r\n</html>\r\n";
  return page;
}

}  // namespace tagwright

#endif  // TAGWRIGHT_BENCH_GENERATED_PAGE_H_
