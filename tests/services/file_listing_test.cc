// The file listing: its own path logic and failures, parameters used as
// given, the hidden rule, the last cut, on the fake platform and on a real
// folder.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/requests.h"
#include "support/temp_folder.h"

namespace tagwright {
namespace {

using Map = std::function<std::string(const std::string&)>;

struct Listing {
  std::string root;
  std::string mask = "*.txt";
  std::string separator = ",";
  Map map = nullptr;  // the page context's, if any
};

Outcome list(Platform& platform, const Listing& l) {
  Tagwright instance(platform);
  if (l.map) instance.OnStartPage(mappedContext(l.map));
  Outcome o;
  o.text = instance.fileListing(l.root, l.mask, l.separator, &o.matches);
  return o;
}

Map mapsTo(std::string folder) {
  return [folder](const std::string&) { return folder; };
}

TEST(FileListing, Table) {
  const std::string virtualOnly = "ERROR: Virtual file paths can only be used when running in ASP.";
  const std::string denied =
      "ERROR: The use of physical file paths is denied by the administrator.";
  const Map refuses = [](const std::string&) -> std::string {
    throw Failure(Failure::Kind::kOutsideSiteRoot);
  };
  const struct {
    const char* name;
    Listing listing;
    std::string text;
    int matches;
    std::string settings = "";
    bool unreadable = false;
  } cases[] = {
      {"Comma", Listing{"C:\\data"}, "a.txt,b.txt", 2},
      {"DefaultSeparator", Listing{"C:\\data", "*.txt", ""}, "a.txt<BR>\r\nb.txt<BR>\r", 2},
      {"EveryNameButHidden", Listing{"C:\\data", ""}, "a.txt,b.txt,c.htm", 3},
      {"HiddenNeverListedEvenByName", Listing{"C:\\data", ".hidden"}, "", 0},
      {"RootEndingInBackslash", Listing{"C:\\data\\"}, "a.txt,b.txt", 2},
      {"MissingFolder", Listing{"C:\\nope"}, "", 0},
      {"SeparatorNotTrimmed", Listing{"C:\\data", "*.txt", ", "}, "a.txt, b.txt,", 2},
      {"SpecificationNotTrimmed", Listing{"C:\\data", " *.txt"}, "", 0},
      {"RootNotTrimmed", Listing{"C:\\data "}, "e.txt", 1},
      {"MappedWithBackslash", Listing{"x", "*.txt", ",", mapsTo("C:\\data\\")}, "a.txt,b.txt", 2},
      {"EmptyRoot", Listing{""},
       "ERROR: A physical or virtual path for the files to be listed must be provided.", -1},
      {"VirtualWithoutContext", Listing{"/data"}, virtualOnly, -1},
      {"MappedToNothing", Listing{"/x", "*.txt", ",", mapsTo("")},
       "ERROR: The virtual path provided does not map to a physical path on the server.", -1},
      {"HostRefusesPath", Listing{"/../etc", "*.txt", ",", refuses},
       "ERROR: Path is outside the site root.", -1},
      {"UnreadableFolder", Listing{"C:\\data"}, "ERROR: Permission denied.", -1, "", true},
      {"PhysicalRefused", Listing{"C:\\data"}, denied, -1, "AllowVirtualFileListOnly=1"},
      // The refusal looks at FileListRoot, not at the folder it maps to.
      {"VirtualServedWhenPhysicalRefused", Listing{"/x", "*.txt", ",", mapsTo("C:\\data")},
       "a.txt,b.txt", 2, "AllowVirtualFileListOnly=1"},
      // A pattern that names a folder by itself is a physical path too; the
      // failures of the folder come first.
      {"FolderInPattern", Listing{"C:\\data", "sub/*.txt"}, "d.txt", 1},
      {"FolderInPatternRefused", Listing{"/x", "sub/*.txt", ",", mapsTo("C:\\data")}, denied, -1,
       "AllowVirtualFileListOnly=1"},
      {"BackslashInPatternRefused", Listing{"/x", "sub\\*.txt", ",", mapsTo("C:\\data")}, denied,
       -1, "AllowVirtualFileListOnly=1"},
      {"ClimbInPatternRefused", Listing{"/x", "..*", ",", mapsTo("C:\\data")}, denied, -1,
       "AllowVirtualFileListOnly=1"},
      {"MappedToNothingBeforePattern", Listing{"/x", "../*", ",", mapsTo("")},
       "ERROR: The virtual path provided does not map to a physical path on the server.", -1,
       "AllowVirtualFileListOnly=1"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    FakePlatform platform;
    platform.settings = c.settings;
    for (const char* name : {"/data/a.txt", "/data/b.txt", "/data/.hidden", "/data/c.htm",
                             "/data/sub/d.txt", "/data /e.txt"}) {
      platform.files[name] = "x";
    }
    platform.beforeCall = [&](const std::string& call) {
      if (c.unreadable && call == "listMatchingFiles")
        throw Failure(Failure::Kind::kPermissionDenied);
    };
    EXPECT_EQ(list(platform, c.listing), (Outcome{c.text, c.matches}));
  }
}

TEST(FileListing, CountBeyond32767) {
  FakePlatform platform;
  for (int i = 0; i < 32768; ++i) platform.files["/many/" + std::to_string(i)] = "";
  EXPECT_EQ(list(platform, Listing{"C:\\many", "*"}), (Outcome{"ERROR: Overflow.", -1}));
}

// The directory search of the system: plain files only, hidden names passed
// over, in ascending order of their bytes; a missing folder lists nothing.
TEST(FileListing, RealFolder) {
  TempFolder folder;
  for (const char* name :
       {"b.txt", "a.txt", ".hidden", "B.txt", ".x.txt", "sub.txt/c", "empty/.e"}) {
    folder.write(name, "x");
  }
  const std::tuple<std::string, std::string, std::string> cases[] = {
      {"", "*.txt", "B.txt,a.txt,b.txt"},
      {"", "sub.txt", ""},
      {"", ".hidden", ""},
      {"empty", "*.*", ""},
      {"missing", "*.*", ""},
      {"a.txt", "*.*", ""}};
  for (const auto& [sub, mask, text] : cases) {
    SCOPED_TRACE(sub + " " + mask);
    EXPECT_EQ(list(systemPlatform(), Listing{folder.physical(sub), mask}),
              (Outcome{text, text.empty() ? 0 : 3}));
  }
}

TEST(FileListing, RealFolderThatCannotBeRead) {
  TempFolder folder;
  ::chmod(folder.host().c_str(), 0);
  if (::access(folder.host().c_str(), R_OK) == 0) GTEST_SKIP() << "this process reads any folder";
  EXPECT_EQ(list(systemPlatform(), Listing{folder.physical(), "*"}),
            (Outcome{"ERROR: Permission denied.", -1}));
}

}  // namespace
}  // namespace tagwright
