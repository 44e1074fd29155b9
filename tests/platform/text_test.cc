// The text model and its helpers: lossless UTF-8, length-keeping lower case,
// the 1-based helpers with their failures, Int16, and the numeric rule.
#include "platform/text.h"

#include <gtest/gtest.h>

#include "platform/numeric.h"

namespace tagwright {
namespace {

TEST(Text, Utf8RoundTripKeepsInvalidBytes) {
  for (const std::string bytes :
       {"caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80", "\xFF\xFE stray", "\xC3", "\xC0\xAF",
        "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xE2\x82x"}) {
    SCOPED_TRACE(bytes);
    EXPECT_EQ(toUtf8(fromUtf8(bytes)), bytes);
  }
  EXPECT_EQ(fromUtf8("\xE2\x82\xAC\xC0\xAF").size(), 3u);  // one character, then two raw bytes
}

TEST(Text, LowerKeepsLength) {
  EXPECT_EQ(lower(U"ÉTÉ <P CLASS> ΣΑΣ \u0130"), U"été <p class> σασ i");
  EXPECT_EQ(lower(fromUtf8("\xC3")), fromUtf8("\xC3"));
}

TEST(Text, Helpers) {
  const struct {
    TextView text, what;
    int from, want;
  } searches[] = {{U"abcabc", U"bc", 2, 2}, {U"abcabc", U"bc", 3, 5}, {U"abc", U"c", 4, 0},
                  {U"abc", U"", 2, 2},      {U"abc", U"", 4, 0},      {U"ABC", U"b", 1, 0}};
  for (const auto& s : searches)
    EXPECT_EQ(tagwright::search(s.text, s.what, s.from).value(), s.want);
  EXPECT_EQ(left(U"abc", 9), U"abc");
  EXPECT_EQ(right(U"abc", 2), U"bc");
  EXPECT_EQ(mid(U"abcde", 2, 3), U"bcd");
  EXPECT_EQ(mid(U"abc", 9), U"");
  EXPECT_EQ(trim(U"  a b \t "), U"a b \t");
  for (auto fails : {+[] { tagwright::search(U"abc", U"a", 0); }, +[] { left(U"abc", -1); },
                     +[] { mid(U"abc", 0); }, +[] { mid(U"abc", 1, -1); }}) {
    EXPECT_THROW(fails(), Failure);
  }
  const Text farHit = Text(40000, U'a') + U"<";
  EXPECT_EQ(tagwright::search(farHit, U"a", 1).value(), 1);
  try {
    tagwright::search(farHit, U"<", 1);
    ADD_FAILURE() << "a hit beyond 32767";
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.description(), "Overflow");
  }
}

TEST(Text, Int16AndNumbers) {
  EXPECT_EQ((Int16(32766) + 1).value(), 32767);
  EXPECT_THROW(Int16(32767) + 1, Failure);
  EXPECT_THROW(Int16(-32768) - 1, Failure);
  EXPECT_THROW(Int16::fromSize(32768), Failure);
  const struct {
    const char* text;
    int value;  // -99: not numeric
  } numbers[] = {{" -3 ", -3}, {"+4", 4},  {"2.5", 2},   {"3.5", 4},   {"-2.5", -2},
                 {".5", 0},    {"7.", 7},  {"", -99},    {"1e3", -99}, {"0x10", -99},
                 {"-", -99},   {".", -99}, {"1 2", -99}, {"\t1", -99}};
  for (const auto& n : numbers) {
    SCOPED_TRACE(n.text);
    ASSERT_EQ(isNumeric(fromUtf8(n.text)), n.value != -99);
    if (n.value != -99) {
      EXPECT_EQ(toInt16(fromUtf8(n.text)).value(), n.value);
    }
  }
  EXPECT_THROW(toInt16(U"32768"), Failure);
  EXPECT_EQ(toInt32(U"2147483647"), 2147483647);
  EXPECT_THROW(toInt32(U"2147483648"), Failure);
}

}  // namespace
}  // namespace tagwright
