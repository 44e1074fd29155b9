#ifndef TAGWRIGHT_FILES_SPLIT_FILE_PATH_H_
#define TAGWRIGHT_FILES_SPLIT_FILE_PATH_H_

#include "platform/text.h"

namespace tagwright {

// Takes `path` apart by text alone, looking at no disk, and returns its
// folder part with the last "\" (or the empty text). `baseName` becomes the
// name without its extension and `extensionPart` what follows the last dot.
// The last dot of the whole path is found first and only then the folder,
// and only "\" separates folders, so odd paths give odd parts:
//   C:\web\page.htm     -> folder C:\web\,  base page,        extension htm
//   C:\web.old\page     -> folder C:\,      base web,         extension old\page
//   c:/web/page.htm     -> folder empty,    base c:/web/page, extension htm
// Throws the overflow Failure when the dot or the backslash lies beyond
// position 32767.
Text splitFilePath(TextView path, Text& baseName, Text& extensionPart);

}  // namespace tagwright

#endif  // TAGWRIGHT_FILES_SPLIT_FILE_PATH_H_
