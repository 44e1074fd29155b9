// `tagwright serve` in the program that carries no HTTP layer: the options go
// to `tagwright-serve`, which replaces this process and serves.
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

#include "serve/serve_command.h"

namespace tagwright {
namespace {

// Beside this program in the build folder; in its libexec folder once installed.
std::vector<std::filesystem::path> servePrograms() {
  std::error_code failed;
  const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", failed);
  if (failed) return {};
  const std::filesystem::path folder = self.parent_path();
  return {folder / "tagwright-serve", folder / TAGWRIGHT_LIBEXEC_FROM_BINDIR / "tagwright-serve"};
}

}  // namespace

int runServe(const ServeOptions& options, std::ostream& err) {
  // "--name=value" keeps a value that begins with "-" a value.
  std::vector<std::string> arguments = {
      "tagwright-serve",
      "serve",
      "--root=" + options.root,
      "--listen=" + options.listen,
      "--token-file=" + options.tokenFile,
      "--threads=" + std::to_string(options.threads),
      "--max-body=" + std::to_string(options.maxBodyBytes),
      "--timeout=" + std::to_string(options.timeoutSeconds),
      "--request-timeout=" + std::to_string(options.requestTimeoutSeconds)};
  if (options.publicRead) arguments.emplace_back("--public-read");
  std::vector<char*> argv;
  for (std::string& argument : arguments) argv.push_back(argument.data());
  argv.push_back(nullptr);
  err.flush();
  int lastError = ENOENT;
  for (const std::filesystem::path& program : servePrograms()) {
    ::execv(program.c_str(), argv.data());
    lastError = errno;
  }
  err << "tagwright serve: cannot start tagwright-serve: " << std::strerror(lastError) << "\n";
  return 2;
}

}  // namespace tagwright
