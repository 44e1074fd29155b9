// The program on what a file system holds besides plain files and folders:
// devices and FIFOs, names with wildcards, an empty site root, a working
// folder that is gone or reached through a link, and links out of the root.
// Each run is checked against the whole tree before and after it.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <filesystem>
#include <map>

#include "support/program.h"
#include "support/temp_folder.h"

namespace tagwright {
namespace {

namespace fs = std::filesystem;
using Args = std::vector<std::string>;
using Tree = std::map<std::string, std::string>;

void makeSite(const TempFolder& top) {
  top.write("site/index.htm", "<%site%>");
  top.write("site/gone/x", "");
  top.write("outside/secret.htm", "<%secret%>");
  top.write("settings.conf", "FollowLinksOut=1\n");
  top.write("wild/a?*.htm", "<%old%>");
  for (const char* name : {"abc.bak", "alpha.bak"}) top.write(std::string("wild/") + name, name);
  ::unlink(top.host("site/gone/x").c_str());
  const std::pair<const char*, const char*> links[] = {{"../outside/secret.htm", "site/secret.htm"},
                                                       {"../outside", "site/out"},
                                                       {"index.htm", "site/in.htm"},
                                                       {"fifo", "site/tofifo"},
                                                       {"site", "rootlink"}};
  for (const auto& [target, name] : links) ::symlink(target, top.host(name).c_str());
  ::mkfifo(top.host("site/fifo").c_str(), 0644);
  ::mkfifo(top.host("content.fifo").c_str(), 0644);
  // The null device, where this process may make one.
  ::mknod(top.host("site/cdev").c_str(), S_IFCHR | 0666, makedev(1, 3));
}

TEST(FileSystemEdges, Table) {
  const std::string cannotOpen = "ERROR: Cannot open document file:";
  const std::string unidentified = "ERROR: Unidentified Error while validating parameters.";
  const struct {
    const char* name;
    std::string command;  // "$x" stands for the host path of x
    int status;
    std::string out;                 // the start of what the run prints
    std::string workingFolder = "";  // one that ends in "gone" is removed under the run
    std::string environment = "";
    std::map<std::string, std::string> changes = {};
  } cases[] = {
      {"WriteOnDevice", "write $site/cdev --new-content X", 1, cannotOpen},
      {"WriteOnFifo", "write $site/fifo --new-content X", 1, cannotOpen},
      {"ReadThroughLinkToFifo", "read $site/tofifo", 1, cannotOpen},
      {"ContentFromFifo",
       "write $site/index.htm --element-name #aspcode --new-content-file $content.fifo", 2, ""},
      {"WildcardsAreLiteral",
       "write $wild/a?*.htm --element-name #aspcode --new-content new",
       0,
       "old",
       "",
       "",
       {{"wild/a?*.htm", "<%new%>\r\n"}, {"wild/a?*.bak", "<%old%>"}}},
      {"EmptyRootWithEquals", "read C:$site/index.htm --root=", 2, ""},
      {"GoneWorkingFolderList", "list . --root $site", 1, "ERROR: Path not found.", "$site/gone"},
      {"GoneWorkingFolderPhysical", "read C:$site/index.htm --element-name #aspcode", 0, "site",
       "$site/gone"},
      {"WorkingFolderThroughLinkedRoot", "read index.htm --root $rootlink --element-name #aspcode",
       0, "site", "$rootlink"},
      {"LinkOutWrite", "write /secret.htm --root $site --element-name #aspcode --new-content X", 1,
       unidentified},
      {"LinkedFolderOutList", "list /out --root $site", 1, "ERROR: Path is outside the site root."},
      {"LinkOutAllowed", "read /secret.htm --root $site --element-name #aspcode --follow-links-out",
       0, "secret"},
      {"LinkOutAllowedBySetting", "read /secret.htm --root $site --element-name #aspcode", 0,
       "secret", "", "TAGWRIGHT_SETTINGS=$settings.conf"},
      {"LinkInside", "read /in.htm --root $site --element-name #aspcode", 0, "site"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    TempFolder top;
    makeSite(top);
    if (c.command.find("cdev") != std::string::npos &&
        !fs::is_character_file(top.host("site/cdev"))) {
      continue;  // this process may not make a device
    }
    auto hosted = [&](std::string text) {
      std::size_t at = text.find('$');
      if (at == std::string::npos) return text;
      return text.substr(0, at) + top.host(text.substr(at + 1));
    };
    Args arguments = words(c.command);
    for (std::string& argument : arguments) argument = hosted(argument);
    ProgramStart start{.workingFolder = hosted(c.workingFolder),
                       .removeWorkingFolder = c.workingFolder.ends_with("gone")};
    if (!c.environment.empty()) start.environment = {hosted(c.environment)};

    Tree want = top.tree();
    if (start.removeWorkingFolder) want.erase("site/gone");
    for (const auto& [name, bytes] : c.changes) want[name] = bytes;
    HostRun run = runProgram(arguments, start);
    EXPECT_EQ(run.status, c.status) << run.err;
    EXPECT_TRUE(run.out.starts_with(c.out)) << run.out;
    if (c.status == 2) {
      EXPECT_TRUE(run.err.starts_with("tagwright: ")) << run.err;
    }
    EXPECT_EQ(top.tree(), want);
  }
}

}  // namespace
}  // namespace tagwright
