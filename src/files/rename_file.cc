#include "files/rename_file.h"

namespace tagwright {

bool renameFile(Platform& platform, TextView fromName, TextView toName) {
  try {
    platform.renameFile(fromName, toName);
    return true;
  } catch (const Failure&) {
    return false;
  }
}

}  // namespace tagwright
