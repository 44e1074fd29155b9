// The host's page context: virtual paths mapped against the site root, and
// every way of climbing out of it refused.
#include "site_context.h"

#include <gtest/gtest.h>

#include "platform/failure.h"

namespace tagwright {
namespace {

TEST(SiteContext, MapPath) {
  const struct {
    const char* root;
    const char* workingFolder;
    const char* path;
    const char* want;  // empty: refused
  } cases[] = {
      {"/srv/site", "/", "/a.htm", "\\srv\\site\\a.htm"},
      {"/srv/site", "/srv/site/news", "a.htm", "\\srv\\site\\news\\a.htm"},
      {"/srv/site", "/", "//x/./y/../a.htm", "\\srv\\site\\x\\a.htm"},
      {"/srv/site", "/", "/images/", "\\srv\\site\\images\\"},
      {"/", "/", "/etc/hosts", "\\etc\\hosts"},
      {"/srv/x/../site/", "/", "/a", "\\srv\\site\\a"},
      {"/srv/site", "/", "/../etc/passwd", ""},
      {"/srv/site", "/", "/../site/a.htm", ""},
      {"/srv/site", "/srv/site/news", "../../a.htm", ""},
      {"/srv/site", "/tmp", "a.htm", ""},
      {"/srv/site", "/srv/sitex", "a.htm", ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.workingFolder) + " " + c.path);
    SiteContext context(c.root, c.workingFolder);
    try {
      EXPECT_EQ(context.Server().MapPath(c.path), c.want);
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.description(), "Path is outside the site root");
      EXPECT_STREQ(c.want, "");
    }
  }
}

}  // namespace
}  // namespace tagwright
