// The host's page context: virtual paths mapped against the site root, and
// every way of climbing out of it refused.
#include "site_context.h"

#include <gtest/gtest.h>

#include "platform/failure.h"

namespace tagwright {
namespace {

TEST(SiteContext, MapsVirtualPaths) {
  struct Case {
    const char* name;
    const char* root;
    const char* workingFolder;
    const char* path;
    const char* want;
  };
  const Case cases[] = {
      {"FromRoot", "/srv/site", "/", "/a.htm", "\\srv\\site\\a.htm"},
      {"RelativeFromWorkingFolder", "/srv/site", "/srv/site/news", "a.htm",
       "\\srv\\site\\news\\a.htm"},
      {"DotsResolvedByName", "/srv/site", "/", "/x/./y/../a.htm", "\\srv\\site\\x\\a.htm"},
      {"RepeatedSlashes", "/srv/site", "/", "//x///a.htm", "\\srv\\site\\x\\a.htm"},
      {"TrailingSlash", "/srv/site", "/", "/images/", "\\srv\\site\\images\\"},
      {"RootItself", "/srv/site", "/", "/", "\\srv\\site\\"},
      {"HostRoot", "/", "/", "/etc/hosts", "\\etc\\hosts"},
      {"RootWithDots", "/srv/x/../site/", "/", "/a", "\\srv\\site\\a"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    SiteContext context(c.root, c.workingFolder);
    EXPECT_EQ(context.Server().MapPath(c.path), c.want);
  }
}

TEST(SiteContext, RefusesPathsOutsideTheRoot) {
  struct Case {
    const char* name;
    const char* workingFolder;
    const char* path;
  };
  const Case cases[] = {
      {"ClimbsAboveRoot", "/", "/../etc/passwd"},
      {"ClimbsAndComesBack", "/", "/../site/a.htm"},
      {"RelativeClimb", "/srv/site/news", "../../a.htm"},
      {"WorkingFolderOutside", "/tmp", "a.htm"},
      {"WorkingFolderIsSibling", "/srv/sitex", "a.htm"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    SiteContext context("/srv/site", c.workingFolder);
    try {
      context.Server().MapPath(c.path);
      ADD_FAILURE() << "served " << c.path;
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.description(), "Path is outside the site root");
    }
  }
}

}  // namespace
}  // namespace tagwright
