#include "unified_diff.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ostream>
#include <vector>

extern char** environ;

namespace tagwright {
namespace {

// A private temporary file that is removed with this object.
class TemporaryFile {
 public:
  TemporaryFile() {
    const char* folder = std::getenv("TMPDIR");
    path_ = std::string(folder != nullptr && *folder != '\0' ? folder : "/tmp") +
            "/tagwright-new-XXXXXX";
    fd_ = ::mkostemp(path_.data(), O_CLOEXEC);
  }
  ~TemporaryFile() {
    if (fd_ < 0) return;
    ::close(fd_);
    ::unlink(path_.c_str());
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  bool write(std::string_view bytes) {
    if (fd_ < 0) return false;
    while (!bytes.empty()) {
      ssize_t n = ::write(fd_, bytes.data(), bytes.size());
      if (n < 0 && errno == EINTR) continue;
      if (n <= 0) return false;
      bytes.remove_prefix(static_cast<std::size_t>(n));
    }
    return true;
  }
  const std::string& path() const { return path_; }

 private:
  std::string path_;
  int fd_ = -1;
};

}  // namespace

int printUnifiedDiff(const std::string& originalPath, std::string_view newDocument,
                     const std::string& name, std::ostream& out, std::ostream& err) {
  TemporaryFile newFile;
  if (!newFile.write(newDocument)) {
    err << "tagwright: cannot write a temporary file for the diff: " << std::strerror(errno)
        << "\n";
    return 2;
  }
  int pipeFds[2];
  if (::pipe2(pipeFds, O_CLOEXEC) != 0) {
    err << "tagwright: cannot run diff: " << std::strerror(errno) << "\n";
    return 2;
  }
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, pipeFds[1], STDOUT_FILENO);
  const std::string oldLabel = "a/" + name, newLabel = "b/" + name;
  std::vector<std::string> arguments = {"diff",       "-u",          "--text", "--label",
                                        oldLabel,     "--label",     newLabel, "--",
                                        originalPath, newFile.path()};
  std::vector<char*> argv;
  for (std::string& argument : arguments) argv.push_back(argument.data());
  argv.push_back(nullptr);
  pid_t pid = 0;
  int spawned = ::posix_spawnp(&pid, "diff", &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  ::close(pipeFds[1]);
  if (spawned != 0) {
    ::close(pipeFds[0]);
    err << "tagwright: cannot run diff: " << std::strerror(spawned) << "\n";
    return 2;
  }
  char block[64 * 1024];
  for (;;) {
    ssize_t n = ::read(pipeFds[0], block, sizeof block);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) break;
    out.write(block, n);
  }
  ::close(pipeFds[0]);
  int status = 0;
  while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
  }
  int code = WIFEXITED(status) ? WEXITSTATUS(status) : 2;
  if (code > 1) err << "tagwright: diff failed on " << originalPath << "\n";
  return code > 1 ? 2 : code;
}

}  // namespace tagwright
