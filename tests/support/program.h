#ifndef TAGWRIGHT_TESTS_SUPPORT_PROGRAM_H_
#define TAGWRIGHT_TESTS_SUPPORT_PROGRAM_H_

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <functional>
#include <optional>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "support/requests.h"

namespace tagwright {

// How the program is started: in which working folder, removed once the
// program stands in it when `removeWorkingFolder`, with extra environment
// entries ("NAME=value").
struct ProgramStart {
  std::string workingFolder = "";
  bool removeWorkingFolder = false;
  std::vector<std::string> environment = {};
  // Given: standard input is a pipe that a process of its own fills with it.
  std::optional<std::string> input = std::nullopt;
  // Standard output is a terminal (raw, so that the bytes come as written).
  bool terminal = false;
  // Gets the peak memory of the program, in KiB, as GNU time measures it:
  // a process forked from the test would count the test's memory too.
  long* peakKib = nullptr;
};

// In a child: becomes the `tagwright` program as `start` says, its output
// and errors to `out` and `err`, measured by GNU time into `peakFile` if
// given; a run that hangs is ended after 20 s.
[[noreturn]] inline void execProgram(const std::vector<std::string>& arguments,
                                     const ProgramStart& start, int out, int err,
                                     char* peakFile = nullptr) {
  ::dup2(out, 1);
  ::dup2(err, 2);
  if (start.input) {
    int in[2];
    if (::pipe(in) != 0) ::_exit(126);
    if (::fork() == 0) {
      ::close(in[0]);
      ::close(1);
      ::close(2);
      const std::string& bytes = *start.input;
      for (std::size_t at = 0; at < bytes.size();) {
        ssize_t n = ::write(in[1], bytes.data() + at, bytes.size() - at);
        if (n <= 0) ::_exit(1);
        at += static_cast<std::size_t>(n);
      }
      ::_exit(0);
    }
    ::close(in[1]);
    ::dup2(in[0], 0);
    ::close(in[0]);
  }
  if (!start.workingFolder.empty()) {
    if (::chdir(start.workingFolder.c_str()) != 0) ::_exit(126);
    if (start.removeWorkingFolder && ::rmdir(start.workingFolder.c_str()) != 0) ::_exit(126);
  }
  for (const std::string& entry : start.environment) ::putenv(const_cast<char*>(entry.c_str()));
  std::vector<char*> argv;
  if (peakFile != nullptr) {
    for (const char* word : {"/usr/bin/time", "-f", "%M", "-o"})
      argv.push_back(const_cast<char*>(word));
    argv.push_back(peakFile);
  }
  argv.push_back(const_cast<char*>(TAGWRIGHT_BINARY));
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.data()));
  argv.push_back(nullptr);
  ::alarm(20);
  ::execv(argv[0], argv.data());
  ::_exit(127);
}

// Runs the `tagwright` program itself. The status is its exit status, or
// 128 and the signal that ended it.
inline HostRun runProgram(const std::vector<std::string>& arguments,
                          const ProgramStart& start = {}) {
  int out[2], err[2];
  char peakFile[] = "/tmp/tagwright-peak-XXXXXX";
  if (start.peakKib != nullptr) {
    int fd = ::mkstemp(peakFile);
    if (fd < 0) return {-1, "", "mkstemp"};
    ::close(fd);
  }
  if (::pipe2(err, O_CLOEXEC) != 0) return {-1, "", "pipe"};
  if (start.terminal) {
    termios raw;
    ::cfmakeraw(&raw);
    if (::openpty(&out[0], &out[1], nullptr, &raw, nullptr) != 0) return {-1, "", "openpty"};
    ::fcntl(out[0], F_SETFD, FD_CLOEXEC);
    ::fcntl(out[1], F_SETFD, FD_CLOEXEC);
  } else if (::pipe2(out, O_CLOEXEC) != 0) {
    return {-1, "", "pipe"};
  }
  pid_t pid = ::fork();
  if (pid == 0) execProgram(arguments, start, out[1], err[1], start.peakKib ? peakFile : nullptr);
  ::close(out[1]);
  ::close(err[1]);
  HostRun run{-1, "", ""};
  pollfd fds[] = {{out[0], POLLIN, 0}, {err[0], POLLIN, 0}};
  std::string* texts[] = {&run.out, &run.err};
  for (int open = 2; open > 0;) {
    if (::poll(fds, 2, -1) < 0) continue;
    for (int i = 0; i < 2; ++i) {
      if (fds[i].fd < 0 || fds[i].revents == 0) continue;
      char block[4096];
      ssize_t n = ::read(fds[i].fd, block, sizeof block);
      // A terminal whose last writer is gone reads as an error, not an end.
      if (n > 0) {
        texts[i]->append(block, static_cast<std::size_t>(n));
      } else {
        ::close(fds[i].fd);
        fds[i].fd = -1;
        --open;
      }
    }
  }
  int status = 0;
  ::waitpid(pid, &status, 0);
  if (start.peakKib != nullptr) {
    std::ifstream(peakFile) >> *start.peakKib;
    ::unlink(peakFile);
  }
  run.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  return run;
}

// Runs the program in `workingFolder`, its output thrown away, to its end
// once and then `kills` times more, each killed at a random instant within
// the first run's time and a tenth; `prepare()` lays out the files before
// each run and `check(killed)` looks at them after.
inline void killAtRandomInstants(const std::vector<std::string>& arguments,
                                 const std::string& workingFolder, int kills,
                                 const std::function<void()>& prepare,
                                 const std::function<void(bool)>& check) {
  std::mt19937 random(std::random_device{}());
  long micros = 0;
  for (int round = 0; round <= kills; ++round) {
    prepare();
    const auto started = std::chrono::steady_clock::now();
    const pid_t pid = ::fork();
    if (pid == 0) {
      const int devNull = ::open("/dev/null", O_WRONLY);
      execProgram(arguments, {.workingFolder = workingFolder}, devNull, devNull);
    }
    const long wait = std::uniform_int_distribution<long>(0, micros + micros / 10)(random);
    SCOPED_TRACE(round == 0 ? "run to its end" : "killed after " + std::to_string(wait) + " us");
    if (round > 0) {
      std::this_thread::sleep_for(std::chrono::microseconds(wait));
      ::kill(pid, SIGKILL);
    }
    int status = 0;
    ::waitpid(pid, &status, 0);
    if (round == 0) {
      micros = std::chrono::duration_cast<std::chrono::microseconds>(
                   std::chrono::steady_clock::now() - started)
                   .count();
      ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    }
    check(round > 0);
  }
}

}  // namespace tagwright

#endif  // TAGWRIGHT_TESTS_SUPPORT_PROGRAM_H_
