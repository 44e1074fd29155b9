#include "files/delete_file.h"

namespace tagwright {

bool deleteFile(Platform& platform, TextView fileNamePattern) {
  try {
    if (platform.firstMatchingFile(fileNamePattern)) platform.deleteMatchingFiles(fileNamePattern);
    return true;
  } catch (const Failure&) {
    return false;
  }
}

bool deleteNamedFile(Platform& platform, TextView fileName) {
  try {
    platform.deleteNamedFile(fileName);
    return true;
  } catch (const Failure&) {
    return false;
  }
}

}  // namespace tagwright
