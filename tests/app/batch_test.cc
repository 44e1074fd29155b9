// The `tagwright` program over many documents: how they are named, the
// order and form of the answers, exit statuses, a batch that equals single
// calls, and a batch rewrite killed at random instants.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <random>

#include "support/program.h"
#include "support/temp_folder.h"

namespace tagwright {
namespace {

using Args = std::vector<std::string>;
using std::string_literals::operator""s;

std::string page(int number) {
  return "<html><title>T" + std::to_string(number) + "</title>\r\n<footer>old " +
         std::to_string(number) + "</footer></html>\r\n";
}

// a.htm b/c.htm b/d/e.htm, a hidden file and folder, a link to a page and
// one to a folder, a page that does not match the pattern.
void writeSite(const TempFolder& site) {
  site.write("a.htm", page(1));
  site.write("b/c.htm", page(2));
  site.write("b/d/e.htm", page(3));
  site.write(".h.htm", page(4));
  site.write(".hid/f.htm", page(5));
  site.write("b/g.txt", page(6));
  site.write("b/\xC3\xA9.htm", page(7));
  std::filesystem::create_symlink("../a.htm", site.host("b/link.htm"));
  std::filesystem::create_symlink("..", site.host("b/d/up"));
  site.write("list", "a.htm\r\nb/c.htm\n\nnone.htm\n");
  site.write("list0", "b/d/e.htm\0a.htm\0"s);
}

TEST(Batch, CommandLines) {
  const std::string noFile = "ERROR: Cannot open document file: '";
  const struct {
    Args arguments;
    int status;
    std::string out;  // "@" stands for the site's physical path
    std::string err;  // a part of what the run writes there
  } cases[] = {
      {words("read --recursive . --pattern *.htm --element-name title --json --jobs 3"), 0,
       "{\"document\":\"./a.htm\",\"result\":\"T1\",\"matchesFound\":1}\n"
       "{\"document\":\"./b/c.htm\",\"result\":\"T2\",\"matchesFound\":1}\n"
       "{\"document\":\"./b/d/e.htm\",\"result\":\"T3\",\"matchesFound\":1}\n"
       "{\"document\":\"./b/link.htm\",\"result\":\"T1\",\"matchesFound\":1}\n"
       "{\"document\":\"./b/\xC3\xA9.htm\",\"result\":\"T7\",\"matchesFound\":1}\n",
       ""},
      {words("read --recursive b/d/ --element-name title"), 0, "b/d/e.htm:T3\n", ""},
      {words("read --files-from list --element-name title"), 1,
       "a.htm:T1\nb/c.htm:T2\nnone.htm:" + noFile + "@none.htm'.\n",
       "tagwright: none.htm: " + noFile + "@none.htm'.\n"},
      {words("read --files-from list a.htm --element-name footer --jobs 1"), 1,
       "a.htm:old 1\na.htm:old 1\nb/c.htm:old 2\nnone.htm:" + noFile + "@none.htm'.\n", ""},
      {words("meta --files-from list0 -0 --json"), 0,
       "{\"document\":\"b/d/e.htm\",\"result\":\"\",\"matchesFound\":0}\n"
       "{\"document\":\"a.htm\",\"result\":\"\",\"matchesFound\":0}\n",
       ""},
      {words("write a.htm b/c.htm --element-name footer --new-content N --json --progress"), 0,
       "{\"document\":\"a.htm\",\"result\":1,\"errorResult\":\"old 1\"}\n"
       "{\"document\":\"b/c.htm\",\"result\":1,\"errorResult\":\"old 2\"}\n",
       "2 documents, 2 matched, 2 changed, 0 failed"},
      {words("read --recursive none --element-name title"), 2, "",
       "--recursive none names no folder"},
      {words("read --files-from none"), 2, "", "cannot read --files-from none"},
      {words("read a.htm --pattern *.htm"), 2, "", "--pattern"},
      {words("read a.htm b/c.htm -0"), 2, "", "-0"},
      {words("read --element-name title"), 2, "", "DOCUMENT"},
      {words("write --files-from - --new-content-file -"), 2, "", "standard input"},
      {words("read a.htm b/c.htm --jobs 0"), 2, "", "--jobs"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.arguments));
    TempFolder site;
    writeSite(site);
    HostRun run = runProgram(c.arguments, {.workingFolder = site.host()});
    EXPECT_EQ(run.status, c.status) << run.err;
    auto inSite = [&](std::string text) {
      if (std::size_t at = text.find('@'); at != std::string::npos)
        text.replace(at, 1, site.physical());
      return text;
    };
    EXPECT_EQ(run.out, inSite(c.out));
    EXPECT_NE(run.err.find(inSite(c.err)), std::string::npos) << run.err;
  }
}

std::vector<std::string> lines(const std::string& text);

// A dry run and the per-part objects print for each document what a single
// call prints for it, the parts with "document" added; a dry run changes
// nothing, and a failure does not stop the others.
TEST(Batch, DryRunAndPartsAsSingleCalls) {
  const std::vector<std::string> documents = {"a.htm", "none.htm", "b/c.htm"};
  const Args forms[] = {
      {"write", "--element-name", "footer", "--new-content", "N", "--dry-run"},
      {"write", "--element-name", "footer", "--new-content", "N", "--json-lines"},
      {"read", "--element-name", "title", "--json-lines"},
  };
  for (const Args& form : forms) {
    SCOPED_TRACE(testing::PrintToString(form));
    TempFolder batchSite, singleSite;
    writeSite(batchSite);
    writeSite(singleSite);
    Args arguments = form;
    arguments.insert(arguments.begin() + 1, documents.begin(), documents.end());
    HostRun batch = runProgram(arguments, {.workingFolder = batchSite.host()});
    EXPECT_EQ(batch.status, 1) << batch.err;
    EXPECT_NE(batch.err.find("tagwright: none.htm: ERROR: Cannot open document file"),
              std::string::npos)
        << batch.err;
    std::string expected;
    for (const std::string& document : documents) {
      Args single = form;
      single.insert(single.begin() + 1, document);
      const std::string out = runProgram(single, {.workingFolder = singleSite.host()}).out;
      const bool parts = form.back() == "--json-lines";
      for (const std::string& line : lines(out)) {
        if (!line.empty())
          expected +=
              (parts ? "{\"document\":\"" + document + "\"," + line.substr(1) : line) + "\n";
      }
    }
    EXPECT_EQ(batch.out, expected);
    if (form.back() == "--dry-run") {
      EXPECT_NE(batch.out.find("+++ b/b/c.htm"), std::string::npos);
      EXPECT_EQ(batchSite.read("b/c.htm"), page(2));
      EXPECT_FALSE(std::filesystem::exists(batchSite.host("a.bak")));
    }
  }
}

// Pages of varied lengths and line ends, with and without the element, one
// that is private and one reached through a link.
void writeVariedSite(const TempFolder& site, int pages) {
  std::mt19937 random(7);
  for (int i = 0; i < pages; ++i) {
    std::string text = "<html><head><title>P" + std::to_string(i) + "</title></head>\r\n";
    const int paragraphs = static_cast<int>(random() % 400);
    for (int p = 0; p < paragraphs; ++p)
      text += "<p class=\"x\">some text " + std::to_string(p) + "</p>\n";
    if (i % 5 != 0) text += "<footer>old " + std::to_string(i) + "</footer>\r\n";
    site.write("s/" + std::to_string(i % 4) + "/p" + std::to_string(i) + ".htm", text);
  }
  ::chmod(site.host("s/1/p1.htm").c_str(), 0640);
  std::filesystem::create_symlink("1/p1.htm", site.host("s/link.htm"));
}

std::vector<std::string> lines(const std::string& text) {
  std::vector<std::string> out;
  for (std::size_t start = 0, end; start < text.size(); start = end + 1) {
    end = text.find('\n', start);
    out.push_back(text.substr(start, end - start));
  }
  return out;
}

TEST(Batch, EqualsSingleCalls) {
  TempFolder batch, single;
  writeVariedSite(batch, 60);
  writeVariedSite(single, 60);
  for (const char* command : {"read", "write"}) {
    SCOPED_TRACE(command);
    Args common{command, "--element-name", "footer", "--new-content", "NEW\r\ncontent"};
    if (std::string(command) == "read") common.resize(3);
    Args batchArguments = common;
    for (const char* option : {"--recursive", "s", "--json", "--jobs", "3"})
      batchArguments.push_back(option);
    HostRun run = runProgram(batchArguments, {.workingFolder = batch.host()});
    EXPECT_EQ(run.status, 0) << run.err;
    std::vector<std::string> answers = lines(run.out);
    ASSERT_EQ(answers.size(), 61u);
    for (const std::string& answer : answers) {
      const std::size_t nameEnd = answer.find("\",");
      const std::string document = answer.substr(13, nameEnd - 13);
      Args singleArguments = common;
      singleArguments.insert(singleArguments.begin() + 1, document);
      singleArguments.push_back("--json");
      HostRun one = runProgram(singleArguments, {.workingFolder = single.host()});
      EXPECT_EQ("{" + answer.substr(nameEnd + 2) + "\n", one.out) << document;
    }
  }
  for (const auto& entry : std::filesystem::recursive_directory_iterator(single.host("s"))) {
    if (entry.is_directory()) continue;
    const std::string name = std::filesystem::relative(entry.path(), single.host()).string();
    SCOPED_TRACE(name);
    EXPECT_EQ(batch.read(name), single.read(name));
    struct stat batchStatus {
    }, singleStatus{};
    ::lstat(batch.host(name).c_str(), &batchStatus);
    ::lstat(single.host(name).c_str(), &singleStatus);
    EXPECT_EQ(batchStatus.st_mode, singleStatus.st_mode);
  }
  EXPECT_EQ(batch.names("s"), single.names("s"));
  EXPECT_TRUE(std::filesystem::is_symlink(batch.host("s/link.htm")));
}

// Killed at a random instant, a batch rewrite leaves every document whole:
// the former text or the new one, never a mixture, an empty or a missing file.
TEST(Batch, KilledRewriteLeavesEachDocumentOldOrNew) {
  constexpr int kPages = 300;
  auto old = [](int i) { return std::string(20000, 'x') + page(i); };
  TempFolder site;
  int round = 0;
  killAtRandomInstants(
      words("write --recursive . --element-name footer --new-content NEW --jobs 2"), site.host(), 6,
      [&] {
        std::filesystem::remove_all(site.host("p"));
        for (int i = 0; i < kPages; ++i) site.write("p/" + std::to_string(i) + ".htm", old(i));
      },
      [&](bool killed) {
        int replaced = 0;
        for (int i = 0; i < kPages; ++i) {
          std::string now = old(i);
          now.replace(now.find("old " + std::to_string(i)), 4 + std::to_string(i).size(), "NEW");
          std::optional<std::string> bytes = site.read("p/" + std::to_string(i) + ".htm");
          ASSERT_TRUE(bytes == old(i) || bytes == now) << "p" << i;
          replaced += bytes == now;
        }
        if (!killed) {
          EXPECT_EQ(replaced, kPages);
        }
        RecordProperty("replaced" + std::to_string(round++), replaced);
      });
}

}  // namespace
}  // namespace tagwright
