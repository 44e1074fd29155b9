// The file routines of the rewrite: splitFilePath by text alone, and
// deleteFile and renameFile on a real folder with the wildcard and hidden
// name rules.
#include <gtest/gtest.h>

#include "files/delete_file.h"
#include "files/rename_file.h"
#include "files/split_file_path.h"
#include "platform/platform.h"
#include "support/temp_folder.h"

namespace tagwright {
namespace {

using Names = std::set<std::string>;

TEST(SplitFilePath, Table) {
  const struct {
    const char* path;
    const char* folder;
    const char* base;
    const char* extension;
  } cases[] = {
      {"C:\\web\\page.htm", "C:\\web\\", "page", "htm"},
      {"C:\\web\\a.b.c", "C:\\web\\", "a.b", "c"},
      {"page.htm", "", "page", "htm"},
      {"C:\\web\\page", "C:\\web\\", "page", ""},
      {"C:\\web\\page.", "C:\\web\\", "page", ""},
      {"C:\\web.old\\page", "C:\\", "web", "old\\page"},
      {"C:\\web\\.cfg", "C:\\web\\", "C:\\web\\", "cfg"},
      {"C:\\web\\.x.htm", "C:\\web\\", ".x", "htm"},
      {".cfg", "", ".cfg", "cfg"},
      {"C:\\web\\", "C:\\web\\", "C:\\web\\", ""},
      {"\\page.htm", "", "page", "htm"},
      {"C:page.htm", "", "C:page", "htm"},
      {"c:/web/page.htm", "", "c:/web/page", "htm"},
      {"C:\\wéb\\pägé.htm", "C:\\wéb\\", "pägé", "htm"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.path);
    Text base = U"stale", extension = U"stale";
    EXPECT_EQ(toUtf8(splitFilePath(fromUtf8(c.path), base, extension)), c.folder);
    EXPECT_EQ(toUtf8(base), c.base);
    EXPECT_EQ(toUtf8(extension), c.extension);
  }
  // Lengths are not positions: only a dot or "\" beyond 32767 overflows.
  Text base, extension;
  EXPECT_EQ(splitFilePath(U"C:\\a.b" + Text(40000, U'x'), base, extension), U"C:\\");
  EXPECT_THROW(splitFilePath(Text(32767, U'x') + U".htm", base, extension), Failure);
  EXPECT_THROW(splitFilePath(Text(32767, U'x') + U"\\page", base, extension), Failure);
}

// A row deletes by `from` when `to` is empty, else renames `from` to `to`.
TEST(FileOperations, DeleteAndRenameOnARealFolder) {
  const struct {
    const char* name;
    Names files;
    const char* from;
    const char* to;
    bool want;
    Names left;
  } cases[] = {
      {"DeleteByPattern",
       {"~1117a.tmp", "~11170.tmp", "~1118.tmp", ".~1117.tmp"},
       "~1117*.tmp",
       "",
       true,
       {"~1118.tmp", ".~1117.tmp"}},
      {"DeleteHiddenByExactName", {".x.bak", "x.bak"}, ".x.bak", "", true, {"x.bak"}},
      {"DeleteNothingToDelete", {"a.htm"}, "*.bak", "", true, {"a.htm"}},
      {"DeleteNeverTakesAFolder", {"sub.bak/a"}, "*.bak", "", true, {"sub.bak"}},
      {"RenameHidden", {".a"}, ".a", ".b", true, {".b"}},
      {"RenameNeverReplaces", {"a.htm", "a.bak"}, "a.htm", "a.bak", false, {"a.bak", "a.htm"}},
      {"RenameMissingSource", {"b.htm"}, "a.htm", "a.bak", false, {"b.htm"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    TempFolder folder;
    for (const std::string& file : c.files) folder.write(file, file);
    const Text from = fromUtf8(folder.physical(c.from)), to = fromUtf8(folder.physical(c.to));
    EXPECT_EQ(*c.to ? renameFile(systemPlatform(), from, to) : deleteFile(systemPlatform(), from),
              c.want);
    EXPECT_EQ(folder.names(), c.left);
    if (c.want && *c.to) {
      EXPECT_EQ(folder.read(c.to), c.from);
    }
    for (const std::string& file : c.left) {
      if (c.files.contains(file)) {
        EXPECT_EQ(folder.read(file), file);
      }
    }
  }
}

}  // namespace
}  // namespace tagwright
