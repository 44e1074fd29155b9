// The `tagwright` program over many documents: how they are named, the
// order and form of the answers, exit statuses, a batch that equals single
// calls, and a batch rewrite killed at random instants.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <ctime>
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

// Pages of varied lengths and line ends, with and without the element, one
// that is private and one reached through a link; their names, and second
// among them a name that is no file.
std::vector<std::string> writeVariedSite(const TempFolder& site) {
  std::mt19937 random(7);
  std::vector<std::string> names;
  for (int i = 0; i < 40; ++i) {
    std::string text = "<html><head><title>P" + std::to_string(i) + "</title></head>\r\n";
    const int paragraphs = static_cast<int>(random() % 400);
    for (int p = 0; p < paragraphs; ++p)
      text += "<p class=\"x\">some text " + std::to_string(p) + "</p>\n";
    if (i % 5 != 0) text += "<footer>old " + std::to_string(i) + "</footer>\r\n";
    names.push_back("s/" + std::to_string(i % 4) + "/p" + std::to_string(i) + ".htm");
    site.write(names.back(), text);
  }
  // A temporary file left two days ago in each folder, which a rewrite there sweeps away.
  char stale[32];
  const std::time_t twoDaysAgo = std::time(nullptr) - 2 * 24 * 60 * 60;
  std::strftime(stale, sizeof stale, "~%m%d0000001.tmp", std::localtime(&twoDaysAgo));
  for (int folder = 0; folder < 4; ++folder)
    site.write("s/" + std::to_string(folder) + "/" + stale, "stale");
  ::chmod(site.host("s/1/p1.htm").c_str(), 0640);
  // The link's target is named nowhere else: two names of one document in a
  // batch are rewritten in whichever order their jobs reach them.
  site.write("s/1/linked.htm", "<footer>old linked</footer>");
  std::filesystem::create_symlink("1/linked.htm", site.host("s/link.htm"));
  names.insert(names.begin() + 1, "none.htm");
  names.push_back("s/link.htm");
  return names;
}

std::string folderName(const TempFolder& folder) {
  return std::filesystem::path(folder.host()).parent_path().filename().string();
}

// Each form prints for each document what a single call prints for it, with
// "document" added to each JSON object; a failure does not stop the others,
// a dry run changes nothing, and the rewrites leave the files, their modes
// and the link as single calls do.
TEST(Batch, EqualsSingleCalls) {
  TempFolder batch, single;
  const std::vector<std::string> documents = writeVariedSite(batch);
  writeVariedSite(single);
  const std::set<std::string> unchanged = batch.names("s/1");
  const Args forms[] = {
      {"write", "--element-name", "footer", "--new-content", "NEW\r\ncontent", "--dry-run"},
      {"read", "--element-name", "footer", "--json"},
      {"read", "--element-name", "p", "--count-instances", "2", "--json-lines"},
      {"write", "--element-name", "footer", "--new-content", "NEW\r\ncontent", "--json"},
      {"write", "--element-name", "title", "--new-content", "T", "--json-lines"},
  };
  for (const Args& form : forms) {
    SCOPED_TRACE(testing::PrintToString(form));
    Args arguments = form;
    arguments.insert(arguments.begin() + 1, documents.begin(), documents.end());
    arguments.insert(arguments.end(), {"--jobs", "3"});
    HostRun run = runProgram(arguments, {.workingFolder = batch.host()});
    EXPECT_EQ(run.status, 1) << run.err;
    EXPECT_NE(run.err.find("tagwright: none.htm: ERROR: Cannot open document file"),
              std::string::npos)
        << run.err;
    std::string expected;
    for (const std::string& document : documents) {
      Args one = form;
      one.insert(one.begin() + 1, document);
      std::istringstream out(runProgram(one, {.workingFolder = single.host()}).out);
      for (std::string line; std::getline(out, line);) {
        if (form.back() != "--dry-run")
          line = "{\"document\":\"" + document + "\"," + line.substr(1);
        if (std::size_t at = line.find(folderName(single)); at != std::string::npos)
          line.replace(at, folderName(single).size(), folderName(batch));
        expected += line + "\n";
      }
    }
    EXPECT_EQ(run.out, expected);
    EXPECT_TRUE(form.back() != "--dry-run" || batch.names("s/1") == unchanged);
  }
  EXPECT_EQ(batch.tree("s", /*modes=*/true), single.tree("s", /*modes=*/true));
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
