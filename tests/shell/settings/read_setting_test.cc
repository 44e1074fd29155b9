// readSetting on the settings file: how names and texts are cut from the lines,
// which lines count, and which texts read as empty.
#include "shell/settings/read_setting.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "support/fake_platform.h"

namespace tagwright {
namespace {

struct SettingCase {
  const char* name;
  std::optional<std::string> store;
  const char32_t* setting;
  Text want;
};

std::string repeated(const std::string& unit, int times) {
  std::string text;
  for (int i = 0; i < times; ++i) text += unit;
  return text;
}

TEST(ReadSetting, Lines) {
  const SettingCase cases[] = {
      {"NoFile", std::nullopt, U"A", U""},
      {"EmptyFile", "", U"A", U""},
      {"Plain", "A=4096\n", U"A", U"4096"},
      {"LastLineWithoutLineEnd", "B=1\nA=7", U"A", U"7"},
      {"NameIgnoresAsciiCase", "bufferlengthcharacters=300\n", U"BufferLengthCharacters", U"300"},
      {"TextKeepsItsBlanks", "A= 1 \n", U"A", U" 1 "},
      {"TextRunsFromTheFirstEquals", "A=b=c\n", U"A", U"b=c"},
      {"BlankBeforeEqualsBelongsToTheName", "A =1\n", U"A", U""},
      {"BlankBeforeTheNameBelongsToIt", " A=1\n", U"A", U""},
      {"LongerNameIsAnother", "AB=1\n", U"A", U""},
      {"CommentLineIsPassedOver", "#A=1\n", U"#A", U""},
      {"CommentDoesNotHideLaterLine", "#A=1\nA=2\n", U"A", U"2"},
      {"LineWithoutEqualsIsPassedOver", "A\nB=2\n", U"A", U""},
      {"LastLineWins", "A=1\nB=5\na=2\n", U"A", U"2"},
      {"LastLineWinsAlsoWhenEmpty", "A=1\nA=\n", U"A", U""},
      {"CrBeforeLineEndIsDropped", "A=1\r\nB=2\r\n", U"A", U"1"},
      {"CrAtFileEndIsDropped", "A=1\r", U"A", U"1"},
      {"OnlyOneCrIsDropped", "A=1\r\r\n", U"A", U"1\r"},
      {"EmptyText", "A=\n", U"A", U""},
      {"MissingName", "B=2\n", U"A", U""},
      {"TextOf1022IsWhole", "A=" + repeated("x", 1022) + "\r\n", U"A", Text(1022, U'x')},
      {"TextOf1023ReadsEmpty", "A=" + repeated("x", 1023) + "\n", U"A", U""},
      {"LengthCountsCharactersNotBytes", "A=" + repeated("\xC3\xA9", 1022) + "\n", U"A",
       Text(1022, U'\u00E9')},
      {"LongLastLineHidesEarlierOne", "A=1\nA=" + repeated("x", 1500) + "\n", U"A", U""},
  };
  for (const SettingCase& c : cases) {
    SCOPED_TRACE(c.name);
    FakePlatform platform;
    platform.settings = c.store;
    EXPECT_EQ(readSetting(platform, c.setting), c.want);
  }
}

}  // namespace
}  // namespace tagwright
