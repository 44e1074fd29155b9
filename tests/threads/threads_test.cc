// Several instances on several threads at once give the answers that they
// give one at a time: reads, meta pairs, listings and rewrites, each thread on
// its own instance, through the shared library's public interface alone.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include "tagwright/tagwright.h"

namespace tagwright {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kThreads = 6;
constexpr int kRounds = 20;

// A host path in the component's physical form: "/tmp/a" is "\tmp\a".
std::string physical(const fs::path& path) {
  std::string text = path.string();
  std::replace(text.begin(), text.end(), '/', '\\');
  return text;
}

// One round of every operation on `folder`, which the round owns: its answers
// and what the rewrite left in the document, in one text.
std::string round(Tagwright& instance, const fs::path& folder) {
  std::string page = physical(folder / "index.htm");
  int found = 0;
  std::string all =
      instance.readXPointer(page, "p", "class", "news", 1, 0, "innerText", "", "", ";", &found);
  all += "|" + std::to_string(found) + "|";
  all += instance.readMetaContent(page, "*", 1, 0, "=", ";", &found);
  all += "|" + std::to_string(found) + "|";
  all += instance.fileListing(physical(folder / "images"), "*.png", ",", &found);
  std::string former;
  found = instance.writeXPointer("Rewritten", page, "h1", "*", "*", 1, 1, "innerMarkup", "", "",
                                 &former);
  std::ifstream written(folder / "index.htm", std::ios::binary);
  all += "|" + std::to_string(found) + "|" + former + "|" +
         std::string(std::istreambuf_iterator<char>(written), {});
  fs::copy_file(folder / "index.bak", folder / "index.htm", fs::copy_options::overwrite_existing);
  return all;
}

TEST(Threads, InstancesAtOnceAnswerAsOneAtATime) {
  std::string temp = (fs::temp_directory_path() / "tagwright-threads-XXXXXX").string();
  ASSERT_NE(::mkdtemp(temp.data()), nullptr);
  const fs::path site = fs::path(TAGWRIGHT_SOURCE_DIR) / "examples" / "site";
  std::vector<fs::path> folders;
  for (std::size_t i = 0; i < kThreads; ++i) {
    folders.push_back(fs::path(temp) / ("site" + std::to_string(i)));
    fs::copy(site, folders.back(), fs::copy_options::recursive);
  }
  Tagwright alone;
  const std::string want = round(alone, folders[0]);
  ASSERT_NE(want.find("|3|"), std::string::npos) << want;
  ASSERT_NE(want.find("Rewritten"), std::string::npos) << want;

  std::vector<std::vector<std::string>> answers(kThreads);
  std::vector<std::thread> threads;
  for (std::size_t i = 0; i < kThreads; ++i) {
    threads.emplace_back([&, i] {
      Tagwright instance;
      for (int r = 0; r < kRounds; ++r) answers[i].push_back(round(instance, folders[i]));
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (std::size_t i = 0; i < kThreads; ++i) {
    ASSERT_EQ(answers[i].size(), static_cast<std::size_t>(kRounds));
    for (const std::string& answer : answers[i]) EXPECT_EQ(answer, want) << "thread " << i;
  }
  fs::remove_all(temp);
}

}  // namespace
}  // namespace tagwright
