// splitFilePath: the folder, base name and extension of paths of every kind,
// by text alone, and the overflow of a dot or backslash beyond 32767.
#include "files/split_file_path.h"

#include <gtest/gtest.h>

namespace tagwright {
namespace {

TEST(SplitFilePath, Table) {
  const std::tuple<const char*, const char*, const char*, const char*> cases[] = {
      {"C:\\web\\a.b.htm", "C:\\web\\", "a.b", "htm"},
      {"page.htm", "", "page", "htm"},
      {"C:\\web\\page", "C:\\web\\", "page", ""},
      {"C:\\web\\page.", "C:\\web\\", "page", ""},
      {"C:\\web.old\\page", "C:\\", "web", "old\\page"},
      {"C:\\web\\.cfg", "C:\\web\\", "C:\\web\\", "cfg"},
      {"C:\\web\\.x.htm", "C:\\web\\", ".x", "htm"},
      {"C:\\web\\", "C:\\web\\", "C:\\web\\", ""},
      {"\\page.htm", "", "page", "htm"},
      {"c:/web/page.htm", "", "c:/web/page", "htm"},
      {"C:\\wéb\\pägé.htm", "C:\\wéb\\", "pägé", "htm"},
  };
  for (const auto& [path, folder, wantBase, wantExtension] : cases) {
    SCOPED_TRACE(path);
    Text base = U"stale", extension = U"stale";
    EXPECT_EQ(toUtf8(splitFilePath(fromUtf8(path), base, extension)), folder);
    EXPECT_EQ(toUtf8(base), wantBase);
    EXPECT_EQ(toUtf8(extension), wantExtension);
  }
  Text base, extension;
  EXPECT_EQ(splitFilePath(U"C:\\a.b" + Text(40000, U'x'), base, extension), U"C:\\");
  EXPECT_THROW(splitFilePath(Text(32767, U'x') + U".htm", base, extension), Failure);
  EXPECT_THROW(splitFilePath(Text(32767, U'x') + U"\\page", base, extension), Failure);
}

}  // namespace
}  // namespace tagwright
