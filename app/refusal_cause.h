#ifndef TAGWRIGHT_APP_REFUSAL_CAUSE_H_
#define TAGWRIGHT_APP_REFUSAL_CAUSE_H_

#include <iosfwd>
#include <string>

#include "tagwright/tagwright.h"

namespace tagwright {

// The page context a command line runs with, as the host made it.
struct ContextSetting {
  bool present = true;
  std::string root;
  std::string workingFolder;  // empty when it is gone
  bool followLinksOut = false;
};

// When `answer` is the component's failure that names no cause and the page
// context of `instance` refuses the virtual path `document`, adds one line on `err` with
// what the host can see of it: the path as mapped, the root, and the rule
// that refused it. Without a page context, says that a virtual path needs
// one. Prints nothing for any other answer.
void explainRefusal(const std::string& answer, const std::string& document,
                    const ContextSetting& context, const Tagwright& instance, std::ostream& err);

}  // namespace tagwright

#endif  // TAGWRIGHT_APP_REFUSAL_CAUSE_H_
