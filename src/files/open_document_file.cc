#include "files/open_document_file.h"

namespace tagwright {

Int16 openDocumentFile(Platform& platform, TextView fileName, bool forOutput) {
  try {
    Int16 fileNumber = platform.nextFreeFileNumber();
    if (forOutput) {
      platform.openForOutput(fileNumber, fileName);
    } else {
      platform.openForInput(fileNumber, fileName);
    }
    return fileNumber;
  } catch (const Failure&) {
    return 0;
  }
}

}  // namespace tagwright
