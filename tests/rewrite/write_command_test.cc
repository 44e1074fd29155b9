// `tagwright write`: the new content given inline, from a file byte for
// byte, or from standard input, and a content file that cannot be read.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "host.h"
#include "rewrite/write_request.h"
#include "support/temp_folder.h"

namespace tagwright {
namespace {

using std::string_literals::operator""s;

TEST(WriteCommand, NewContent) {
  struct Case {
    const char* name;
    std::vector<std::string> source;  // the options that give the content
    std::string file;                 // the content file's bytes, if one is named
    std::string stdinBytes;
    std::string content;
  };
  const Case cases[] = {
      {"Inline", {"--new-content", " a\tb "}, "", "", " a\tb "},
      {"InlineEmpty", {"--new-content", ""}, "", "", ""},
      {"FileByteForByte", {"--new-content-file"}, "A\r\nB\0C\xff\n"s, "", "A\r\nB\0C\xff\n"s},
      {"EmptyFile", {"--new-content-file"}, "", "", ""},
      {"StandardInput", {"--new-content-file", "-"}, "", "S\r\n\x80", "S\r\n\x80"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    TempFolder folder;
    std::vector<std::string> arguments = {"write", kDocumentName, "--element-name", "#aspcode",
                                          "--no-context"};
    arguments.insert(arguments.end(), c.source.begin(), c.source.end());
    if (arguments.back() == "--new-content-file") {
      folder.write("content", c.file);
      arguments.push_back(folder.host("content"));
    }
    FakePlatform platform;
    platform.files[kDocument] = "<%old%>";
    std::istringstream in(c.stdinBytes);
    std::ostringstream out, err;
    EXPECT_EQ(runHost(arguments, in, out, err, &platform), 0) << err.str();
    EXPECT_EQ(out.str(), "old");
    EXPECT_EQ(err.str(), "matches: 1\n");
    EXPECT_EQ(platform.files[kDocument], "<%" + c.content + "%>\r\n");
  }
}

// A content file that cannot be read must not pass for empty content.
TEST(WriteCommand, UnreadableContentFileTouchesNothing) {
  TempFolder folder;
  for (const std::string& path : {folder.host(""), folder.host("missing")}) {
    SCOPED_TRACE(path);
    FakePlatform platform;
    platform.files[kDocument] = "<%old%>";
    std::istringstream in;
    std::ostringstream out, err;
    EXPECT_EQ(
        runHost({"write", kDocumentName, "--element-name", "#aspcode", "--new-content-file", path},
                in, out, err, &platform),
        2);
    EXPECT_NE(err.str().find("cannot read --new-content-file"), std::string::npos);
    EXPECT_EQ(platform.files.size(), 1u);
    EXPECT_EQ(platform.files[kDocument], "<%old%>");
  }
}

}  // namespace
}  // namespace tagwright
