#ifndef TAGWRIGHT_FILES_DELETE_FILE_H_
#define TAGWRIGHT_FILES_DELETE_FILE_H_

#include "platform/platform.h"
#include "platform/text.h"

namespace tagwright {

// Deletes every plain file that `fileNamePattern` names; its last component
// may hold "*" and "?". Returns true when nothing matching is left, whether
// files were removed or none was there (a folder, or a hidden file under a
// wildcard, is never matched). Returns false when the search or a delete
// failed; what was removed before that stays removed. Never throws a Failure.
//   deleteFile(platform, U"C:\\web\\~1117*.tmp")
bool deleteFile(Platform& platform, TextView fileNamePattern);

// Deletes the plain file of exactly the name `fileName`, whose "*" and "?"
// are characters of the name: a document's own name must not reach beyond
// itself. Returns true when no plain file of that name is left, false when
// it could not be deleted. Never throws a Failure.
//   deleteNamedFile(platform, U"C:\\web\\a*.bak")  // never touches abc.bak
bool deleteNamedFile(Platform& platform, TextView fileName);

}  // namespace tagwright

#endif  // TAGWRIGHT_FILES_DELETE_FILE_H_
