#ifndef TAGWRIGHT_FILES_OPEN_DOCUMENT_FILE_H_
#define TAGWRIGHT_FILES_OPEN_DOCUMENT_FILE_H_

#include "platform/int16.h"
#include "platform/platform.h"
#include "platform/text.h"

namespace tagwright {

// Opens `fileName` under the next free file number of this thread, for
// output (created or emptied) or for input. Returns the number, or 0 when
// anything failed: a missing file, a denied access, a folder, no free number.
Int16 openDocumentFile(Platform& platform, TextView fileName, bool forOutput);

}  // namespace tagwright

#endif  // TAGWRIGHT_FILES_OPEN_DOCUMENT_FILE_H_
