#ifndef TAGWRIGHT_SITE_CONTEXT_H_
#define TAGWRIGHT_SITE_CONTEXT_H_

#include <string>
#include <vector>

#include "tagwright/export.h"
#include "tagwright/tagwright.h"

namespace tagwright {

// A page context that maps a virtual path against a
// site root. A path that begins with "/" is taken from the root, any other
// from the working folder. "." and ".." are resolved by their names alone
// (links are not followed), repeated "/" count as one, and a trailing "/"
// comes back as a trailing "\". A ".." that climbs above the root at any
// point, and a result outside the root, throw: such a path is never served.
//   SiteContext("/srv/site", "/").Server().MapPath("/a/../b.htm") == "\\srv\\site\\b.htm"
class TAGWRIGHT_EXPORT SiteContext : public ScriptingContext, private PageServer {
 public:
  // `root` and `workingFolder` are absolute host paths.
  SiteContext(const std::string& root, const std::string& workingFolder);

  PageServer& Server() override { return *this; }

 private:
  std::string MapPath(const std::string& path) override;

  std::vector<std::string> root_;
  std::vector<std::string> workingFolder_;
};

}  // namespace tagwright

#endif  // TAGWRIGHT_SITE_CONTEXT_H_
