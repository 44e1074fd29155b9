#include "unified_diff.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ostream>
#include <vector>

extern char** environ;

namespace tagwright {

int printUnifiedDiff(const std::string& originalPath, const std::string& newPath,
                     const std::string& name, std::ostream& out, std::ostream& err) {
  int pipeFds[2];
  if (::pipe2(pipeFds, O_CLOEXEC) != 0) {
    err << "tagwright: cannot run diff: " << std::strerror(errno) << "\n";
    return 2;
  }
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, pipeFds[1], STDOUT_FILENO);
  const std::string oldLabel = "a/" + name, newLabel = "b/" + name;
  std::vector<std::string> arguments = {"diff",    "-u",     "--text", "--label",    oldLabel,
                                        "--label", newLabel, "--",     originalPath, newPath};
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
