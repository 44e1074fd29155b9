#include "plain_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace tagwright {

std::optional<std::string> readPlainFile(const std::string& path) {
  // Tested by name first so that no device is even opened, and again once
  // open, since the name may have changed in between.
  struct stat st;
  if (::stat(path.c_str(), &st) != 0 || !S_ISREG(st.st_mode)) return std::nullopt;
  int fd = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  if (fd < 0) return std::nullopt;
  std::optional<std::string> bytes;
  if (::fstat(fd, &st) == 0 && S_ISREG(st.st_mode)) {
    bytes.emplace();
    // Room of the file's size: a content as long as a document is held
    // once, not grown by doubling.
    bytes->reserve(static_cast<std::size_t>(st.st_size));
    char block[65536];
    for (;;) {
      ssize_t n = ::read(fd, block, sizeof block);
      if (n > 0) {
        bytes->append(block, static_cast<std::size_t>(n));
      } else if (n == 0) {
        break;
      } else if (errno != EINTR) {
        bytes.reset();
        break;
      }
    }
  }
  ::close(fd);
  return bytes;
}

}  // namespace tagwright
