// Reads that search and cut on the bytes of a chunk against reads that do
// it on its lower-cased characters, on generated pages of several shapes, at
// several chunk lengths and in both line-end modes: the two must agree on
// every result, count and failure text.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
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
  };
  // Shapes: short lines and long ones, so that stretches cross chunks; a
  // stretch that ends in a line longer than 32767 characters; one such line
  // alone, where positions overflow; a "<" that stripMarkup cannot take.
  const std::string longLine = std::string(40000, 'y');
  struct Shape {
    const char* name;
    std::uint32_t seed;
    int pieces;
    std::string lineEnd;
    LineEnds lineEnds;
    std::string tail;
  };
  const Shape shapes[] = {
      {"CrLf", 7, 400, "\r\n", LineEnds::kCrLf, ""},
      {"Lf", 11, 400, "\n", LineEnds::kAny, ""},
      {"Cr", 13, 300, "\r", LineEnds::kAny, "<p>a<b>c<d</p>"},
      {"IntoLongLine", 5, 60, "\r\n", LineEnds::kCrLf,
       "<p>into <b>a</b>" + repeat("\r\nlines that end in no tag", 120) + "</p>" + longLine +
           "<p>beyond 32767</p>\r\n"},
      {"OneLongLine", 17, 1200, " ", LineEnds::kCrLf, ""},
  };
  for (const Shape& shape : shapes) {
    const std::string document =
        generatedPage(shape.seed, shape.pieces, shape.lineEnd) + shape.tail;
    for (std::int32_t length : {64, 257, 2048, 30000}) {
      for (Request r : requests) {
        SCOPED_TRACE(std::string(shape.name) + " chunk " + std::to_string(length) + " " +
                     r.element + " " + r.contentType + " " + r.attributeName + "=" +
                     r.attributeValue);
        r.lineEnds = shape.lineEnds;
        EXPECT_EQ(readOn(document, r, length, false), readOn(document, r, length, true));
      }
    }
  }
}

}  // namespace
}  // namespace tagwright
