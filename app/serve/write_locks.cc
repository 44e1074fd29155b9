#include "serve/write_locks.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tagwright {
namespace {

// The advisory lock of the file that now stands under `path`, or -1 when
// there is none to lock; the component reports a missing document itself.
int lockDocumentFile(const std::string& path) {
  for (;;) {
    int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
    if (fd < 0) return -1;
    if (::flock(fd, LOCK_EX) != 0) {
      ::close(fd);
      return -1;
    }
    struct stat held {
    }, named{};
    if (::fstat(fd, &held) == 0 && ::stat(path.c_str(), &named) == 0 &&
        held.st_ino == named.st_ino && held.st_dev == named.st_dev) {
      return fd;
    }
    ::close(fd);
    // A rewrite renamed a new file into place while this one waited.
    if (::access(path.c_str(), F_OK) != 0) return -1;
  }
}

}  // namespace

WriteLocks::Held::Held(Held&& other) noexcept
    : inProcess_(std::move(other.inProcess_)), fileLock_(other.fileLock_) {
  other.fileLock_ = -1;
}

WriteLocks::Held::~Held() {
  if (fileLock_ >= 0) ::close(fileLock_);
}

WriteLocks::Held WriteLocks::lock(const std::string& resolvedPath) {
  std::mutex* document;
  {
    std::lock_guard<std::mutex> guard(mapMutex_);
    auto& entry = documents_[resolvedPath];
    if (!entry) entry = std::make_unique<std::mutex>();
    document = entry.get();
  }
  std::unique_lock<std::mutex> inProcess(*document);
  return Held(std::move(inProcess), lockDocumentFile(resolvedPath));
}

}  // namespace tagwright
