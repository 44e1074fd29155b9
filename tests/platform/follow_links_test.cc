// Links followed along a path on the real file system: a path with no link
// takes a shorter way there than one with a link or a missing part.
#include <gtest/gtest.h>
#include <unistd.h>

#include "platform/host_path.h"
#include "platform/platform.h"
#include "support/temp_folder.h"

namespace tagwright {
namespace {

TEST(FollowLinksAlong, ResolvesWhatExistsAndKeepsTheRestByName) {
  TempFolder folder;
  folder.write("site/page.htm", "p");
  folder.write("out/secret.htm", "s");
  ASSERT_EQ(::symlink("../out", folder.host("site/linkdir").c_str()), 0);
  ASSERT_EQ(::symlink("page.htm", folder.host("site/alias.htm").c_str()), 0);
  const struct {
    std::string path, want;
  } cases[] = {
      {"site/page.htm", "site/page.htm"},
      {"site//./page.htm", "site/page.htm"},
      {"site/../site/page.htm", "site/page.htm"},
      {"site/", "site"},
      {"site/alias.htm", "site/page.htm"},
      {"site/linkdir/secret.htm", "out/secret.htm"},
      {"site/linkdir/../site/page.htm", "site/page.htm"},
      {"site/linkdir/missing/x.htm", "out/missing/x.htm"},
      {"site/missing/../page.htm", "site/page.htm"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.path);
    Text followed = systemPlatform().followLinksAlong(physicalPathOf(folder.host(c.path)));
    EXPECT_EQ(toUtf8(followed), folder.physical(c.want));
  }
}

}  // namespace
}  // namespace tagwright
