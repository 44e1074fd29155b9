// The file listing: its own path logic and failures, parameters used as
// given, the hidden rule, the last cut, and the directory search of the
// POSIX platform on a real folder.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "platform/host_path.h"
#include "support/fake_platform.h"
#include "support/tagwright_test_access.h"
#include "tagwright/tagwright.h"

namespace tagwright {
namespace {

// A page context whose MapPath the test scripts.
class ScriptedSite : public ScriptingContext, private PageServer {
 public:
  explicit ScriptedSite(std::function<std::string(const std::string&)> map)
      : map_(std::move(map)) {}
  PageServer& Server() override { return *this; }

 private:
  std::string MapPath(const std::string& path) override { return map_(path); }
  std::function<std::string(const std::string&)> map_;
};

// Keeps the patterns that reach the directory search.
class RecordingPlatform : public FakePlatform {
 public:
  std::vector<std::string> patterns;
  std::vector<Text> listMatchingFiles(TextView pattern) override {
    patterns.push_back(toUtf8(pattern));
    return FakePlatform::listMatchingFiles(pattern);
  }
};

struct Listing {
  std::string text;
  int matches = 0;
};

Listing list(Tagwright& instance, const std::string& root, const std::string& spec,
             const std::string& separator) {
  Listing got;
  got.text = instance.fileListing(root, spec, separator, &got.matches);
  return got;
}

void addExampleFolder(FakePlatform& platform) {
  for (const char* name : {"/data/a.txt", "/data/b.txt", "/data/.hidden", "/data/c.htm",
                           "/data/sub/d.txt", "/data /e.txt"}) {
    platform.files[name] = "x";
  }
}

TEST(FileListing, ListsOnFakePlatform) {
  struct Case {
    const char* name;
    std::string root;
    std::string spec;
    std::string separator;
    std::string want;
    int matches;
  };
  const Case cases[] = {
      {"Comma", "C:\\data", "*.txt", ",", "a.txt,b.txt", 2},
      {"DefaultSeparatorLeavesBrAndCr", "C:\\data", "*.txt", "", "a.txt<BR>\r\nb.txt<BR>\r", 2},
      {"EmptySpecificationIsEveryName", "C:\\data", "", ",", "a.txt,b.txt,c.htm", 3},
      {"HiddenNeverListedEvenByName", "C:\\data", ".hidden", ",", "", 0},
      {"NoMatchingFile", "C:\\data", "*.png", ",", "", 0},
      {"MissingFolder", "C:\\nope", "*.*", ",", "", 0},
      {"SeparatorNotTrimmed", "C:\\data", "*.txt", ", ", "a.txt, b.txt,", 2},
      {"SpecificationNotTrimmed", "C:\\data", " *.txt", ",", "", 0},
      {"RootNotTrimmed", "C:\\data ", "*.txt", ",", "e.txt", 1},
      {"FolderInSpecification", "C:\\data", "sub\\*.txt", ",", "d.txt", 1},
      {"ForwardSlashesWithDrive", "C:/data", "*.txt", ",", "a.txt,b.txt", 2},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    FakePlatform platform;
    addExampleFolder(platform);
    Tagwright instance(platform);
    Listing got = list(instance, c.root, c.spec, c.separator);
    EXPECT_EQ(got.text, c.want);
    EXPECT_EQ(got.matches, c.matches);
  }
}

TEST(FileListing, SearchPattern) {
  auto site = [](std::string folder) {
    return std::make_shared<ScriptedSite>([folder](const std::string&) { return folder; });
  };
  struct Case {
    const char* name;
    std::string root;
    std::shared_ptr<ScriptingContext> context;
    std::string pattern;
  };
  const Case cases[] = {
      {"PhysicalGetsBackslash", "C:\\data", nullptr, "C:\\data\\*.txt"},
      {"PhysicalWithBackslash", "C:\\data\\", nullptr, "C:\\data\\*.txt"},
      {"ColonAloneIsPhysical", "C:/data", nullptr, "C:/data\\*.txt"},
      {"VirtualIsMapped", "/images", site("\\srv\\site\\images"), "\\srv\\site\\images\\*.txt"},
      {"MappedWithBackslash", "images", site("\\srv\\images\\"), "\\srv\\images\\*.txt"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    RecordingPlatform platform;
    Tagwright instance(platform);
    if (c.context) instance.OnStartPage(c.context);
    Listing got = list(instance, c.root, "*.txt", ",");
    EXPECT_EQ(got.matches, 0) << got.text;
    EXPECT_EQ(platform.patterns, std::vector<std::string>{c.pattern});
  }
}

TEST(FileListing, Failures) {
  struct Case {
    const char* name;
    std::string root;
    std::function<std::string(const std::string&)> map;  // empty: no page context
    bool allowPhysical;
    std::string want;
  };
  auto mapsTo = [](std::string folder) { return [folder](const std::string&) { return folder; }; };
  const Case cases[] = {
      {"EmptyRoot", "", nullptr, true,
       "ERROR: A physical or virtual path for the files to be listed must be provided."},
      {"VirtualWithoutContext", "/images", nullptr, true,
       "ERROR: Virtual file paths can only be used when running in ASP."},
      {"BlankRootIsVirtual", " ", nullptr, true,
       "ERROR: Virtual file paths can only be used when running in ASP."},
      {"PhysicalRefused", "C:\\data", mapsTo("\\data"), false,
       "ERROR: The use of physical file paths is denied by the administrator."},
      {"MappedToNothing", "/images", mapsTo(""), true,
       "ERROR: The virtual path provided does not map to a physical path on the server."},
      {"HostRefusesPath", "/../etc",
       [](const std::string&) -> std::string { throw Failure(Failure::Kind::kOutsideSiteRoot); },
       true, "ERROR: Path is outside the site root."},
      {"UnreadableFolder", "C:\\locked", nullptr, true, "ERROR: Permission denied."},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    FakePlatform platform;
    platform.files["/locked/a.txt"] = "x";
    platform.unreadableFolders.insert("/locked/");
    Tagwright instance(platform);
    TagwrightTestAccess::setAllowPhysicalFileList(instance, c.allowPhysical);
    if (c.map) instance.OnStartPage(std::make_shared<ScriptedSite>(c.map));
    Listing got = list(instance, c.root, "*.*", ",");
    EXPECT_EQ(got.text, c.want);
    EXPECT_EQ(got.matches, -1);
  }
}

// The refusal looks at FileListRoot, not at the folder it maps to.
TEST(FileListing, VirtualPathServedWhenPhysicalRefused) {
  FakePlatform platform;
  addExampleFolder(platform);
  Tagwright instance(platform);
  TagwrightTestAccess::setAllowPhysicalFileList(instance, false);
  instance.OnStartPage(
      std::make_shared<ScriptedSite>([](const std::string&) { return "C:\\data"; }));
  Listing got = list(instance, "/data", "*.txt", ",");
  EXPECT_EQ(got.text, "a.txt,b.txt");
  EXPECT_EQ(got.matches, 2);
}

TEST(FileListing, CountBeyond32767IsOverflow) {
  FakePlatform platform;
  for (int i = 0; i < 32768; ++i) platform.files["/many/" + std::to_string(i)] = "";
  Tagwright instance(platform);
  Listing got = list(instance, "C:\\many", "*", ",");
  EXPECT_EQ(got.text, "ERROR: Overflow.");
  EXPECT_EQ(got.matches, -1);
}

// A real folder under the system's temporary folder, removed at the end.
class PosixFolder : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string name = (std::filesystem::temp_directory_path() / "tagwright_list_XXXXXX").string();
    ASSERT_NE(::mkdtemp(name.data()), nullptr);
    host_ = name;
  }
  void TearDown() override {
    std::filesystem::permissions(host_, std::filesystem::perms::owner_all);
    std::filesystem::remove_all(host_);
  }
  void touch(const std::string& name) { std::ofstream(host_ / name) << "x"; }
  std::string physical(const std::string& sub = "") const {
    return toUtf8(physicalPathOf((host_ / sub).string()));
  }
  Listing listReal(const std::string& root, const std::string& spec, const std::string& separator) {
    Tagwright instance(systemPlatform());
    return list(instance, root, spec, separator);
  }

  std::filesystem::path host_;
};

TEST_F(PosixFolder, PlainFilesInByteOrder) {
  for (const char* name : {"b.txt", "a.txt", ".hidden", "B.txt", ".x.txt"}) touch(name);
  std::filesystem::create_directory(host_ / "sub.txt");
  struct Case {
    const char* name;
    std::string spec;
    std::string separator;
    std::string want;
    int matches;
  };
  const Case cases[] = {
      {"Comma", "*.txt", ",", "B.txt,a.txt,b.txt", 3},
      {"DefaultSeparator", "*.txt", "", "B.txt<BR>\r\na.txt<BR>\r\nb.txt<BR>\r", 3},
      {"HiddenByExactName", ".hidden", ",", "", 0},
      {"FolderByExactName", "sub.txt", ",", "", 0},
      {"FileByExactName", "a.txt", ",", "a.txt", 1},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Listing got = listReal(physical(), c.spec, c.separator);
    EXPECT_EQ(got.text, c.want);
    EXPECT_EQ(got.matches, c.matches);
  }
}

// Only a folder that exists and cannot be read fails.
TEST_F(PosixFolder, EmptyMissingAndNotAFolderListNothing) {
  touch("file");
  std::filesystem::create_directory(host_ / "empty");
  for (const char* sub : {"empty", "nope", "file"}) {
    SCOPED_TRACE(sub);
    Listing got = listReal(physical(sub), "*.*", ",");
    EXPECT_EQ(got.text, "");
    EXPECT_EQ(got.matches, 0);
  }
}

TEST_F(PosixFolder, UnreadableFolderIsPermissionDenied) {
  touch("a.txt");
  std::filesystem::permissions(host_, std::filesystem::perms::none);
  std::error_code error;
  std::filesystem::directory_iterator probe(host_, error);
  if (!error) GTEST_SKIP() << "this process reads any folder (root)";
  for (const char* spec : {"*.*", "a.txt"}) {
    SCOPED_TRACE(spec);
    Listing got = listReal(physical(), spec, ",");
    EXPECT_EQ(got.text, "ERROR: Permission denied.");
    EXPECT_EQ(got.matches, -1);
  }
}

}  // namespace
}  // namespace tagwright
