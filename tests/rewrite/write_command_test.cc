// `tagwright write`: the new content given inline, from a file byte for
// byte, or from standard input, and a content file that cannot be read.
#include <gtest/gtest.h>

#include "support/requests.h"
#include "support/temp_folder.h"

namespace tagwright {
namespace {

using std::string_literals::operator""s;

TEST(WriteCommand, NewContent) {
  TempFolder folder;
  folder.write("content", "A\r\nB\0C\xff\n"s);
  const struct {
    std::vector<std::string> source;
    std::string stdinBytes;
    int status;
    std::string content;  // the document's after the run
  } cases[] = {
      {{"--new-content", " a\tb "}, "", 0, "<% a\tb %>\r\n"},
      {{"--new-content-file", folder.host("content")}, "", 0, "<%A\r\nB\0C\xff\n%>\r\n"s},
      {{"--new-content-file", "-"}, "S\r\n\x80", 0, "<%S\r\n\x80%>\r\n"},
      {{"--new-content-file", folder.host("missing")}, "", 2, "<%old%>"},
      {{"--new-content-file", folder.host()}, "", 2, "<%old%>"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.source.back());
    std::vector<std::string> arguments = {"write", "C:\\doc.htm", "--element-name", "#aspcode"};
    arguments.insert(arguments.end(), c.source.begin(), c.source.end());
    FakePlatform platform;
    platform.files["/doc.htm"] = "<%old%>";
    HostRun run = runTagwright(arguments, &platform, c.stdinBytes);
    EXPECT_EQ(run.status, c.status) << run.err;
    EXPECT_EQ(platform.files["/doc.htm"], c.content);
    EXPECT_EQ(platform.files.size(), c.status == 0 ? 2u : 1u);
    if (c.status == 0) {
      EXPECT_EQ(run.out + run.err, "oldmatches: 1\n");
    } else {
      EXPECT_NE(run.err.find("cannot read --new-content-file"), std::string::npos) << run.err;
    }
  }
}

}  // namespace
}  // namespace tagwright
