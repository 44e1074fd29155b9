// The text model: lossless UTF-8, length-keeping lower case, the 1-based
// helpers with their invalid-argument and overflow failures, and Int16.
#include "platform/text.h"

#include <gtest/gtest.h>

#include "platform/numeric.h"

namespace tagwright {
namespace {

TEST(Utf8, RoundTripKeepsEveryByte) {
  const std::string cases[] = {
      "plain",
      "caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80",  // two, three and four bytes
      "\xFF\xFE stray",                             // bytes that never start a sequence
      "\xC3",                                       // truncated at the end
      "\xC0\xAF",                                   // overlong "/"
      "\xED\xA0\x80",                               // an encoded surrogate
      "\xF4\x90\x80\x80",                           // above U+10FFFF
      std::string("nul\0inside", 10),
  };
  for (const std::string& bytes : cases) {
    SCOPED_TRACE(bytes);
    EXPECT_EQ(toUtf8(fromUtf8(bytes)), bytes);
  }
}

TEST(Utf8, CountsCodePointsAndInvalidBytesOneEach) {
  struct Case {
    const char* name;
    std::string bytes;
    std::size_t characters;
  };
  const Case cases[] = {
      {"Ascii", "abc", 3},
      {"TwoByte", "\xC3\xA9", 1},
      {"ThreeByte", "\xE2\x82\xAC", 1},
      {"FourByte", "\xF0\x9F\x98\x80", 1},
      {"Overlong", "\xC0\xAF", 2},
      {"Surrogate", "\xED\xA0\x80", 3},
      {"TruncatedThenAscii", "\xE2\x82x", 3},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(fromUtf8(c.bytes).size(), c.characters);
  }
}

TEST(Lower, KeepsLengthAndMapsBeyondAscii) {
  EXPECT_EQ(lower(U"ÉTÉ <P CLASS>"), U"été <p class>");
  EXPECT_EQ(lower(U"ΣΑΣ"), U"σασ");   // simple mapping: no final sigma
  EXPECT_EQ(lower(U"\u0130"), U"i");  // dotted capital I: one character
  Text raw = fromUtf8("\xC3");
  EXPECT_EQ(lower(raw), raw);  // a raw byte lower-cases to itself
  EXPECT_EQ(lowerChar(U'['), U'[');
}

TEST(Search, FindsAtOrAfterStart) {
  struct Case {
    const char* name;
    TextView text;
    TextView what;
    int from;
    int want;
  };
  const Case cases[] = {
      {"First", U"abcabc", U"bc", 1, 2},      {"FromHit", U"abcabc", U"bc", 2, 2},
      {"Later", U"abcabc", U"bc", 3, 5},      {"Missing", U"abc", U"x", 1, 0},
      {"StartBeyondEnd", U"abc", U"c", 4, 0}, {"EmptyFoundAtStart", U"abc", U"", 2, 2},
      {"EmptyBeyondEnd", U"abc", U"", 4, 0},  {"CaseSensitive", U"ABC", U"b", 1, 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(tagwright::search(c.text, c.what, c.from).value(), c.want);
  }
}

TEST(Search, FailsBelowOneAndBeyond32767) {
  EXPECT_THROW(tagwright::search(U"abc", U"a", 0), Failure);
  Text longText(40000, U'a');
  longText += U"<";
  try {
    tagwright::search(longText, U"<", 1);
    FAIL() << "a hit beyond 32767 must overflow";
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.description(), "Overflow");
  }
  EXPECT_EQ(tagwright::search(longText, U"a", 1).value(), 1);  // a near hit in a long text is fine
}

TEST(Cutting, LeftRightMidAndTrim) {
  EXPECT_EQ(left(U"abc", 2), U"ab");
  EXPECT_EQ(left(U"abc", 9), U"abc");
  EXPECT_EQ(right(U"abc", 2), U"bc");
  EXPECT_EQ(mid(U"abcde", 2, 3), U"bcd");
  EXPECT_EQ(mid(U"abcde", 4), U"de");
  EXPECT_EQ(mid(U"abc", 9), U"");
  EXPECT_EQ(mid(U"abc", 2, 99), U"bc");
  EXPECT_EQ(trim(U"  a b \t "), U"a b \t");
  EXPECT_EQ(trim(U"   "), U"");
  EXPECT_THROW(left(U"abc", -1), Failure);
  EXPECT_THROW(mid(U"abc", 0), Failure);
  EXPECT_THROW(mid(U"abc", 1, -1), Failure);
}

TEST(Int16, OverflowsOutsideTheRange) {
  EXPECT_EQ((Int16(32766) + 1).value(), 32767);
  EXPECT_THROW(Int16(32767) + 1, Failure);
  EXPECT_THROW(Int16(-32768) - 1, Failure);
  EXPECT_THROW(Int16(40000), Failure);
  EXPECT_THROW(Int16::fromSize(32768), Failure);
}

TEST(Numeric, TestAndConversions) {
  struct Case {
    const char* text;
    bool numeric;
    int value;
  };
  const Case cases[] = {
      {"12", true, 12},   {" -3 ", true, -3},  {"+4", true, 4},  {"2.5", true, 2},
      {"3.5", true, 4},   {"2.51", true, 3},   {".5", true, 0},  {"-2.5", true, -2},
      {"7.", true, 7},    {"", false, 0},      {"  ", false, 0}, {"1e3", false, 0},
      {"0x10", false, 0}, {"1,000", false, 0}, {"-", false, 0},  {".", false, 0},
      {"1 2", false, 0},  {"\t1", false, 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    Text text = fromUtf8(c.text);
    ASSERT_EQ(isNumeric(text), c.numeric);
    if (c.numeric) {
      EXPECT_EQ(toInt16(text).value(), c.value);
    }
  }
  EXPECT_THROW(toInt16(U"32768"), Failure);
  EXPECT_EQ(toInt16(U"-32768").value(), -32768);
  EXPECT_EQ(toInt32(U"2147483647"), 2147483647);
  EXPECT_THROW(toInt32(U"2147483648"), Failure);
  EXPECT_THROW(toInt32(U"99999999999999999999999"), Failure);
}

}  // namespace
}  // namespace tagwright
