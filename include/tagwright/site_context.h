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
// The root is a confinement also for links: a path whose target, links
// followed, lies outside the root (links in it followed too) is refused the
// same way, unless the site is built with such links (`followLinksOut`).
//   SiteContext("/srv/site", "/").Server().MapPath("/a/../b.htm") == "\\srv\\site\\b.htm"
class TAGWRIGHT_EXPORT SiteContext : public ScriptingContext, private PageServer {
 public:
  // `root` is a host path, taken from `workingFolder` unless absolute.
  // `workingFolder` is the process's absolute working folder as the system
  // gives it (links resolved), or empty when it is gone: paths that need it
  // then throw "Path not found".
  // Links are followed through `platform`, the system's unless a test
  // gives its own.
  SiteContext(const std::string& root, const std::string& workingFolder,
              bool followLinksOut = false, Platform& platform = Tagwright::systemPlatform());

  PageServer& Server() override { return *this; }

 private:
  std::string MapPath(const std::string& path) override;
  // The working folder below the root as given, whether it is reached by
  // the root's own names or by the folders its links lead to.
  std::vector<std::string> workingFolderInRoot() const;
  // The path with every link that exists in it followed; the part that does
  // not exist yet is taken by its names.
  std::vector<std::string> resolved(const std::string& path) const;

  Platform& platform_;
  std::vector<std::string> root_;
  std::vector<std::string> resolvedRoot_;
  std::vector<std::string> workingFolder_;
  bool rootKnown_;
  bool workingFolderKnown_;
  bool followLinksOut_;
};

}  // namespace tagwright

#endif  // TAGWRIGHT_SITE_CONTEXT_H_
