// deleteFile and renameFile on the real file system, with the wildcard and
// hidden-file rules, and by fault injection where a platform call fails.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>
#include <vector>

#include "files/delete_file.h"
#include "files/rename_file.h"
#include "support/fake_platform.h"
#include "support/temp_folder.h"

namespace tagwright {
namespace {

using Names = std::vector<std::string>;

struct DeleteCase {
  const char* name;
  Names files;
  const char* pattern;
  Names left;
};

TEST(DeleteFile, RealFolder) {
  const DeleteCase cases[] = {
      {"MissingNameIsNoFailure", {"a.htm"}, "b.htm", {"a.htm"}},
      {"ExactName", {"a.htm", "a.bak"}, "a.bak", {"a.htm"}},
      {"ThreeFilesInOneCall",
       {"~1117a.tmp", "~1117b.tmp", "~11170.tmp", "~1118.tmp"},
       "~1117*.tmp",
       {"~1118.tmp"}},
      {"WildcardPassesOverHidden", {".a.tmp", "b.tmp"}, "*.tmp", {".a.tmp"}},
      {"ExactNameFindsHidden", {".x.bak", "x.bak"}, ".x.bak", {"x.bak"}},
  };
  for (const DeleteCase& c : cases) {
    SCOPED_TRACE(c.name);
    TempFolder folder;
    for (const std::string& file : c.files) folder.write(file, "x");
    EXPECT_TRUE(deleteFile(systemPlatform(), fromUtf8(folder.physical(c.pattern))));
    EXPECT_EQ(folder.names(), c.left);
  }
}

TEST(DeleteFile, FolderIsNeverMatched) {
  TempFolder folder;
  ::mkdir(folder.host("page.bak").c_str(), 0755);
  EXPECT_TRUE(deleteFile(systemPlatform(), fromUtf8(folder.physical("page.bak"))));
  EXPECT_TRUE(deleteFile(systemPlatform(), fromUtf8(folder.physical("*.bak"))));
  EXPECT_EQ(folder.names(), Names{"page.bak"});
}

// A file that is open or locked cannot be removed on some systems; the fake
// refuses the n-th delete to stand for it.
TEST(DeleteFile, FailingDelete) {
  struct Case {
    const char* name;
    const char* failing;
    int occurrence;
    Names left;
  };
  const Case cases[] = {
      {"FirstFileRefused", "deleteFile", 1, {"/w/a.tmp", "/w/b.tmp", "/w/c.tmp"}},
      {"ThirdFileRefusedAfterTwoWent", "deleteFile", 3, {"/w/c.tmp"}},
      {"SearchFails", "firstMatchingFile", 1, {"/w/a.tmp", "/w/b.tmp", "/w/c.tmp"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    FakePlatform platform;
    for (const char* path : {"/w/a.tmp", "/w/b.tmp", "/w/c.tmp"}) platform.files[path] = "x";
    platform.failNamedCall(c.failing, Failure::Kind::kPermissionDenied, c.occurrence);
    EXPECT_FALSE(deleteFile(platform, U"C:\\w\\*.tmp"));
    Names left;
    for (const auto& [path, bytes] : platform.files) left.push_back(path);
    EXPECT_EQ(left, c.left);
  }
}

TEST(RenameFile, RealFolder) {
  struct Case {
    const char* name;
    Names files;
    const char* from;
    const char* to;
    bool want;
    Names left;
  };
  const Case cases[] = {
      {"Renames", {"a.htm"}, "a.htm", "a.bak", true, {"a.bak"}},
      {"MissingSource", {"b.htm"}, "a.htm", "a.bak", false, {"b.htm"}},
      {"TargetExists", {"a.htm", "a.bak"}, "a.htm", "a.bak", false, {"a.bak", "a.htm"}},
      {"HiddenNames", {".a"}, ".a", ".b", true, {".b"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    TempFolder folder;
    for (const std::string& file : c.files) folder.write(file, file);
    EXPECT_EQ(renameFile(systemPlatform(), fromUtf8(folder.physical(c.from)),
                         fromUtf8(folder.physical(c.to))),
              c.want);
    EXPECT_EQ(folder.names(), c.left);
    // What was not renamed keeps its bytes; what was keeps them under the new name.
    if (c.want) {
      EXPECT_EQ(folder.read(c.to), std::string(c.from));
    } else if (folder.read("a.bak")) {
      EXPECT_EQ(*folder.read("a.bak"), "a.bak");
    }
  }
}

}  // namespace
}  // namespace tagwright
