#ifndef TAGWRIGHT_APP_SERVE_CHECKED_CONTEXT_H_
#define TAGWRIGHT_APP_SERVE_CHECKED_CONTEXT_H_

#include <memory>
#include <string>

#include "tagwright/tagwright.h"

namespace tagwright {

// The page context of one instance of the pool: the site's own, except that
// the name the host has just checked for a request is mapped once, not once
// by the host and again by the component. Mapping a name follows the links
// along it, which costs system calls; the component opens the document by
// the mapped path in any case, so reusing the host's result within one
// request leaves the confinement as it was.
class CheckedContext final : public ScriptingContext, private PageServer {
 public:
  explicit CheckedContext(std::shared_ptr<ScriptingContext> site) : site_(std::move(site)) {}

  PageServer& Server() override { return *this; }

  // Maps `name` by the site's rules (throwing as they do) and keeps the
  // result for the component's mapping of the same name, until forget().
  const std::string& check(const std::string& name);
  // Ends the request: every later mapping goes to the site's rules again.
  void forget() { checked_ = false; }

 private:
  std::string MapPath(const std::string& path) override;

  std::shared_ptr<ScriptingContext> site_;
  bool checked_ = false;
  std::string checkedName_;
  std::string mapped_;
};

}  // namespace tagwright

#endif  // TAGWRIGHT_APP_SERVE_CHECKED_CONTEXT_H_
