// The file listing: its own path logic and failures, parameters used as
// given, the hidden rule, the last cut, on the fake platform, through
// `tagwright list`, and on a real folder.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/requests.h"
#include "support/temp_folder.h"

namespace tagwright {
namespace {

struct Listing {
  std::string root;
  std::string spec = "*.txt";
  std::string separator = ",";
  std::function<std::string(const std::string&)> map = nullptr;  // the page context's, if any
};

Outcome list(Platform& platform, const Listing& l) {
  Tagwright instance(platform);
  if (l.map) instance.OnStartPage(mappedContext(l.map));
  Outcome o;
  o.text = instance.fileListing(l.root, l.spec, l.separator, &o.matches);
  return o;
}

std::function<std::string(const std::string&)> mapsTo(std::string folder) {
  return [folder](const std::string&) { return folder; };
}

TEST(FileListing, Table) {
  const std::string virtualOnly = "ERROR: Virtual file paths can only be used when running in ASP.";
  const struct {
    const char* name;
    Listing listing;
    std::string text;
    int matches;
  } cases[] = {
      {"Comma", {.root = "C:\\data"}, "a.txt,b.txt", 2},
      {"DefaultSeparatorLeavesBrAndCr",
       {.root = "C:\\data", .separator = ""},
       "a.txt<BR>\r\nb.txt<BR>\r",
       2},
      {"EveryNameButHiddenAndFolders", {.root = "C:\\data", .spec = ""}, "a.txt,b.txt,c.htm", 3},
      {"HiddenNeverListedEvenByName", {.root = "C:\\data", .spec = ".hidden"}, "", 0},
      {"RootEndingInBackslash", {.root = "C:\\data\\"}, "a.txt,b.txt", 2},
      {"MissingFolder", {.root = "C:\\nope"}, "", 0},
      {"EmptyFolder", {.root = "C:\\data\\empty"}, "", 0},
      {"SeparatorNotTrimmed", {.root = "C:\\data", .separator = ", "}, "a.txt, b.txt,", 2},
      {"SpecificationNotTrimmed", {.root = "C:\\data", .spec = " *.txt"}, "", 0},
      {"RootNotTrimmed", {.root = "C:\\data "}, "e.txt", 1},
      {"FolderInSpecification", {.root = "C:\\data", .spec = "sub\\*.txt"}, "d.txt", 1},
      {"VirtualIsMapped", {.root = "/x", .map = mapsTo("C:\\data")}, "a.txt,b.txt", 2},
      {"MappedWithBackslash", {.root = "x", .map = mapsTo("C:\\data\\")}, "a.txt,b.txt", 2},
      {"EmptyRoot",
       {.root = ""},
       "ERROR: A physical or virtual path for the files to be listed must be provided.",
       -1},
      {"VirtualWithoutContext", {.root = "/data"}, virtualOnly, -1},
      {"BlankRootIsVirtual", {.root = " "}, virtualOnly, -1},
      {"MappedToNothing",
       {.root = "/x", .map = mapsTo("")},
       "ERROR: The virtual path provided does not map to a physical path on the server.",
       -1},
      {"HostRefusesPath",
       {.root = "/../etc",
        .map = [](const std::string&) -> std::string {
          throw Failure(Failure::Kind::kOutsideSiteRoot);
        }},
       "ERROR: Path is outside the site root.",
       -1},
      {"UnreadableFolder", {.root = "C:\\locked"}, "ERROR: Permission denied.", -1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    FakePlatform platform;
    for (const char* name :
         {"/data/a.txt", "/data/b.txt", "/data/.hidden", "/data/c.htm", "/data/sub/d.txt",
          "/data /e.txt", "/locked/a.txt", "/data/empty/.x"}) {
      platform.files[name] = "x";
    }
    platform.unreadableFolders.insert("/locked/");
    EXPECT_EQ(list(platform, c.listing), (Outcome{c.text, c.matches}));
  }
}

// The refusal looks at FileListRoot, not at the folder it maps to.
TEST(FileListing, PhysicalPathsRefusedByTheSettings) {
  FakePlatform platform;
  platform.settings = "AllowVirtualFileListOnly=1\n";
  platform.files["/data/a.txt"] = "x";
  EXPECT_EQ(list(platform, {.root = "C:\\data"}),
            (Outcome{"ERROR: The use of physical file paths is denied by the administrator.", -1}));
  EXPECT_EQ(list(platform, {.root = "/data", .map = mapsTo("C:\\data")}), (Outcome{"a.txt", 1}));
}

TEST(FileListing, CountBeyond32767IsOverflow) {
  FakePlatform platform;
  for (int i = 0; i < 32768; ++i) platform.files["/many/" + std::to_string(i)] = "";
  EXPECT_EQ(list(platform, {.root = "C:\\many", .spec = "*"}), (Outcome{"ERROR: Overflow.", -1}));
}

TEST(FileListing, ListCommand) {
  FakePlatform platform;
  platform.files = {{"/data/a.txt", "x"}, {"/data/b.txt", "x"}, {"/data/.hidden", "x"}};
  const struct {
    std::vector<std::string> arguments;
    HostRun want;
  } cases[] = {
      {{"list", "C:\\data", "--pattern", "*.txt", "--separator", ",", "--json"},
       {0, "{\"result\":\"a.txt,b.txt\",\"matchesFound\":2}\n", ""}},
      {{"list", "/data", "--root", "/"}, {0, "a.txt<BR>\r\nb.txt<BR>\r", "matches: 2\n"}},
      {{"list", "/data", "--no-context"},
       {1, "ERROR: Virtual file paths can only be used when running in ASP.", "matches: -1\n"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.arguments[1]);
    HostRun run = runTagwright(c.arguments, &platform);
    EXPECT_EQ(std::tie(run.status, run.out, run.err),
              std::tie(c.want.status, c.want.out, c.want.err));
  }
}

// The directory search of the system: plain files only, hidden names passed
// over, in ascending order of their bytes; a missing folder lists nothing.
TEST(FileListing, RealFolder) {
  TempFolder folder;
  for (const char* name :
       {"b.txt", "a.txt", ".hidden", "B.txt", ".x.txt", "sub.txt/c", "empty/.e"}) {
    folder.write(name, "x");
  }
  const struct {
    std::string root;
    std::string spec;
    Outcome want;
  } cases[] = {
      {folder.physical(), "*.txt", {"B.txt,a.txt,b.txt", 3}},
      {folder.physical(), "sub.txt", {"", 0}},
      {folder.physical(), ".hidden", {"", 0}},
      {folder.physical("empty"), "*.*", {"", 0}},
      {folder.physical("missing"), "*.*", {"", 0}},
      {folder.physical("a.txt"), "*.*", {"", 0}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.root + " " + c.spec);
    EXPECT_EQ(list(systemPlatform(), {.root = c.root, .spec = c.spec}), c.want);
  }
  ::chmod(folder.host().c_str(), 0);
  if (::access(folder.host().c_str(), R_OK) == 0) GTEST_SKIP() << "this process reads any folder";
  EXPECT_EQ(list(systemPlatform(), {.root = folder.physical(), .spec = "a.txt"}),
            (Outcome{"ERROR: Permission denied.", -1}));
}

}  // namespace
}  // namespace tagwright
