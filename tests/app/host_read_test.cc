// `tagwright read` in-process on real files: output forms, exit statuses and
// the command line's own rules.
#include <gtest/gtest.h>

#include "support/host_run.h"
#include "support/temp_folder.h"

namespace tagwright {
namespace {

const std::string kThreeLines = "<?xml version=\"1.0\"?>\r\n<%a=1%><p>x</p>\r\n<%b%>\r\n";

TEST(HostRead, ThreeLineExample) {
  TempFolder site;
  site.write("page.asp", kThreeLines);
  const std::string root = site.path().string();
  struct Case {
    const char* name;
    std::vector<std::string> arguments;
    std::string out;
  };
  const Case cases[] = {
      {"InnerMarkup",
       {"read", "/page.asp", "--root", root, "--element-name", "#aspcode", "--separator", ";",
        "--json"},
       "{\"result\":\"a=1;b\",\"matchesFound\":2}\n"},
      {"OuterMarkup",
       {"read", "/page.asp", "--root", root, "--element-name", "#aspcode", "--content-type",
        "outerMarkup", "--separator=;", "--json"},
       "{\"result\":\"<%a=1%>;<%b%>\",\"matchesFound\":2}\n"},
      {"ProcessingInstruction",
       {"read", "/page.asp", "--root", root, "--element-name", "#pi", "--json"},
       "{\"result\":\"xml version=\\\"1.0\\\"\",\"matchesFound\":1}\n"},
      {"StartInstanceTwo",
       {"read", "/page.asp", "--root", root, "--element-name", "#aspcode", "--start-instance", "2",
        "--json"},
       "{\"result\":\"b\",\"matchesFound\":1}\n"},
      {"NulSeparatorInJson",
       {"read", "/page.asp", "--root", root, "--element-name", "#aspcode", "--json"},
       "{\"result\":\"a=1\\u0000b\",\"matchesFound\":2}\n"},
      {"EmptySeparatorIsNul",
       {"read", "/page.asp", "--root", root, "--element-name", "#aspcode", "--separator", "",
        "--json"},
       "{\"result\":\"a=1\\u0000b\",\"matchesFound\":2}\n"},
      {"EmptyValueAfterEquals",
       {"read", "/page.asp", "--root", root, "--element-name", "#aspcode", "--separator=",
        "--json"},
       "{\"result\":\"a=1\\u0000b\",\"matchesFound\":2}\n"},
      {"SeparatorBeginningWithDash",
       {"read", "/page.asp", "--root", root, "--element-name", "#aspcode", "--separator=--"},
       "a=1--b-"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    HostRun run = runTagwright(c.arguments);
    EXPECT_EQ(run.out, c.out);
    EXPECT_EQ(run.status, 0) << run.err;
  }
  HostRun bare = runTagwright({"read", site.file("page.asp"), "--element-name", "#aspcode"});
  EXPECT_EQ(bare.out, std::string("a=1\0b", 5));
  EXPECT_EQ(bare.err, "matches: 2\n");
}

TEST(HostRead, FailuresAndStatuses) {
  TempFolder site;
  site.write("page.asp", "<%a%>");
  const std::string root = site.path().string();
  struct Case {
    const char* name;
    std::vector<std::string> arguments;
    int status;
    std::string out;
  };
  const Case cases[] = {
      {"NoContext",
       {"read", "page.asp", "--no-context", "--json"},
       1,
       "{\"result\":\"ERROR: Virtual file paths can only be used when running in "
       "ASP.\",\"matchesFound\":-1}\n"},
      {"ClimbAboveRootRefused",
       {"read", "/../page.asp", "--root", root + "/sub", "--json"},
       1,
       "{\"result\":\"ERROR: Unidentified Error while validating "
       "parameters.\",\"matchesFound\":-1}\n"},
      {"NegativeStartReachesTheComponent",
       {"read", "/page.asp", "--root", root, "--start-instance=-3", "--json"},
       1,
       "{\"result\":\"ERROR: The start element instance number must be greater than "
       "zero.\",\"matchesFound\":-1}\n"},
      {"NumberOutOfRange", {"read", "/page.asp", "--start-instance", "32768"}, 2, ""},
      {"NotANumber", {"read", "/page.asp", "--count-instances", "two"}, 2, ""},
      {"UnknownOption", {"read", "/page.asp", "--elementname", "p"}, 2, ""},
      {"NoCommand", {}, 2, ""},
      {"MissingDocument", {"read"}, 2, ""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    HostRun run = runTagwright(c.arguments);
    EXPECT_EQ(run.status, c.status) << run.err;
    EXPECT_EQ(run.out, c.out);
    if (c.status == 2) {
      EXPECT_NE(run.err.find("tagwright:"), std::string::npos);
    }
  }
}

TEST(HostRead, JsonReplacesBytesItCannotCarry) {
  TempFolder site;
  site.write("page.asp", "<%\xFF\xC3\xA9%>");
  HostRun json =
      runTagwright({"read", site.file("page.asp"), "--element-name", "#aspcode", "--json"});
  EXPECT_EQ(json.out, "{\"result\":\"\xEF\xBF\xBD\xC3\xA9\",\"matchesFound\":1}\n");
  HostRun bare = runTagwright({"read", site.file("page.asp"), "--element-name", "#aspcode"});
  EXPECT_EQ(bare.out, "\xFF\xC3\xA9");
}

TEST(HostRead, HelpNamesEveryOptionAndTheSettings) {
  HostRun help = runTagwright({"--help"});
  EXPECT_EQ(help.status, 0);
  for (const char* word :
       {"read", "write", "meta", "list", "TAGWRIGHT_SETTINGS", "/etc/tagwright/settings.conf",
        "BufferLengthCharacters", "AllowVirtualDocReadOnly", "AllowVirtualDocWriteOnly",
        "AllowVirtualFileListOnly"}) {
    EXPECT_NE(help.out.find(word), std::string::npos) << word;
  }
  HostRun readHelp = runTagwright({"read", "--help"});
  EXPECT_EQ(readHelp.status, 0);
  for (const char* option :
       {"--element-name", "--attribute-name", "--attribute-value", "--start-instance",
        "--count-instances", "--content-type", "--span-function", "--string-function",
        "--separator", "--root", "--no-context", "--json"}) {
    EXPECT_NE(readHelp.out.find(option), std::string::npos) << option;
  }
}

}  // namespace
}  // namespace tagwright
