#ifndef TAGWRIGHT_TESTS_SUPPORT_PAGES_H_
#define TAGWRIGHT_TESTS_SUPPORT_PAGES_H_

#include <cstdint>
#include <string>
#include <vector>

namespace tagwright {

// Pieces of markup for generated pages, chosen for what the byte path decides
// on its own: names that only begin with "p", capitals, "İ" and the Kelvin
// sign, attributes in both quotes with blanks and values beyond ASCII,
// self-closing tags, raw bytes, blank and tag-only content, text that
// stripMarkup cannot cut; and lists, links and a meta tag, and elements over
// lines that end in a lone LF.
inline const std::vector<std::string> kPieces = {
    "<p>plain words</p>",
    "<P CLASS='Lead'>Capitals <B>bold</B> and <i>it</i></P>",
    "<p class=\"news\" id='x\xC4\xB0'>dotted \xC4\xB0 and \xE2\x84\xAA</p>",
    "<p \xC4\xB0"
    "D=\"k\">attribute name with a dotted capital</p>",
    "<p title=\"Z\xC3\xBCrich\">Z\xC3\xBCrich \xE2\x82\xAC 12</p>",
    "<p title = \"big news\" >spaced</p>",
    "<pre>not a p</pre><param name=\"p\"><path d=\"M0\"/><picture></picture>",
    "<p/><p /><p a=b/>",
    "<p>  </p><p></p><p>\t</p>",
    "<p><b></b><!-- c --></p>",
    "<p>raw \xFF\xC3 bytes \x80</p>",
    "<p>if (a<b) {x}</p>",
    "<p>a > b <span>c</span>!</p>",
    "<div><p>in a div</div></p>",
    "<svg><path d='p'/></svg><p>after svg</p>",
    "<P\tclass=x>tab behind the name</P>",
    "<p>\xE2\x84\xAA"
    "<b>\xE2\x84\xAA</b></p>",
    "<d\xC4\xB0"
    "v>div with a dotted capital</D\xC4\xB0"
    "V>",
    "<div id=\"t\"><p>target</p></div>",
    "text & more text, <br> and <img src=x>",
    "<ul><li>one <a href=\"x\">a</a> <b>b</b></li><li>two</li></ul><meta name=\"m\" content=\"x "
    "y\">",
    "<p class=\"lines\">two\nlines <b>of</b>\n text</p><ul><li>and\n  more</li></ul>",
};

// A page of `count` pieces picked by a fixed sequence, joined by blanks or
// by `lineEnd`, with some lines long enough to put a stretch over chunks.
inline std::string generatedPage(std::uint32_t seed, int count, const std::string& lineEnd) {
  std::string out = "<!DOCTYPE html>" + lineEnd;
  for (int k = 0; k < count; ++k) {
    seed = seed * 1664525u + 1013904223u;
    const std::uint32_t pick = seed >> 8;
    out += kPieces[pick % kPieces.size()];
    if (pick % 7 == 0) out += std::string(300 + pick % 900, 'w');
    out += (pick >> 12) % 3 == 0 ? " " : lineEnd;
  }
  return out;
}

}  // namespace tagwright

#endif  // TAGWRIGHT_TESTS_SUPPORT_PAGES_H_
