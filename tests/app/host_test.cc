// The `tagwright` host in-process: `read` on real files with its output
// forms and exit statuses, usage errors, --help, and the settings store.
#include <gtest/gtest.h>

#include <cstdlib>

#include "support/requests.h"
#include "support/temp_folder.h"

namespace tagwright {
namespace {

TEST(Host, Read) {
  TempFolder site;
  site.write("page.asp", "<?xml version=\"1.0\"?>\r\n<%a=1%><p>x</p>\r\n<%b%>\r\n");
  site.write("bytes.asp", "<%\xFF\xC3\xA9%>");
  const struct {
    std::vector<std::string> options;
    HostRun want;
    std::string document = "/page.asp";
    std::string rootFolder = "";
    std::string element = "#aspcode";
  } cases[] = {
      {{"--separator", ";", "--json"}, {0, "{\"result\":\"a=1;b\",\"matchesFound\":2}\n", ""}},
      {{"--content-type", "outerMarkup", "--separator=;", "--json"},
       {0, "{\"result\":\"<%a=1%>;<%b%>\",\"matchesFound\":2}\n", ""}},
      {{"--json"},
       {0, "{\"result\":\"xml version=\\\"1.0\\\"\",\"matchesFound\":1}\n", ""},
       "/page.asp",
       "",
       "#pi"},
      {{"--start-instance", "2", "--json"}, {0, "{\"result\":\"b\",\"matchesFound\":1}\n", ""}},
      {{"--json"}, {0, "{\"result\":\"a=1\\u0000b\",\"matchesFound\":2}\n", ""}},
      {{"--separator="}, {0, std::string("a=1\0b", 5), "matches: 2\n"}},
      {{"--separator=--"}, {0, "a=1--b-", "matches: 2\n"}},
      {{"--json"},
       {1,
        "{\"result\":\"ERROR: Unidentified Error while validating parameters.\","
        "\"matchesFound\":-1}\n",
        ""},
       "/../page.asp",
       "sub"},
      {{"--json"},
       {0, "{\"result\":\"\xEF\xBF\xBD\xC3\xA9\",\"matchesFound\":1}\n", ""},
       "/bytes.asp"},
      {{}, {0, "\xFF\xC3\xA9", "matches: 1\n"}, "/bytes.asp"},
      {{"--no-context", "--json"},
       {1,
        "{\"result\":\"ERROR: Virtual file paths can only be used when running in ASP.\","
        "\"matchesFound\":-1}\n",
        ""}},
  };
  for (const auto& c : cases) {
    std::vector<std::string> arguments = {
        "read", c.document, "--root", site.host(c.rootFolder), "--element-name", c.element};
    arguments.insert(arguments.end(), c.options.begin(), c.options.end());
    SCOPED_TRACE(testing::PrintToString(c.options));
    HostRun run = runTagwright(arguments);
    EXPECT_EQ(std::tie(run.status, run.out, run.err),
              std::tie(c.want.status, c.want.out, c.want.err));
  }
}

TEST(Host, UsageErrorsAndHelp) {
  for (const std::vector<std::string>& arguments :
       std::vector<std::vector<std::string>>{{},
                                             {"read"},
                                             {"read", "/a.htm", "--start-instance", "32768"},
                                             {"read", "/a.htm", "--count-instances", "two"},
                                             {"read", "/a.htm", "--elementname", "p"}}) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    HostRun run = runTagwright(arguments);
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.out, "");
    EXPECT_NE(run.err.find("tagwright:"), std::string::npos);
  }
  HostRun help = runTagwright({"--help"});
  EXPECT_EQ(help.status, 0);
  for (const char* word :
       {"read", "write", "meta", "list", "TAGWRIGHT_SETTINGS", "/etc/tagwright/settings.conf",
        "BufferLengthCharacters", "AllowVirtualDocReadOnly", "AllowVirtualDocWriteOnly",
        "AllowVirtualFileListOnly"}) {
    EXPECT_NE(help.out.find(word), std::string::npos) << word;
  }
}

// The host reads the settings file that TAGWRIGHT_SETTINGS names, as the
// component does; one it cannot create the component from ends the run.
TEST(Host, SettingsFile) {
  TempFolder folder;
  folder.write("page.htm", "<%a%>");
  const std::string page = "C:" + folder.host("page.htm");
  const struct {
    std::string settings;
    HostRun want;
  } cases[] = {
      {"AllowVirtualDocWriteOnly=1\n", {0, "a", "matches: 1\n"}},
      {"AllowVirtualDocReadOnly=1\n",
       {1, "ERROR: The use of physical file paths is denied by the administrator.",
        "matches: -1\n"}},
      {"BufferLengthCharacters=4294967296\n", {1, "", "BufferLengthCharacters"}},
  };
  ::setenv("TAGWRIGHT_SETTINGS", folder.host("settings.conf").c_str(), 1);
  for (const auto& c : cases) {
    SCOPED_TRACE(c.settings);
    folder.write("settings.conf", c.settings);
    HostRun run = runTagwright({"read", page, "--element-name", "#aspcode"});
    EXPECT_EQ(std::tie(run.status, run.out), std::tie(c.want.status, c.want.out));
    EXPECT_NE(run.err.find(c.want.err), std::string::npos) << run.err;
  }
  ::unsetenv("TAGWRIGHT_SETTINGS");
}

}  // namespace
}  // namespace tagwright
