#ifndef TAGWRIGHT_APP_SERVE_CONFINEMENT_H_
#define TAGWRIGHT_APP_SERVE_CONFINEMENT_H_

#include <memory>
#include <string>

#include "serve/checked_context.h"
#include "tagwright/tagwright.h"

namespace tagwright {

// What the page host adds to the component's own path rules, so that no
// request reaches a file outside the site root. The component accepts
// physical paths and, by the administrator's settings, may follow links out
// of the root; here every physical path is refused, and the page context
// refuses a name whose resolved target (links followed) lies outside the
// resolved root.
class Confinement {
 public:
  // A name that passed, with the host path it maps to (its target, links
  // followed, lies inside the root), or a refusal with its HTTP status and a
  // message for the client.
  struct Verdict {
    int status = 0;  // 0: passed
    std::string refusal;
    std::string mapped;
    bool passed() const { return status == 0; }
  };

  // REQUIRES: `resolvedRoot` is the real path of an existing folder.
  explicit Confinement(std::string resolvedRoot);

  // The page context that maps virtual paths under the root; hand it to
  // every instance, so that the component maps exactly what was checked.
  std::shared_ptr<ScriptingContext> context() const { return context_; }
  const std::string& root() const { return root_; }

  // A document or folder name as the API gets it ("/news.htm", "images").
  // A name that does not exist passes when its nearest existing folder lies
  // inside the root; the component then reports it missing.
  Verdict name(const std::string& virtualName) const;
  // The same, mapped through an instance's context, which keeps the mapping
  // for the component's own of the same name.
  Verdict name(const std::string& virtualName, CheckedContext& through) const;
  // A listing pattern: a plain file name with * and ?, no folder in it.
  static Verdict pattern(const std::string& filePattern);
  // A URL path of a static file, already percent-decoded.
  Verdict urlPath(const std::string& path) const;

 private:
  std::string root_;
  template <typename MapName>
  Verdict checkedName(const std::string& virtualName, MapName map) const;

  std::shared_ptr<ScriptingContext> context_;
};

}  // namespace tagwright

#endif  // TAGWRIGHT_APP_SERVE_CONFINEMENT_H_
