// The `tagwright` program as shell users drive it: the document from a pipe,
// write --stdout and --dry-run, -e, --json-lines positions cut from the
// file, the line end for a terminal, the refused path explained, and the
// manual page and completion made from --help.
#include <gtest/gtest.h>

#include <cstdlib>
#include <nlohmann/json.hpp>

#include "platform/text.h"
#include "support/program.h"
#include "support/temp_folder.h"
#include "tagwright/version.h"

namespace tagwright {
namespace {

using Args = std::vector<std::string>;
using std::string_literals::operator""s;

// A page of `lines` lines, each ended by `lineEnd`, with a <p> on every
// seventh line, non-ASCII text, a byte outside UTF-8 and, halfway, a
// <div> that runs over many lines.
std::string page(int lines, const std::string& lineEnd) {
  std::string text = "<html><title>Café \xff</title>" + lineEnd;
  for (int i = 1; i < lines; ++i) {
    if (i == lines / 2) {
      text += "<div class=\"long\">" + lineEnd;
      for (int j = 0; j < 200; ++j) text += "filler «" + std::to_string(j) + "» text" + lineEnd;
      text += "</div>" + lineEnd;
    }
    text += i % 7 == 0 ? "<p id=\"" + std::to_string(i) + "\">Grüße €" + std::to_string(i) +
                             " \x80</p> tail <p>x</p>"
                       : "line " + std::to_string(i) + " ödd";
    text += lineEnd;
  }
  return text + "</html>";
}

// The site of one test: page.htm holds `bytes`.
struct Site {
  explicit Site(const std::string& bytes) { folder.write("page.htm", bytes); }
  std::string path() const { return folder.host("page.htm"); }
  TempFolder folder;
};

// A document from a pipe gets the answer the file gets, in about the memory
// the file takes: the page itself would add 7 MiB at the last row, while a
// chunk reader adds its buffer alone.
TEST(CommandLine, StandardInputAnswersAsTheFile) {
  const struct {
    std::string bytes;
    std::string options;
    std::string count;
  } cases[] = {
      {page(40, "\r\n"), "read --element-name p --content-type outerMarkup", "10"},
      {page(40, "\n"), "read --element-name div --line-ends=any --json", ""},
      {page(9000, "\n"), "read --element-name p --line-ends=any", "2570"},
      {page(3000, "\r\n"), "read --element-name p --content-type innerText", "856"},
      {page(3000, "\n"), "read --element-name p --count-instances 3 -e", "3"},
      {"<meta name=\"a\" content=\"1\">\r\n<meta name=\"b\" content=\"2\">", "meta", "2"},
      {"", "read -e", "0"},
      {page(400000, "\r\n"), "read --element-name div --content-type innerText", "1"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.options);
    Site site(c.bytes);
    Args fromFile = words(c.options), fromPipe = fromFile;
    fromFile.insert(fromFile.begin() + 1, site.path());
    fromPipe.insert(fromPipe.begin() + 1, "-");
    long fileKib = 0, pipeKib = 0;
    HostRun file = runProgram(fromFile, {.peakKib = &fileKib});
    EXPECT_EQ(file.err, c.count.empty() ? "" : "matches: " + c.count + "\n");
    EXPECT_EQ(runProgram(fromPipe, {.input = c.bytes, .peakKib = &pipeKib}), file);
    EXPECT_LT(pipeKib, fileKib + 2048) << fileKib;
  }
}

// Runs `write` once into the site's file and returns what it made.
std::string realWrite(const std::string& bytes, const Args& options) {
  Site site(bytes);
  Args arguments = {"write", site.path()};
  arguments.insert(arguments.end(), options.begin(), options.end());
  HostRun run = runProgram(arguments);
  EXPECT_EQ(run.status, 0) << run.err;
  return *site.folder.read("page.htm");
}

const struct RewriteCase {
  std::string bytes;
  Args options;
} kRewrites[] = {
    {page(60, "\r\n"), {"--element-name", "p", "--count-instances", "0", "--new-content", "N"}},
    {page(60, "\n"), {"--element-name", "div", "--line-ends=any", "--new-content", "a\nb"}},
    {page(60, "\n"), {"--element-name", "title", "--new-content", "T"}},  // LF in crlf mode
    {"<p>\xfe\xff</p>\r\n<p>é</p>", {"--element-name", "p", "--new-content", "\xc3"}},
    {"<p>x</p>", {"--element-name", "p", "--new-content", "y\r\n"}},  // no final line end
};

// --stdout prints the rewrite and --dry-run a diff that patches to it; both
// leave the disk alone.
TEST(CommandLine, StdoutAndDryRunLeaveTheDiskAlone) {
  for (const RewriteCase& c : kRewrites) {
    SCOPED_TRACE(testing::PrintToString(c.options));
    const std::string expected = realWrite(c.bytes, c.options);
    for (const char* mode : {"--stdout", "pipe", "--dry-run"}) {
      Site site(c.bytes);
      const bool pipe = mode == "pipe"s;
      Args arguments = {"write", pipe ? "-" : site.path(), pipe ? "--stdout" : mode};
      arguments.insert(arguments.end(), c.options.begin(), c.options.end());
      HostRun run = runProgram(arguments, {.input = pipe ? std::optional(c.bytes) : std::nullopt});
      EXPECT_EQ(site.folder.names(), std::set<std::string>{"page.htm"});
      EXPECT_EQ(site.folder.read("page.htm"), c.bytes);
      if (mode != "--dry-run"s) {
        EXPECT_EQ(run.status, 0) << run.err;
        EXPECT_EQ(run.out, expected);
        continue;
      }
      EXPECT_EQ(run.status, 1) << run.err;
      const std::string name = site.path().substr(1);
      EXPECT_TRUE(run.out.starts_with("--- a/" + name + "\n+++ b/" + name + "\n")) << run.out;
      site.folder.write("diff", run.out);
      const std::string patch = "patch -s -p1 -d / <" + site.folder.host("diff");
      ASSERT_EQ(std::system(patch.c_str()), 0);
      EXPECT_EQ(site.folder.read("page.htm"), expected);
    }
  }
  // A failure leaves standard output empty: half a document is no document.
  HostRun run = runProgram(words("write - --stdout --element-name p --new-content x"),
                           {.input = "<p>no end"});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.out, "");
  EXPECT_TRUE(run.err.starts_with("ERROR: Found")) << run.err;
}

// The exit status as grep gives it; where a row gives its errors, the run
// prints them and nothing else.
TEST(CommandLine, ExitStatusAsGrepGivesIt) {
  Site site("<p>a</p>\r\n<meta name=\"k\" content=\"v\">\r\n");
  const std::string page = site.path(), folder = site.folder.host();
  const std::string missing = site.folder.host("none.htm");
  const struct {
    Args arguments;
    int status;
    std::string err = "";
  } cases[] = {
      // A dry run that changes nothing, and one that fails, say so by their status.
      {words("write " + page + " --dry-run --element-name p --new-content a"), 0, "matches: 1\n"},
      {words("write " + missing + " --dry-run --new-content x"), 2,
       "ERROR: Cannot open document file: '" + toUtf8(physicalPathOf(missing)) +
           "'.\nmatches: -1\n"},
      // `serve` runs in the serving program, which gets each option as it was given.
      {{"serve", "--root=-no-folder", "--token-file", "/dev/null"},
       2,
       "tagwright serve: --root -no-folder is no folder\n"},
      {{"read", page, "--element-name", "h1"}, 0},
      {{"read", page, "--element-name", "h1", "-e"}, 1},
      {{"read", page, "--element-name=p", "--exit-status"}, 0},
      {{"read", page, "--element-name", "p", "--start-instance", "0", "-e"}, 1},
      {{"meta", page, "--meta-name", "q", "-e"}, 1},
      {{"list", folder, "--pattern", "*.xml", "-e"}, 1},
      {{"list", folder, "--pattern=*.htm", "-e"}, 0},
      {{"write", page, "--element-name", "h1", "--new-content", "x", "-e"}, 1},
      {{"read", page, "--json", "--json-lines"}, 2},
      {{"write", "-", "--new-content", "x"}, 2},
      {{"read", page, page, "-e"}, 2},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.arguments));
    const HostRun run = runProgram(c.arguments);
    EXPECT_EQ(run,
              (HostRun{c.status, c.err.empty() ? run.out : "", c.err.empty() ? run.err : c.err}));
  }
}

// The line and the column (from 1, in characters) of byte `offset` of
// `bytes`, counted afresh: CR LF and CR end a line, and LF alone with `anyLf`.
std::pair<std::uint64_t, std::uint64_t> lineAndColumn(const std::string& bytes, std::size_t offset,
                                                      bool anyLf) {
  std::uint64_t line = 1;
  std::size_t lineStart = 0;
  for (std::size_t i = 0; i < offset; ++i) {
    const bool crEnds = bytes[i] == '\r' && (i + 1 >= bytes.size() || bytes[i + 1] != '\n');
    const bool lfEnds = bytes[i] == '\n' && (anyLf || (i > 0 && bytes[i - 1] == '\r'));
    if (crEnds || lfEnds) {
      line += 1;
      lineStart = i + 1;
    }
  }
  return {line, 1 + decodedLength(std::string_view(bytes).substr(lineStart, offset - lineStart))};
}

TEST(CommandLine, JsonLinesPositionsCutTheFile) {
  const struct {
    std::string bytes;
    std::string command;
    int parts;
  } cases[] = {
      {page(700, "\r\n"), "read --element-name p --content-type outerMarkup", 198},
      {page(700, "\r\n"), "read --element-name div", 1},
      {page(700, "\n"), "read --element-name p --line-ends=any", 198},
      {page(700, "\n"), "read --element-name div --content-type=outerMarkup --line-ends any", 1},
      {"a\n\xff<p>\xe9\rb</p>\r\n<p></p>", "read --element-name p --line-ends=any", 2},
      // The default mode's chunk holds CR LF for a lone CR; the file does not.
      {"<p>a</p>\r<p>b\n</p>\r\n\r<p>c</p>", "read --element-name p", 3},
      // A write tells where the parts it replaced stood.
      {page(700, "\r\n"), "write --element-name p --count-instances 0 --new-content N", 198},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.command);
    Site site(c.bytes);
    const bool anyLf = c.command.find("any") != std::string::npos;
    Args arguments = words(c.command);
    arguments.insert(arguments.begin() + 1, {site.path(), "--json-lines"});
    HostRun run = runProgram(arguments);
    EXPECT_EQ(run.err, "matches: " + std::to_string(c.parts) + "\n");
    std::istringstream lines(run.out);
    int parts = 0;
    for (std::string line; std::getline(lines, line); ++parts) {
      nlohmann::json part = nlohmann::json::parse(line);
      const std::size_t start = part["start"]["byte"], end = part["end"]["byte"];
      ASSERT_LE(start, end);
      ASSERT_LE(end, c.bytes.size());
      EXPECT_EQ(part["text"], Tagwright::replaceRawBytes(c.bytes.substr(start, end - start)));
      for (const char* edge : {"start", "end"}) {
        auto [lineNumber, column] = lineAndColumn(c.bytes, part[edge]["byte"], anyLf);
        EXPECT_EQ(part[edge]["line"], lineNumber) << edge << " " << line;
        EXPECT_EQ(part[edge]["column"], column) << edge << " " << line;
      }
    }
    EXPECT_EQ(parts, c.parts);
  }
  // The plain text of a part comes with the stretch it was made from.
  Site site("<p>\r\n<b>é</b> x</p>");
  HostRun run = runProgram({"read", site.path(), "--json-lines", "--content-type", "innerText"});
  EXPECT_EQ(run.out,
            "{\"text\":\"é x\",\"start\":{\"byte\":3,\"line\":1,\"column\":4},"
            "\"end\":{\"byte\":16,\"line\":2,\"column\":11}}\n");
}

TEST(CommandLine, BareOutputEndsItsLineOnATerminalOnly) {
  Site site("<p>a</p>\r\n<p>b</p>");
  const struct {
    Args arguments;
    std::string pipe;
    std::string terminal;
  } cases[] = {
      {{"read", site.path(), "--element-name", "p", "--separator", ","}, "a,b", "a,b\n"},
      {{"read", site.path(), "--element-name", "h1"}, "", ""},
      {{"read", site.path(), "--element-name", "p", "--json"},
       "{\"result\":\"a\\u0000b\",\"matchesFound\":2}\n",
       "{\"result\":\"a\\u0000b\",\"matchesFound\":2}\n"},
      {{"--version"}, "tagwright " TAGWRIGHT_VERSION "\n", "tagwright " TAGWRIGHT_VERSION "\n"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.arguments));
    EXPECT_EQ(runProgram(c.arguments).out, c.pipe);
    EXPECT_EQ(runProgram(c.arguments, {.terminal = true}).out, c.terminal);
  }
}

TEST(CommandLine, RefusedPathIsExplained) {
  TempFolder outside;
  Site site("<p>x</p>");
  site.folder.write("sub/in.htm", "<p>y</p>");
  std::filesystem::create_symlink(outside.host(), site.folder.host("sub/out"));
  std::filesystem::create_directory(site.folder.host("sub/gone"));
  const std::string sub = site.folder.host("sub");
  const struct {
    Args arguments;
    std::string cause;
    std::string workingFolder = "";
    int status = 1;
  } cases[] = {
      {{"read", "/../page.htm", "--root", sub}, "a \"..\" climbs above the root"},
      {{"read", "/a/../../page.htm", "--root", sub}, "a \"..\" climbs above the root"},
      {{"read", "page.htm", "--root", sub},
       "the working folder " + site.folder.host().substr(0, site.folder.host().size() - 1) +
           " lies outside the root",
       site.folder.host()},
      {{"read", "/out/x.htm", "--root", sub},
       "its target, links followed, is " + outside.host() + "x.htm"},
      {{"write", "/../page.htm", "--root", sub, "--new-content", "z"},
       "a \"..\" climbs above the root"},
      {{"read", "in.htm", "--root", sub},
       "the working folder is gone, and a path without a leading \"/\" is taken from it",
       site.folder.host("sub/gone")},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.arguments));
    HostRun run =
        runProgram(c.arguments, {.workingFolder = c.workingFolder,
                                 .removeWorkingFolder = c.workingFolder.ends_with("gone")});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "ERROR: Unidentified Error while validating parameters.");
    EXPECT_NE(run.err.find(", root " + sub + ": " + c.cause), std::string::npos) << run.err;
    EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 2) << run.err;
  }
  EXPECT_EQ(runProgram({"read", "/sub/in.htm", "--root", site.folder.host()}).err, "matches: 1\n");
  EXPECT_EQ(runProgram({"read", "in.htm", "--no-context"}).err,
            "tagwright: in.htm is a virtual path, and --no-context runs without the page context "
            "that maps it (a physical path holds \"\\\" or \":\")\nmatches: -1\n");
}

TEST(CommandLine, ManualAndCompletionFollowTheHelp) {
  TempFolder work;
  work.write("tagwright.1", runProgram({"--help-man"}).out);
  work.write("tagwright.bash", runProgram({"--completion-bash"}).out);
  const std::string manual = work.host("manual");
  ASSERT_EQ(std::system(
                ("MANWIDTH=300 man -l " + work.host("tagwright.1") + " >" + manual + " 2>/dev/null")
                    .c_str()),
            0);
  const std::string shown = *work.read("manual");
  // The whole program's help names the settings file and every setting.
  const std::string programHelp = runProgram({"--help"}).out;
  for (const char* word :
       {"TAGWRIGHT_SETTINGS", "/etc/tagwright/settings.conf", "BufferLengthCharacters",
        "AllowVirtualDocReadOnly", "AllowVirtualDocWriteOnly", "AllowVirtualFileListOnly"}) {
    EXPECT_NE(programHelp.find(word), std::string::npos) << word;
  }
  for (const char* command : {"", "read", "write", "meta", "list", "serve"}) {
    HostRun help = runProgram(*command ? Args{command, "--help"} : Args{"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_NE(help.out.find("Usage: tagwright "s + command), std::string::npos);
    std::istringstream lines(help.out);
    for (std::string line; std::getline(lines, line);) {
      EXPECT_NE(shown.find(line), std::string::npos) << line;
    }
  }
  const struct {
    std::string words;
    std::string offered;
  } completions[] = {
      {"tagwright wr", "write"},
      {"tagwright read x --content-type inner", "innerMarkup innerText"},
      {"tagwright read x --element-name '#c'", "#comment"},
      {"tagwright write x --dr", "--dry-run"},
      {"tagwright read x --json-", "--json-lines"},
  };
  for (const auto& c : completions) {
    const std::string script = "source " + work.host("tagwright.bash") + "; COMP_WORDS=(" +
                               c.words + "); COMP_CWORD=$((${#COMP_WORDS[@]}-1)); _tagwright; " +
                               "echo \"${COMPREPLY[*]}\" >" + work.host("offered");
    work.write("script", script);
    ASSERT_EQ(std::system(("bash " + work.host("script")).c_str()), 0);
    EXPECT_EQ(work.read("offered"), c.offered + "\n") << c.words;
  }
}

}  // namespace
}  // namespace tagwright
