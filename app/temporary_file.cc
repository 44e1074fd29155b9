#include "temporary_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <ostream>

namespace tagwright {

TemporaryFile::TemporaryFile() {
  const char* folder = std::getenv("TMPDIR");
  path_ =
      std::string(folder != nullptr && *folder != '\0' ? folder : "/tmp") + "/tagwright-new-XXXXXX";
  fd_ = ::mkostemp(path_.data(), O_CLOEXEC);
}

TemporaryFile::~TemporaryFile() {
  if (fd_ < 0) return;
  ::close(fd_);
  ::unlink(path_.c_str());
}

bool TemporaryFile::clear() { return fd_ >= 0 && ::ftruncate(fd_, 0) == 0; }

bool TemporaryFile::append(std::string_view bytes) {
  if (fd_ < 0) return false;
  while (!bytes.empty()) {
    ssize_t n = ::write(fd_, bytes.data(), bytes.size());
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(n));
  }
  return true;
}

bool TemporaryFile::copyTo(std::ostream& out) const {
  if (fd_ < 0) return false;
  char block[64 * 1024];
  for (off_t at = 0;;) {
    ssize_t n = ::pread(fd_, block, sizeof block, at);
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) return false;
    if (n == 0) return true;
    out.write(block, n);
    at += n;
  }
}

}  // namespace tagwright
