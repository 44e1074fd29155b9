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

// The arguments go on as the user gave them: rebuilt option by option, a
// new option could be dropped on the way, as --request-timeout once was.
int runServe(const ServeOptions&, const std::vector<std::string>& given, std::ostream& err) {
  std::vector<std::string> arguments = {"tagwright-serve"};
  arguments.insert(arguments.end(), given.begin(), given.end());
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
