// Rewrites on the real file system: permission bits, documents behind
// symbolic links, hidden and ".bak" documents, stale temporary files, and a
// rewriting process killed at random moments.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <random>
#include <string>
#include <thread>

#include "platform/platform.h"
#include "rewrite/rewrite_names.h"
#include "support/temp_folder.h"
#include "tagwright/tagwright.h"

namespace tagwright {
namespace {

// Rewrites the "#aspcode" instances of the document `name` in `folder`.
int rewrite(const TempFolder& folder, const std::string& name, const std::string& newContent,
            std::string* errorResult = nullptr) {
  Tagwright instance(systemPlatform());
  return instance.writeXPointer(newContent, folder.physical(name), "#aspcode", "*", "*", 1, 0,
                                "innermarkup", "", "", errorResult);
}

mode_t modeOf(const std::string& path) {
  struct stat st {};
  ::lstat(path.c_str(), &st);
  return st.st_mode;
}

using Names = std::vector<std::string>;

TEST(RewritePosix, PermissionBitsKept) {
  for (mode_t mode : {0600u, 0640u, 0644u, 0755u, 0444u}) {
    SCOPED_TRACE(std::to_string(mode));
    TempFolder folder;
    folder.write("page.htm", "<%a%>");
    ::chmod(folder.host("page.htm").c_str(), mode);
    std::string errorResult;
    ASSERT_EQ(rewrite(folder, "page.htm", "b", &errorResult), 1) << errorResult;
    EXPECT_EQ(folder.read("page.htm"), "<%b%>\r\n");
    EXPECT_EQ(modeOf(folder.host("page.htm")) & 07777, mode);
    EXPECT_EQ(modeOf(folder.host("page.bak")) & 07777, mode);
    EXPECT_EQ(folder.names(), (Names{"page.bak", "page.htm"}));
  }
}

TEST(RewritePosix, DocumentBehindSymbolicLink) {
  TempFolder folder;
  ::mkdir(folder.host("real").c_str(), 0755);
  ::mkdir(folder.host("site").c_str(), 0755);
  folder.write("real/page.htm", "<%a%>");
  ASSERT_EQ(::symlink("../real/page.htm", folder.host("site/page.htm").c_str()), 0);
  std::string errorResult;
  ASSERT_EQ(rewrite(folder, "site/page.htm", "b", &errorResult), 1) << errorResult;
  EXPECT_TRUE(S_ISLNK(modeOf(folder.host("site/page.htm"))));
  EXPECT_EQ(folder.read("site/page.htm"), "<%b%>\r\n");
  EXPECT_EQ(folder.read("real/page.bak"), "<%a%>");
  EXPECT_EQ(folder.names("site"), Names{"page.htm"});
  EXPECT_EQ(folder.names("real"), (Names{"page.bak", "page.htm"}));
}

TEST(RewritePosix, BackupRotatedOnEveryRewrite) {
  struct Case {
    const char* name;
    const char* document;
    const char* backup;
  };
  const Case cases[] = {
      {"Plain", "page.htm", "page.bak"},
      {"Hidden", ".x.htm", ".x.bak"},
      {"BakDocument", "x.bak", "x.bak.bak"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    TempFolder folder;
    folder.write(c.document, "<%0%>");
    for (char round : {'1', '2'}) {
      std::string errorResult;
      ASSERT_EQ(rewrite(folder, c.document, std::string(1, round), &errorResult), 1) << errorResult;
      EXPECT_EQ(folder.read(c.document), std::string("<%") + round + "%>\r\n");
      std::string former = round == '1' ? "<%0%>" : "<%1%>\r\n";
      EXPECT_EQ(folder.read(c.backup), former);
      EXPECT_EQ(folder.names().size(), 2u);
    }
  }
}

TEST(RewritePosix, StaleTemporaryFilesOfTwoDaysAgo) {
  TempFolder folder;
  std::string twoDaysAgo = toUtf8(monthDay(systemPlatform().localTime(2)));
  std::string threeDaysAgo = toUtf8(monthDay(systemPlatform().localTime(3)));
  folder.write("page.htm", "<%a%>");
  folder.write("~" + twoDaysAgo + "0102030405.tmp", "stale");
  folder.write("~" + twoDaysAgo + ".tmp", "stale");
  folder.write("~" + threeDaysAgo + "0102030405.tmp", "kept for good");
  ASSERT_EQ(rewrite(folder, "page.htm", "b"), 1);
  EXPECT_EQ(folder.names(), (Names{"page.bak", "page.htm", "~" + threeDaysAgo + "0102030405.tmp"}));
}

TEST(RewritePosix, FailureLeavesNoTemporaryFile) {
  TempFolder folder;
  folder.write("page.htm", "<%a%>\r\n<%b");
  folder.write("page.bak", "previous");
  std::string errorResult;
  EXPECT_EQ(rewrite(folder, "page.htm", "x", &errorResult), -1);
  EXPECT_EQ(errorResult, std::string("ERROR: Found 'a\0'--> Missing element end tag '%>'.", 50));
  EXPECT_EQ(folder.read("page.htm"), "<%a%>\r\n<%b");
  EXPECT_EQ(folder.read("page.bak"), "previous");
  EXPECT_EQ(folder.names().size(), 2u);
}

// Runs `tagwright write` on the document and returns its pid.
pid_t startRewrite(const std::string& document, const std::string& newContent) {
  pid_t pid = ::fork();
  if (pid == 0) {
    int devNull = ::open("/dev/null", O_WRONLY);
    ::dup2(devNull, 1);
    ::dup2(devNull, 2);
    ::execl(TAGWRIGHT_BINARY, TAGWRIGHT_BINARY, "write", document.c_str(), "--element-name",
            "#aspcode", "--count-instances", "0", "--new-content", newContent.c_str(),
            static_cast<char*>(nullptr));
    ::_exit(127);
  }
  return pid;
}

// Killed at any moment, a rewrite leaves the whole former document or the
// whole new one under the document's name, or the former one as the backup.
TEST(RewritePosix, KilledMidRewrite) {
  std::string before, after;
  for (int line = 0; line < 8000; ++line) {
    before += "line " + std::to_string(line) + " <%old%> and some text behind it\r\n";
    after += "line " + std::to_string(line) + " <%new text%> and some text behind it\r\n";
  }
  TempFolder folder;
  const std::string document = folder.physical("page.htm");

  folder.write("page.htm", before);
  auto started = std::chrono::steady_clock::now();
  int status = 0;
  ::waitpid(startRewrite(document, "new text"), &status, 0);
  auto duration = std::chrono::steady_clock::now() - started;
  ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  ASSERT_EQ(folder.read("page.htm"), after);

  std::random_device seed;
  std::mt19937 random(seed());
  auto micros = std::chrono::duration_cast<std::chrono::microseconds>(duration).count();
  std::uniform_int_distribution<long> delay(0, micros + micros / 10);
  for (int kill = 0; kill < 20; ++kill) {
    for (const std::string& name : folder.names()) ::unlink(folder.host(name).c_str());
    folder.write("page.htm", before);
    long after_us = delay(random);
    SCOPED_TRACE("killed after " + std::to_string(after_us) + " us");
    pid_t pid = startRewrite(document, "new text");
    std::this_thread::sleep_for(std::chrono::microseconds(after_us));
    ::kill(pid, SIGKILL);
    ::waitpid(pid, &status, 0);

    std::optional<std::string> underName = folder.read("page.htm");
    std::optional<std::string> backup = folder.read("page.bak");
    if (underName) {
      EXPECT_TRUE(*underName == before || *underName == after) << underName->size() << " bytes";
      if (*underName == after) {
        EXPECT_EQ(backup, before);
      }
    } else {
      EXPECT_EQ(backup, before);
    }
  }
}

}  // namespace
}  // namespace tagwright
