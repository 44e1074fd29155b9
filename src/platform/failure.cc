#include "platform/failure.h"

#include <cerrno>

namespace tagwright {

Failure Failure::fromErrno(int error) {
  switch (error) {
    case ENOENT:
      return Failure(Kind::kFileNotFound);
    case ENOTDIR:
      return Failure(Kind::kPathNotFound);
    case EACCES:
    case EPERM:
    case EROFS:
      return Failure(Kind::kPermissionDenied);
    case ENOSPC:
    case EDQUOT:
      return Failure(Kind::kDiskFull);
    case EEXIST:
      return Failure(Kind::kFileExists);
    case EIO:
      return Failure(Kind::kDeviceIo);
    case EMFILE:
    case ENFILE:
      return Failure(Kind::kTooManyFiles);
    default:
      return Failure(Kind::kFileAccess);
  }
}

std::string_view Failure::description() const { return what(); }

const char* Failure::what() const noexcept {
  switch (kind_) {
    case Kind::kNumbered:
      return "Numbered failure";
    case Kind::kOverflow:
      return "Overflow";
    case Kind::kInvalidArgument:
      return "Invalid procedure call or argument";
    case Kind::kFileNotFound:
      return "File not found";
    case Kind::kPathNotFound:
      return "Path not found";
    case Kind::kPermissionDenied:
      return "Permission denied";
    case Kind::kDiskFull:
      return "Disk full";
    case Kind::kFileExists:
      return "File already exists";
    case Kind::kDeviceIo:
      return "Device I/O error";
    case Kind::kTooManyFiles:
      return "Too many files";
    case Kind::kOutsideSiteRoot:
      return "Path is outside the site root";
    case Kind::kFileAccess:
      return "Path/File access error";
  }
  return "Path/File access error";
}

}  // namespace tagwright
