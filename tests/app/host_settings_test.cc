// The host and the settings: --help names the file and the four settings,
// the host reads the same store as the component, and a setting that the
// component cannot be created from ends the program with status 1.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "host.h"
#include "support/fake_platform.h"

namespace tagwright {
namespace {

struct HostRun {
  int status = 0;
  std::string out;
  std::string err;
};

HostRun runWith(FakePlatform& platform, const std::vector<std::string>& arguments) {
  std::istringstream in;
  std::ostringstream out, err;
  HostRun run;
  run.status = runHost(arguments, in, out, err, &platform);
  run.out = out.str();
  run.err = err.str();
  return run;
}

TEST(HostSettings, HelpNamesTheFileAndTheSettings) {
  FakePlatform platform;
  HostRun run = runWith(platform, {"--help"});
  EXPECT_EQ(run.status, 0);
  for (const char* word :
       {"TAGWRIGHT_SETTINGS", "/etc/tagwright/settings.conf", "BufferLengthCharacters",
        "AllowVirtualDocReadOnly", "AllowVirtualDocWriteOnly", "AllowVirtualFileListOnly"}) {
    SCOPED_TRACE(word);
    EXPECT_NE(run.out.find(word), std::string::npos);
  }
}

TEST(HostSettings, StoreDecidesTheRun) {
  const struct {
    const char* name;
    std::string settings;
    int status;
    std::string out;
    std::string errHolds;
  } cases[] = {
      {"ReadFlagRefusesPhysicalPath", "AllowVirtualDocReadOnly=1\n", 1,
       "ERROR: The use of physical file paths is denied by the administrator.", "matches: -1"},
      {"NumberBeyond32Bits", "BufferLengthCharacters=4294967296\n", 1, "",
       "BufferLengthCharacters"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    FakePlatform platform;
    platform.settings = c.settings;
    platform.files["/doc.htm"] = "<%a%>\r\n";
    HostRun run = runWith(platform, {"read", "C:\\doc.htm", "--element-name", "#aspcode"});
    EXPECT_EQ(run.status, c.status);
    EXPECT_EQ(run.out, c.out);
    EXPECT_NE(run.err.find(c.errHolds), std::string::npos) << run.err;
  }
}

// The program itself, with the settings file named by TAGWRIGHT_SETTINGS.
TEST(HostSettings, ProgramReadsTheFileNamedByTheEnvironment) {
  const std::string folder = ::testing::TempDir();
  const std::string settings = folder + "tagwright_settings_test.conf";
  const std::string document = folder + "tagwright_settings_test.htm";
  std::ofstream(document, std::ios::binary) << "<%a%>\r\n";
  const std::string command = "TAGWRIGHT_SETTINGS='" + settings + "' '" + TAGWRIGHT_BINARY +
                              "' read 'C:" + document +
                              "' --element-name '#aspcode' >/dev/null 2>&1";
  const struct {
    const char* name;
    const char* settings;
    int status;
  } cases[] = {
      {"Allowed", "AllowVirtualDocWriteOnly=1\n", 0},
      {"Refused", "# physical paths only for writing\nAllowVirtualDocReadOnly=1\n", 1},
      {"CannotStart", "BufferLengthCharacters=99999999999\n", 1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    std::ofstream(settings, std::ios::binary) << c.settings;
    int status = std::system(command.c_str());
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), c.status);
  }
  std::remove(settings.c_str());
  std::remove(document.c_str());
}

}  // namespace
}  // namespace tagwright
