#include "platform/host_path.h"
#include "platform/platform.h"
#include "shell/normalize.h"
#include "shell/validate_parameters.h"
#include "tagwright/tagwright.h"

namespace tagwright {
namespace {

// The physical path an operation would open for DocumentName, or the empty
// text where it cannot be mapped.
Text physicalPathOf(ScriptingContext* context, const std::string& DocumentName) {
  Text name = trimmedParameter(DocumentName);
  if (name.empty() || isPhysicalPath(name)) return name;
  if (context == nullptr) return {};
  return fromUtf8(context->Server().MapPath(toUtf8(name)));
}

}  // namespace

std::string Tagwright::hostPathOf(const std::string& DocumentName) const {
  try {
    Text name = physicalPathOf(ScriptingContext_.get(), DocumentName);
    return name.empty() ? std::string() : hostPath(name);
  } catch (...) {
    return {};  // the context refused the path, as it would refuse the operation
  }
}

std::unique_ptr<FileLock> Tagwright::lockForRewrite(const std::string& DocumentName) {
  try {
    Text name = physicalPathOf(ScriptingContext_.get(), DocumentName);
    return name.empty() ? nullptr : platform_.lockFile(name);
  } catch (...) {
    return nullptr;  // a name that cannot be mapped is the operation's to refuse
  }
}

Platform& Tagwright::systemPlatform() { return tagwright::systemPlatform(); }

std::unique_ptr<Platform> Tagwright::streamingPlatform(const std::string& documentPath,
                                                       int descriptor) {
  return systemPlatformStreaming(documentPath, descriptor);
}

}  // namespace tagwright
