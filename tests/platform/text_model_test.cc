// The text model on raw bytes: decoding, counting and lower-cased decoding
// with byte offsets, and the search for an opening marker in the lower-cased
// characters that reports a byte offset. Each is held against a plain
// decoder written from the rules of text.h, on hand-made traps and on texts
// drawn at random, with a fixed seed, from pieces that make and break
// sequences.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "platform/text.h"
#include "platform/well_formed_utf8.h"

namespace tagwright {
namespace {

// One character per well-formed sequence, one raw character per other byte.
Text referenceDecode(std::string_view s) {
  static constexpr char32_t kMinimum[] = {0, 0, 0x80, 0x800, 0x10000};
  Text out;
  for (std::size_t i = 0; i < s.size();) {
    const auto b = static_cast<unsigned char>(s[i]);
    const std::size_t length = b < 0x80                 ? 1
                               : b >= 0xC2 && b <= 0xDF ? 2
                               : b >= 0xE0 && b <= 0xEF ? 3
                               : b >= 0xF0 && b <= 0xF4 ? 4
                                                        : 0;
    char32_t c = length == 1 ? b : static_cast<char32_t>(b & (0x7Fu >> length));
    bool ok = length > 0 && i + length <= s.size();
    for (std::size_t k = 1; ok && k < length; ++k) {
      ok = (s[i + k] & 0xC0) == 0x80;
      c = (c << 6) | (s[i + k] & 0x3Fu);
    }
    ok = ok && c >= kMinimum[length] && c <= 0x10FFFF && (c < 0xD800 || c > 0xDFFF);
    out += ok ? c : kRawByteBase + b;
    i += ok ? length : 1;
  }
  return out;
}

std::string pad(std::size_t n) { return std::string(n, 'a'); }

// Hand-made traps (sequences in the first three bytes, across the 16- and
// 32-byte lanes and the 1024-byte blocks of the count and the 64-byte blocks
// of the search, cut at the end), then random
// texts, some long enough to cross several blocks.
std::vector<std::string> samples() {
  // clang-format off
  std::vector<std::string> s = {
      "", "a", "ab", "\xC3\xA9", "\x80", "\xE2\x82\xAC-abc", "a\xF0\x9F\x98\x80", "\xA9\xC3\xA9",
      "\xC0\x80", "\xC1\xBFxyz", "\xE0\x80\x80", "\xE0\xA0\x80", "\xF0\x80\x80\x80",
      "\xF0\x90\x80\x80", "\xED\xA0\x80", "\xED\x9F\xBF", "\xF4\x90\x80\x80", "\xF4\x8F\xBF\xBF",
      "\xF5\x80\x80\x80", "ab\xFE\xFF", "abc\xC3", "abc\xE2\x82", "abc\xF0\x9F\x98", "\xC3xyz",
      "\xE2\x82xyz", "\xF0\x9F\x98xyz", "a\xBFx\x80\x80xyzxyzxy", "<DIV <Div <dIv", "<d\xC4\xB0v>",
      "<\xE2\x84\xAA>", "<\xFF", "<", "x<", "<\x80<div", "<!DOCTYPE html>", "<!doctype\thtml>",
      "<?x?><%y%>", "<\xC3\xA9t\xC3\xA9><\xC3\x89T\xC3\x89>", pad(1026) + "\xE2\x82\xAC",
      pad(1025) + "\xF0\x9F\x98\x80" + "b", pad(1027) + "\x80", pad(1026) + "\xED\xA0\x80",
      pad(1025) + "\xE0\x80\x80", pad(2050) + "\xC3", pad(15) + "\xE2\x82\xAC",
      pad(30) + "\xF0\x9F\x98\x80", pad(31) + "\xC3\xA9", pad(31) + "\xC3", pad(32) + "\xC3",
      pad(29) + "\xF0\x9F\x98", pad(46) + "\xED\xA0\x80", pad(47) + "\xF4\x90\x80\x80", pad(62) + "<div", pad(63) + "<div>",
      pad(63) + "<DIV" + pad(70), pad(64) + "<\xE2\x84\xAA", pad(127) + "<", pad(126) + "<!" + pad(65)};
  // Well-formed pieces first: every other random text is made of them only,
  // so that the vector count is taken and not only its fallback.
  const std::vector<std::string> pieces = {
      "a", "Z", "<", ">", " ", "<d", "<D", "iv", "<!", "<?", "<%", "k", "aaaaaaaa", "\xC3\xA9",
      "\xC3\x89", "\xE2\x82\xAC", "\xF0\x9F\x98\x80", "\xC4\xB0", "\xE2\x84\xAA", "\xED\x9F\xBF",
      "\xC3", "\xE2", "\xE2\x82", "\xF0\x9F", "\xED", "\xE0", "\xF4", "\xC0", "\x80", "\xA0",
      "\x90", "\xBF", "\xFF", "\xF5", "\r\n"};
  // clang-format on
  constexpr std::size_t kWellFormed = 20;
  std::mt19937 random(20261123);
  for (int row = 0; row < 300; ++row) {
    std::string text;
    const std::size_t count = random() % (row % 5 == 0 ? 1200 : 40);
    const std::size_t choices = row % 2 == 0 ? kWellFormed : pieces.size();
    for (std::size_t k = 0; k < count; ++k) text += pieces[random() % choices];
    s.push_back(text);
  }
  return s;
}

TEST(TextModel, DecodeCountAndOffsets) {
  for (const std::string& utf8 : samples()) {
    SCOPED_TRACE(testing::PrintToString(utf8.substr(0, 80)) + " of " + std::to_string(utf8.size()));
    const Text want = referenceDecode(utf8);
    ASSERT_EQ(fromUtf8(utf8), want);
    ASSERT_EQ(decodedLength(utf8), want.size());
    std::size_t vector = 0, portable = 0;
    const bool wellFormed =
        std::none_of(want.begin(), want.end(), [](char32_t c) { return c >= kRawByteBase; });
    ASSERT_EQ(countWellFormed(utf8, vector), wellFormed);
    ASSERT_EQ(countWellFormedPortable(utf8, portable), wellFormed);
    if (wellFormed) {
      ASSERT_EQ(vector, want.size());
      ASSERT_EQ(portable, want.size());
    }
    ASSERT_EQ(toUtf8(want), utf8);
    Text lowered;
    std::vector<std::uint32_t> offsets;
    decodeLoweredInto(utf8, lowered, offsets);
    ASSERT_EQ(lowered, lower(want));
    ASSERT_EQ(offsets.size(), want.size() + 1);
    ASSERT_EQ(offsets.front(), 0u);
    ASSERT_EQ(offsets.back(), utf8.size());
    for (std::size_t a = 0; a < want.size(); ++a) {
      ASSERT_EQ(utf8.substr(offsets[a], offsets[a + 1] - offsets[a]), toUtf8(want.substr(a, 1)))
          << "character " << a;
    }
  }
}

// Every hit of findLowered, each search going on from the byte behind the
// last, against the hits in the lower-cased reference decoding.
TEST(TextModel, FindLoweredGivesTheByteOfEachHit) {
  const Text markers[] = {U"<", U"<div", U"<k", U"<i", U"<!", U"<?", U"<%", U"<!doctype ", U"<été"};
  for (const std::string& utf8 : samples()) {
    SCOPED_TRACE(testing::PrintToString(utf8.substr(0, 80)) + " of " + std::to_string(utf8.size()));
    const Text text = lower(referenceDecode(utf8));
    std::vector<std::size_t> byteOf(1, 0);  // the byte where each character begins
    for (char32_t c : referenceDecode(utf8))
      byteOf.push_back(byteOf.back() + toUtf8(TextView(&c, 1)).size());
    for (const Text& marker : markers) {
      SCOPED_TRACE(toUtf8(marker));
      std::vector<std::size_t> want, got;
      for (std::size_t at = text.find(marker); at != Text::npos; at = text.find(marker, at + 1)) {
        want.push_back(byteOf[at]);
      }
      for (std::size_t at = findLowered(utf8, marker, 0); at != std::string::npos;
           at = findLowered(utf8, marker, at + 1)) {
        got.push_back(at);
        if (got.size() > want.size()) break;
      }
      EXPECT_EQ(got, want);
      EXPECT_EQ(findLowered(utf8, marker, 0) != std::string_view::npos, !want.empty());
    }
  }
}

}  // namespace
}  // namespace tagwright
