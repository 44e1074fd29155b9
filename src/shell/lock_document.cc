#include "shell/lock_document.h"

#include "shell/normalize.h"
#include "shell/validate_parameters.h"

namespace tagwright {

std::unique_ptr<FileLock> lockDocumentForRewrite(Platform& platform, ScriptingContext* context,
                                                 const std::string& DocumentName) {
  try {
    Text name = trimmedParameter(DocumentName);
    if (name.empty()) return nullptr;
    if (!isPhysicalPath(name)) {
      if (context == nullptr) return nullptr;
      name = fromUtf8(context->Server().MapPath(toUtf8(name)));
      if (name.empty()) return nullptr;
    }
    return platform.lockFile(name);
  } catch (...) {
    // A name that cannot be mapped is the operation's to refuse.
    return nullptr;
  }
}

}  // namespace tagwright
