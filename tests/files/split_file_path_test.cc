// splitFilePath: the folder, base name and extension of every kind of path,
// and the overflow of a dot or backslash beyond position 32767.
#include "files/split_file_path.h"

#include <gtest/gtest.h>

#include <string>

namespace tagwright {
namespace {

struct SplitCase {
  const char* name;
  std::u32string path;
  std::u32string folderPart;
  std::u32string baseName;
  std::u32string extensionPart;
};

TEST(SplitFilePath, Table) {
  const SplitCase cases[] = {
      {"FolderNameExtension", U"C:\\web\\page.htm", U"C:\\web\\", U"page", U"htm"},
      {"SeveralDots", U"C:\\web\\a.b.c", U"C:\\web\\", U"a.b", U"c"},
      {"NoFolder", U"page.htm", U"", U"page", U"htm"},
      {"NoExtension", U"C:\\web\\page", U"C:\\web\\", U"page", U""},
      {"Neither", U"page", U"", U"page", U""},
      {"DotAtTheEnd", U"C:\\web\\page.", U"C:\\web\\", U"page", U""},
      {"DotInFolderAndName", U"C:\\web.old\\page.htm", U"C:\\web.old\\", U"page", U"htm"},
      {"DotInFolderOnly", U"C:\\web.old\\page", U"C:\\", U"web", U"old\\page"},
      {"DotNameInFolder", U"C:\\web\\.cfg", U"C:\\web\\", U"C:\\web\\", U"cfg"},
      {"DotNameNoFolder", U".cfg", U"", U".cfg", U"cfg"},
      {"BackslashAtTheEnd", U"C:\\web\\", U"C:\\web\\", U"C:\\web\\", U""},
      {"BackslashFirst", U"\\page.htm", U"", U"page", U"htm"},
      {"DriveRoot", U"C:\\page.htm", U"C:\\", U"page", U"htm"},
      {"NetworkPath", U"\\\\host\\share\\page.htm", U"\\\\host\\share\\", U"page", U"htm"},
      {"DriveWithoutBackslash", U"C:page.htm", U"", U"C:page", U"htm"},
      {"ForwardSlashes", U"c:/web/page.htm", U"", U"c:/web/page", U"htm"},
      {"Empty", U"", U"", U"", U""},
      {"HiddenWithExtension", U"C:\\web\\.x.htm", U"C:\\web\\", U".x", U"htm"},
      {"NotAscii", U"C:\\wéb\\pägé.htm", U"C:\\wéb\\", U"pägé", U"htm"},
  };
  for (const SplitCase& c : cases) {
    SCOPED_TRACE(c.name);
    Text baseName = U"stale", extensionPart = U"stale";
    Text folderPart = splitFilePath(c.path, baseName, extensionPart);
    EXPECT_EQ(toUtf8(folderPart), toUtf8(c.folderPart));
    EXPECT_EQ(toUtf8(baseName), toUtf8(c.baseName));
    EXPECT_EQ(toUtf8(extensionPart), toUtf8(c.extensionPart));
  }
}

TEST(SplitFilePath, PositionsBeyond32767) {
  Text baseName, extensionPart;
  // Long, but the dot and the backslash lie early: lengths are not positions.
  Text early = U"C:\\a.b" + Text(40000, U'x');
  EXPECT_EQ(splitFilePath(early, baseName, extensionPart), U"C:\\");
  EXPECT_EQ(baseName, U"a");
  EXPECT_EQ(extensionPart.size(), 40001u);

  Text lateDot = Text(32767, U'x') + U".htm";
  try {
    splitFilePath(lateDot, baseName, extensionPart);
    ADD_FAILURE() << "a dot at position 32768 went through";
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.kind(), Failure::Kind::kOverflow);
  }
  Text lateSlash = Text(32767, U'x') + U"\\page";
  EXPECT_THROW(splitFilePath(lateSlash, baseName, extensionPart), Failure);
}

}  // namespace
}  // namespace tagwright
