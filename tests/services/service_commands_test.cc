// The `meta` and `list` commands of the host: options passed as given,
// bare and JSON output, the match count and the exit status.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "host.h"
#include "services/meta_example.h"
#include "support/fake_platform.h"

namespace tagwright {
namespace {

struct Run {
  int status;
  std::string out;
  std::string err;
};

Run runOn(FakePlatform& platform, const std::vector<std::string>& arguments) {
  std::istringstream in;
  std::ostringstream out, err;
  int status = runHost(arguments, in, out, err, &platform);
  return {status, out.str(), err.str()};
}

struct CommandCase {
  const char* name;
  std::vector<std::string> arguments;
  std::string out;
  std::string err;
  int status;
};

void expectRuns(const std::vector<CommandCase>& cases) {
  for (const CommandCase& c : cases) {
    SCOPED_TRACE(c.name);
    FakePlatform platform;
    platform.files["/doc.htm"] = kMetaExample;
    for (const char* name : {"/data/a.txt", "/data/b.txt", "/data/.hidden"}) {
      platform.files[name] = "x";
    }
    Run got = runOn(platform, c.arguments);
    EXPECT_EQ(got.out, c.out);
    EXPECT_EQ(got.err, c.err);
    EXPECT_EQ(got.status, c.status);
  }
}

TEST(MetaCommand, ExampleAsJson) {
  expectRuns({
      {"AllTags",
       {"meta", "C:\\doc.htm", "--separator", ";", "--json"},
       "{\"result\":\"Robots$eq$none;author$eq$The Editors;description$eq$A page;"
       "page-author$eq$Staff\",\"matchesFound\":4}\n",
       "",
       0},
      {"NameEndsInAuthor",
       {"meta", "C:\\doc.htm", "--meta-name", "author", "--separator", ";", "--json"},
       "{\"result\":\"author$eq$The Editors;page-author$eq$Staff\",\"matchesFound\":2}\n",
       "",
       0},
      {"SecondAuthor",
       {"meta", "C:\\doc.htm", "--meta-name", "author", "--start-instance", "2", "--separator", ";",
        "--json"},
       "{\"result\":\"page-author$eq$Staff\",\"matchesFound\":1}\n",
       "",
       0},
      {"SecondOfAllOnlyOne",
       {"meta", "C:\\doc.htm", "--start-instance", "2", "--count-instances", "1", "--separator",
        ";", "--json"},
       "{\"result\":\"author$eq$The Editors\",\"matchesFound\":1}\n",
       "",
       0},
  });
}

TEST(MetaCommand, OptionsAndOutput) {
  expectRuns({
      {"DefaultSeparatorIsNul",
       {"meta", "C:\\doc.htm", "--meta-name", "author", "--equals", "=", "--json"},
       "{\"result\":\"author=The Editors\\u0000page-author=Staff\",\"matchesFound\":2}\n",
       "",
       0},
      {"BareOutputAndDashSeparator",
       {"meta", "C:\\doc.htm", "--meta-name=author", "--separator=--"},
       "author$eq$The Editors--page-author$eq$Staff-",
       "matches: 2\n",
       0},
      {"VirtualPathUnderRoot",
       {"meta", "/doc.htm", "--root", "/", "--meta-name", "robots"},
       "Robots$eq$none",
       "matches: 1\n",
       0},
      {"FailureExitsWithOne",
       {"meta", "C:\\nope.htm", "--json"},
       "{\"result\":\"ERROR: Cannot open document file: 'C:\\\\nope.htm'.\",\"matchesFound\":-1}\n",
       "",
       1},
  });
}

TEST(ListCommand, OptionsAndOutput) {
  expectRuns({
      {"CommaAsJson",
       {"list", "C:\\data", "--pattern", "*.txt", "--separator", ",", "--json"},
       "{\"result\":\"a.txt,b.txt\",\"matchesFound\":2}\n",
       "",
       0},
      {"DefaultSeparatorByteForByte",
       {"list", "C:\\data"},
       "a.txt<BR>\r\nb.txt<BR>\r",
       "matches: 2\n",
       0},
      {"VirtualPathUnderRoot",
       {"list", "/data", "--root", "/", "--separator=;"},
       "a.txt;b.txt",
       "matches: 2\n",
       0},
      {"MissingFolder",
       {"list", "C:\\nope", "--json"},
       "{\"result\":\"\",\"matchesFound\":0}\n",
       "",
       0},
      {"NoContext",
       {"list", "/data", "--no-context"},
       "ERROR: Virtual file paths can only be used when running in ASP.",
       "matches: -1\n",
       1},
      {"OutsideRoot",
       {"list", "/../etc", "--root", "/data"},
       "ERROR: Path is outside the site root.",
       "matches: -1\n",
       1},
  });
}

}  // namespace
}  // namespace tagwright
