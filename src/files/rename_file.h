#ifndef TAGWRIGHT_FILES_RENAME_FILE_H_
#define TAGWRIGHT_FILES_RENAME_FILE_H_

#include "platform/platform.h"
#include "platform/text.h"

namespace tagwright {

// Gives the file `fromName` the name `toName`. Returns false, changing no
// file, when `fromName` is missing, `toName` already exists, or the platform
// refuses; never replaces a file and never throws a Failure.
bool renameFile(Platform& platform, TextView fromName, TextView toName);

}  // namespace tagwright

#endif  // TAGWRIGHT_FILES_RENAME_FILE_H_
