#include "platform/host_path.h"
#include "shell/normalize.h"
#include "shell/validate_parameters.h"
#include "tagwright/tagwright.h"

namespace tagwright {

std::string Tagwright::hostPathOf(const std::string& DocumentName) const {
  try {
    Text name = trimmedParameter(DocumentName);
    if (name.empty()) return {};
    if (!isPhysicalPath(name)) {
      if (ScriptingContext_ == nullptr) return {};
      name = fromUtf8(ScriptingContext_->Server().MapPath(toUtf8(name)));
      if (name.empty()) return {};
    }
    return hostPath(name);
  } catch (...) {
    return {};  // the context refused the path, as it would refuse the operation
  }
}

}  // namespace tagwright
