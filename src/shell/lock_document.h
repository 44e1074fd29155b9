#ifndef TAGWRIGHT_SHELL_LOCK_DOCUMENT_H_
#define TAGWRIGHT_SHELL_LOCK_DOCUMENT_H_

#include <memory>
#include <string>

#include "platform/platform.h"
#include "tagwright/tagwright.h"

namespace tagwright {

// For hosts: the lock that serialises rewrites of one document across
// processes. The component takes none; a host holds this one around each
// writeXPointer call, so that two rewrites of one document never overlap and
// each one's backup is the document that it replaced. The name is mapped as
// the operation maps it: trimmed, and a virtual path through `context`.
// Returns null, having waited for nothing, when the name does not map to a
// plain file; the operation then reports its own failure. Never throws.
//   std::unique_ptr<FileLock> lock = lockDocumentForRewrite(platform, context, name);
//   instance.writeXPointer(newContent, name, ...);
std::unique_ptr<FileLock> lockDocumentForRewrite(Platform& platform, ScriptingContext* context,
                                                 const std::string& DocumentName);

}  // namespace tagwright

#endif  // TAGWRIGHT_SHELL_LOCK_DOCUMENT_H_
