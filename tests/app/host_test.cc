// The `tagwright` host in-process on real files: `read` and `write` with
// their output forms and exit statuses, usage errors, the line-end mode and
// the settings file, and the page context that refuses paths above the root.
#include <gtest/gtest.h>

#include <cstdlib>
#include <nlohmann/json.hpp>

#include "platform/text.h"
#include "support/requests.h"
#include "support/temp_folder.h"
#include "tagwright/site_context.h"

namespace tagwright {
namespace {

using Args = std::vector<std::string>;
using std::string_literals::operator""s;

// Each row runs one command line in a site folder, where an argument "$x"
// stands for the path of x in it; `file` is then checked to hold `bytes`.
TEST(Host, CommandLines) {
  const std::string virtualOnly = "ERROR: Virtual file paths can only be used when running in ASP.";
  const struct {
    Args arguments;
    int status;
    std::string out;
    std::string err;  // a part of what the run writes there
    std::string input = "";
    std::string file = "page.asp";
    std::string bytes = "<?xml version=\"1.0\"?>\r\n<%a=1%><p>x</p>\r\n<%b%>\r\n";
  } cases[] = {
      {words("read /page.asp --root $ --element-name=#aspcode --separator=; --content-type "
             "outerMarkup --json"),
       0, "{\"result\":\"<%a=1%>;<%b%>\",\"matchesFound\":2}\n", ""},
      {words("read $page.asp --element-name #aspcode --separator=--"), 0, "a=1--b-",
       "matches: 2\n"},
      {words("read page.asp --no-context --element-name #aspcode --json"), 1,
       "{\"result\":\"" + virtualOnly + "\",\"matchesFound\":-1}\n", ""},
      {Args{"write", "$a.htm", "--element-name", "#aspcode", "--new-content", " a\tb "}, 0, "old",
       "matches: 1\n", "", "a.htm", "<% a\tb %>\r\n"},
      {words("write $b.htm --element-name #aspcode --new-content-file $content"), 0, "old",
       "matches: 1\n", "", "b.htm", "<%A\r\nB\0C\xff\n%>\r\n"s},
      {words("write $c.htm --element-name #aspcode --new-content-file -"), 0, "old", "matches: 1\n",
       "S\r\n\x80", "c.htm", "<%S\r\n\x80%>\r\n"},
      {words("write $d.htm --element-name #aspcode --new-content-file $none"), 2, "",
       "cannot read --new-content-file", "", "d.htm", "<%old%>"},
      {Args{}, 2, "", "tagwright:"},
      {words("read /a.htm --start-instance 32768"), 2, "", "tagwright:"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.arguments));
    TempFolder site;
    site.write("page.asp", "<?xml version=\"1.0\"?>\r\n<%a=1%><p>x</p>\r\n<%b%>\r\n");
    site.write("content", "A\r\nB\0C\xff\n"s);
    for (const char* name : {"a.htm", "b.htm", "c.htm", "d.htm"}) site.write(name, "<%old%>");
    Args arguments = c.arguments;
    for (std::string& argument : arguments) {
      if (argument.starts_with("$")) argument = site.host(argument.substr(1));
    }
    HostRun run = runTagwright(arguments, nullptr, c.input);
    EXPECT_EQ(run.status, c.status) << run.err;
    EXPECT_EQ(run.out, c.out);
    EXPECT_NE(run.err.find(c.err), std::string::npos) << run.err;
    EXPECT_EQ(site.read(c.file).value_or(""), c.bytes);
  }
}

// JSON carries one U+FFFD ("~" in `want`) for each byte that the text model
// keeps as a character of its own, so its strings count the component's
// characters; valid characters, controls included, come through as they are.
TEST(Host, JsonHasOneReplacementPerRawByte) {
  const std::tuple<std::string, std::string> cases[] = {
      // A stray continuation, too few continuations, an overlong form, an
      // encoded surrogate, a code above U+10FFFF, bytes never in UTF-8.
      {"a\x80z\xe4\xb8X\xc0\xaf\xed\xa0\x80\xf4\x90\x80\x80\xc1\xf5\xff", "a~z~~X~~~~~~~~~~~~"},
      {"\xc3\xa9\0\x01\x1f\xe2\x82\xac\xf0\x9f\x98\x80\xef\xbf\xbd"s,
       "\xc3\xa9\0\x01\x1f\xe2\x82\xac\xf0\x9f\x98\x80\xef\xbf\xbd"s},
  };
  for (const auto& [bytes, want] : cases) {
    SCOPED_TRACE(testing::PrintToString(bytes));
    TempFolder site;
    site.write("a.htm", "<p>" + bytes + "</p>\r\n");
    std::string replaced;
    for (char c : want) replaced += c == '~' ? "\xef\xbf\xbd" : std::string(1, c);
    const std::size_t characters = fromUtf8(bytes).size();
    HostRun read = runTagwright({"read", site.host("a.htm"), "--element-name", "p", "--json"});
    HostRun write = runTagwright(
        {"write", site.host("a.htm"), "--element-name", "p", "--new-content", "x", "--json"});
    for (const auto& [run, field] : {std::pair{&read, "result"}, {&write, "errorResult"}}) {
      ASSERT_EQ(run->status, 0) << run->err;
      const std::string text = nlohmann::json::parse(run->out)[field].get<std::string>();
      EXPECT_EQ(text, replaced);
      EXPECT_EQ(fromUtf8(text).size(), characters);
    }
  }
}

// --line-ends, and LineEnds=any in the settings file that TAGWRIGHT_SETTINGS
// names, read a page of LF lines past 32767 characters; in the default mode
// its overflow comes with a hint, which a page without a lone LF does not get.
TEST(Host, LineEnds) {
  TempFolder folder;
  folder.write("lf.htm", repeat("<p>x</p>\n", 5000) + "<p>last</p>\n");
  folder.write("long.htm", repeat("<p>x</p>", 5000) + "<p>last</p>\r\n");
  const std::string hint = "--line-ends=any";
  const struct {
    Args options;
    std::string page;
    std::string settings;
    HostRun want;  // err: a part of it, or "" for no hint
  } cases[] = {
      {{}, "lf.htm", "", {1, "ERROR: Overflow.", hint}},
      {{"--line-ends=any"}, "lf.htm", "", {0, "last", ""}},
      {{}, "lf.htm", "LineEnds=any\n", {0, "last", ""}},
      {{"--line-ends", "crlf"}, "lf.htm", "LineEnds=any\n", {1, "ERROR: Overflow.", hint}},
      {{}, "long.htm", "", {1, "ERROR: Overflow.", ""}},
      {{"--line-ends=lf"}, "lf.htm", "", {2, "", "--line-ends"}},
      // Settings the component cannot be made from end the run.
      {{}, "lf.htm", "BufferLengthCharacters=4294967296\n", {1, "", "BufferLengthCharacters"}},
  };
  ::setenv("TAGWRIGHT_SETTINGS", folder.host("settings.conf").c_str(), 1);
  for (const auto& c : cases) {
    SCOPED_TRACE(c.page + " " + testing::PrintToString(c.options) + c.settings);
    folder.write("settings.conf", c.settings);
    Args arguments{"read", "/" + c.page,       "--root", folder.host(),       "--element-name",
                   "p",    "--start-instance", "5001",   "--count-instances", "1"};
    arguments.insert(arguments.end(), c.options.begin(), c.options.end());
    HostRun run = runTagwright(arguments);
    EXPECT_EQ(run.status, c.want.status);
    EXPECT_EQ(run.out, c.want.out);
    EXPECT_EQ(run.err.find(hint) != std::string::npos, c.want.err.find(hint) != std::string::npos)
        << run.err;
    EXPECT_NE(run.err.find(c.want.err), std::string::npos) << run.err;
  }
  ::unsetenv("TAGWRIGHT_SETTINGS");
  // A rewrite in the mode keeps the LF line ends.
  HostRun run =
      runTagwright({"write", folder.host("lf.htm"), "--element-name", "p", "--start-instance",
                    "5001", "--new-content", "new", "--line-ends=any"});
  EXPECT_EQ(run, (HostRun{0, "last", "matches: 1\n"}));
  EXPECT_EQ(folder.read("lf.htm"), repeat("<p>x</p>\n", 5000) + "<p>new</p>\n");
}

TEST(SiteContext, RefusesEveryClimbAboveTheRoot) {
  // Root, working folder, path, and what it maps to; empty where refused.
  const std::tuple<const char*, const char*, const char*, const char*> cases[] = {
      {"/srv/site", "/srv/site/news", "a.htm", "\\srv\\site\\news\\a.htm"},
      {"/srv/x/../site/", "/", "//x/./y/../a.htm", "\\srv\\site\\x\\a.htm"},
      {"/srv/site", "/", "/../site/a.htm", ""},
      {"/srv/site", "/srv/site/news", "../../a.htm", ""},
      {"/srv/site", "/srv/sitex", "a.htm", ""},
      // The platform takes a backslash for a separator, so the climb is seen.
      {"/srv/site", "/", "/..\\..\\etc", ""},
      {"/srv/site", "/", "/a\\..\\b.htm", "\\srv\\site\\b.htm"},
  };
  for (const auto& [root, workingFolder, path, want] : cases) {
    SCOPED_TRACE(std::string(workingFolder) + " " + path);
    try {
      EXPECT_EQ(SiteContext(root, workingFolder).Server().MapPath(path), want);
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.description(), "Path is outside the site root");
      EXPECT_STREQ(want, "");
    }
  }
}

}  // namespace
}  // namespace tagwright
