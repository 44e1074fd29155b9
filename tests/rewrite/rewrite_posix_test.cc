// Rewrites on the real file system: permission bits, a document behind a
// symbolic link, a rewriting process killed at random moments, and
// processes that rewrite one document at the same time.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <iterator>
#include <mutex>
#include <random>
#include <thread>

#include "files/rename_file.h"
#include "platform/host_path.h"
#include "platform/platform.h"
#include "platform/platform_wrapper.h"
#include "support/program.h"
#include "support/requests.h"
#include "support/temp_folder.h"

namespace tagwright {
namespace {

// Rewrites every "#aspcode" instance of the document `name` in `folder`.
Outcome rewrite(const TempFolder& folder, const std::string& name, const std::string& newContent) {
  return write(systemPlatform(), {.document = folder.physical(name), .newContent = newContent}, 0);
}

mode_t modeOf(const std::string& path) {
  struct stat st {};
  ::lstat(path.c_str(), &st);
  return st.st_mode;
}

// The new document keeps the mode bits, the backup is found by its exact
// name also when hidden, and a ".bak" document gets a backup of its own.
TEST(RewritePosix, TwoRewritesInARow) {
  const std::tuple<const char*, const char*, mode_t> cases[] = {
      {"page.htm", "page.bak", 0640}, {".x.htm", ".x.bak", 0755}, {"x.bak", "x.bak.bak", 0444}};
  for (const auto& [document, backup, mode] : cases) {
    SCOPED_TRACE(document);
    TempFolder folder;
    folder.write(document, "<%0%>");
    ::chmod(folder.host(document).c_str(), mode);
    ASSERT_EQ(rewrite(folder, document, "1"), (Outcome{"0", 1}));
    ASSERT_EQ(rewrite(folder, document, "2"), (Outcome{"1", 1}));
    EXPECT_EQ(folder.read(document), "<%2%>\r\n");
    EXPECT_EQ(folder.read(backup), "<%1%>\r\n");
    EXPECT_EQ(folder.names(), (std::set<std::string>{document, backup}));
    EXPECT_EQ(modeOf(folder.host(document)) & 07777, mode);
  }
}

TEST(RewritePosix, DocumentBehindSymbolicLink) {
  TempFolder folder;
  folder.write("real/page.htm", "<%a%>");
  folder.write("site/other", "");
  ASSERT_EQ(::symlink("../real/page.htm", folder.host("site/page.htm").c_str()), 0);
  ASSERT_EQ(rewrite(folder, "site/page.htm", "b"), (Outcome{"a", 1}));
  EXPECT_TRUE(S_ISLNK(modeOf(folder.host("site/page.htm"))));
  EXPECT_EQ(folder.read("site/page.htm"), "<%b%>\r\n");
  EXPECT_EQ(folder.read("real/page.bak"), "<%a%>");
  EXPECT_EQ(folder.names("site"), (std::set<std::string>{"other", "page.htm"}));
  EXPECT_EQ(folder.names("real"), (std::set<std::string>{"page.bak", "page.htm"}));
}

// Where there are no hard links the rewrite renames, which must never
// replace a file.
TEST(RewritePosix, RenameNeverReplaces) {
  TempFolder folder;
  folder.write("a.htm", "a");
  folder.write("a.bak", "b");
  auto path = [&](const char* name) { return fromUtf8(folder.physical(name)); };
  EXPECT_FALSE(renameFile(systemPlatform(), path("a.htm"), path("a.bak")));
  EXPECT_TRUE(renameFile(systemPlatform(), path("a.htm"), path("b.htm")));
  EXPECT_EQ(folder.names(), (std::set<std::string>{"a.bak", "b.htm"}));
  EXPECT_EQ(folder.read("a.bak"), "b");
}

// Another writer takes the temporary name right after the rewrite found it
// free: the creation fails rather than share that writer's file.
TEST(RewritePosix, TemporaryNameTakenAfterTheCheck) {
  struct Racing : PlatformWrapper {
    using PlatformWrapper::PlatformWrapper;
    bool firstMatchingFile(TextView pattern) override {
      std::ofstream(hostPath(pattern), std::ios::binary) << "theirs";
      taken = hostPath(pattern);
      return false;
    }
    std::string taken;
  } racing(systemPlatform());
  TempFolder folder;
  folder.write("page.htm", "<%a%>");
  EXPECT_EQ(write(racing, {.document = folder.physical("page.htm"), .newContent = "b"}, 0),
            (Outcome{"ERROR: Cannot open output file to write new content.", -1}));
  std::ifstream taken(racing.taken, std::ios::binary);
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(taken), {}), "theirs");
  EXPECT_EQ(folder.read("page.htm"), "<%a%>");
}

// Killed at any moment, a rewrite leaves the whole former document or the
// whole new one under the document's name, or the former one as the backup.
TEST(RewritePosix, KilledMidRewrite) {
  // Long enough to be synced in the background as it is written.
  const std::string filler(1200, 'x');
  std::string before, after;
  for (int line = 0; line < 8000; ++line) {
    before += "line " + std::to_string(line) + " <%old%> " + filler + "\r\n";
    after += "line " + std::to_string(line) + " <%new text%> " + filler + "\r\n";
  }
  TempFolder folder;
  killAtRandomInstants(
      {"write", folder.physical("page.htm"), "--element-name", "#aspcode", "--count-instances", "0",
       "--new-content", "new text"},
      folder.host(), 20,
      [&] {
        for (const std::string& name : folder.names()) ::unlink(folder.host(name).c_str());
        folder.write("page.htm", before);
      },
      [&](bool killed) {
        std::optional<std::string> underName = folder.read("page.htm"),
                                   backup = folder.read("page.bak");
        if (!killed) {
          ASSERT_EQ(underName, after);
        }
        if (underName) {
          EXPECT_TRUE(*underName == before || *underName == after) << underName->size() << " bytes";
        }
        if (!underName || *underName == after) {
          EXPECT_EQ(backup, before);
        }
      });
}

// Writers that take turns hand the document on like a baton: each rewrite
// prints the text it replaced, which is then its backup, so every text but
// the last is printed exactly once. Two rewrites that overlap both print the
// same former text, or one fails.
TEST(RewritePosix, ConcurrentRewritesEachKeepTheirBackup) {
  TempFolder folder;
  folder.write("page.htm", "<%start%>");
  std::mutex lock;
  std::vector<std::string> printed, written{"start"};
  std::vector<std::thread> writers;
  for (int w = 0; w < 2; ++w) {
    writers.emplace_back([&, w] {
      for (int round = 0; round < 40; ++round) {
        const std::string text = std::to_string(w) + "." + std::to_string(round);
        HostRun run = runProgram({"write", folder.host("page.htm"), "--element-name", "#aspcode",
                                  "--new-content", text});
        std::lock_guard held(lock);
        printed.push_back(run.status == 0 ? run.out : "failed: " + run.err);
        written.push_back(text);
      }
    });
  }
  for (std::thread& writer : writers) writer.join();
  std::optional<std::string> last = folder.read("page.htm");
  ASSERT_TRUE(last && last->size() > 6);
  printed.push_back(last->substr(2, last->size() - 6));  // "<%" text "%>\r\n"
  std::sort(printed.begin(), printed.end());
  std::sort(written.begin(), written.end());
  EXPECT_EQ(printed, written);
  EXPECT_EQ(folder.names(), (std::set<std::string>{"page.htm", "page.bak"}));
}

}  // namespace
}  // namespace tagwright
