// Reads that search and cut on the bytes of a chunk, and scans that decode
// a long chunk only as far as a position can reach, against scans on all the
// lower-cased characters of every chunk, on generated pages of several
// shapes, at several chunk lengths and in both line-end modes: the two must
// agree on every result, count, failure text and rewritten document.
#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "support/pages.h"
#include "support/requests.h"

namespace tagwright {
namespace {

Outcome readOn(const std::string& bytes, const Request& r, std::int32_t length, bool characters) {
  FakePlatform platform;
  platform.files["/doc.htm"] = bytes;
  return read(platform, r, length, nullptr, characters);
}

// A rewrite's answer and the files it leaves.
std::pair<Outcome, std::map<std::string, std::string>> writeOn(const std::string& bytes,
                                                               const Request& r,
                                                               std::int32_t length,
                                                               bool characters) {
  FakePlatform platform;
  platform.files["/doc.htm"] = bytes;
  Outcome o = write(platform, r, length, characters);
  return {o, platform.files};
}

// `count` characters of text of one to three bytes each and raw bytes, with
// a capital that lower-cases to ASCII, and no markup.
std::string filler(std::size_t count) {
  static const std::vector<std::string> kCharacters = {"a", "\xC3\xA9", "\xE6\x9D\xB1",
                                                       " ", "\xC4\xB0", "\xFF"};
  std::string out;
  for (std::size_t k = 0; k < count; ++k) out += kCharacters[k % kCharacters.size()];
  return out;
}

// One line that puts the first character of `markup` at position `at` of
// the chunk (behind the page's first line, of 17 characters), with more
// than the positions can reach behind it.
std::string atPosition(int at, const std::string& markup) {
  return filler(static_cast<std::size_t>(at - 18)) + markup + filler(900) + "\r\n";
}
TEST(BytePath, AgreesWithTheCharacterPath) {
  const Request requests[] = {
      {.element = "p"},
      {.element = "p", .contentType = "outerMarkup"},
      {.element = "p", .contentType = "innerText", .separator = "|"},
      {.element = "p", .attributeName = "class"},
      {.element = "p", .attributeName = "id", .attributeValue = "k", .contentType = "outerMarkup"},
      {.element = "p", .attributeValue = "z\xC3\xBCrich"},
      {.element = "p", .attributeName = "title", .attributeValue = "bignews"},
      {.element = "p", .start = 4, .count = 9, .contentType = "innerText"},
      {.element = "div", .contentType = "innerText"},
      {.element = "path", .contentType = "outerMarkup"},
      {.element = "b", .separator = ""},
      {.element = "#element"},
      {.element = "#element", .contentType = "innerText"},
      {.element = "#comment", .separator = ""},
      {.element = "#dtd"},
      {.element = "#pi", .separator = ""},
      {.element = "#aspcode", .contentType = "outerMarkup"},
      {.element = "div", .span = "h2,p"},
      {.element = "p", .string = "1,a,0,3"},
  };
  // Shapes: short lines and long ones, so that stretches cross chunks; a
  // stretch that ends in a line longer than 32767 characters; one such line
  // alone, where positions overflow; a "<" that stripMarkup cannot take; a
  // comment over chunks that ends the document's results;
  // lines longer than the characters decoded of them, each kind of opener
  // before, at and past position 32767, and a tag, a declaration or a close
  // marker that runs past it.
  const std::string longLine = std::string(40000, 'y');
  struct Shape {
    std::string name;
    std::uint32_t seed;
    int pieces;
    std::string lineEnd;
    LineEnds lineEnds;
    std::string tail;
  };
  std::vector<Shape> shapes = {
      {"CrLf", 7, 400, "\r\n", LineEnds::kCrLf, ""},
      {"Lf", 11, 400, "\n", LineEnds::kAny, ""},
      {"Cr", 13, 300, "\r", LineEnds::kAny, "<p>a<b>c<d</p>"},
      {"IntoLongLine", 5, 60, "\r\n", LineEnds::kCrLf,
       "<p>into <b>a</b>" + repeat("\r\nlines that end in no tag", 120) + "</p>" + longLine +
           "<p>beyond 32767</p>\r\n"},
      {"OneLongLine", 17, 1200, " ", LineEnds::kCrLf, ""},
      {"TagPastTheLimit", 0, 0, "\r\n", LineEnds::kCrLf,
       atPosition(32700, "<p " + filler(200) + ">x</p>")},
      {"CommentOverChunks", 0, 0, "\n", LineEnds::kAny,
       "<div><!-- over" + repeat("\nlines", 60) + " \xC3\xA9--></div>\n"},
      {"DoctypeWithoutEnd", 0, 0, "\r\n", LineEnds::kCrLf,
       atPosition(32000, "<!doctype x" + filler(900) + " system ")},
      {"ClosePastTheLimit", 0, 0, "\n", LineEnds::kAny,
       atPosition(32000, "<div><p><!-- <?x <% " + filler(900) + "</p>--> ?> %></div>")},
  };
  const std::string openers =
      "<p class=x>\xC3\xA9t\xC3\xA9</p><!-- c --><?pi x?><% a %><!doctype html public 'x'>"
      "<div><h2>a</h2>b<p>c</p></div>";
  for (int at : {32680, 32720, 32740, 32760, 32766, 32767, 32768, 32800}) {
    shapes.push_back(
        {"OpenersAt" + std::to_string(at), 0, 0, "\r\n", LineEnds::kCrLf, atPosition(at, openers)});
  }
  for (const Shape& shape : shapes) {
    const std::string document =
        generatedPage(shape.seed, shape.pieces, shape.lineEnd) + shape.tail;
    for (std::int32_t length : {64, 257, 2048, 30000}) {
      for (Request r : requests) {
        SCOPED_TRACE(shape.name + " chunk " + std::to_string(length) + " " + r.element + " " +
                     r.contentType + " " + r.attributeName + "=" + r.attributeValue + " " + r.span +
                     r.string);
        r.lineEnds = shape.lineEnds;
        EXPECT_EQ(readOn(document, r, length, false), readOn(document, r, length, true));
        if (r.string.empty()) {
          EXPECT_EQ(writeOn(document, r, length, false), writeOn(document, r, length, true));
        }
      }
    }
  }
}

}  // namespace
}  // namespace tagwright
