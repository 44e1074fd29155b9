#ifndef TAGWRIGHT_APP_SERVE_SERVE_COMMAND_H_
#define TAGWRIGHT_APP_SERVE_SERVE_COMMAND_H_

#include <CLI/CLI.hpp>
#include <cstddef>
#include <iosfwd>
#include <string>
#include <vector>

namespace tagwright {

// What `tagwright serve` is started with.
struct ServeOptions {
  std::string root;
  std::string listen = "127.0.0.1:8080";
  std::string tokenFile;
  bool publicRead = false;
  int threads = 16;
  std::size_t maxBodyBytes = 1 << 20;
  int timeoutSeconds = 5;          // idle before a next request, and per answer sent
  int requestTimeoutSeconds = 20;  // for the whole of one request to arrive
  std::size_t loops = 0;           // event loops; 0: four a processor (no option sets it)
};

// Adds the `serve` subcommand with its options to `app`.
CLI::App* addServeCommand(CLI::App& app, ServeOptions& options);

// Serves the site until the process ends. Returns 2 when it cannot start
// (a root that is no folder, an empty or unreadable token file, an address
// in use), after saying why on `err`; the access log goes to `err` too.
//
// The HTTP layer and the TLS library it brings are loaded by the program
// `tagwright-serve` alone (app/serve/run_serve.cc): every other command starts
// without them. In `tagwright` this call hands `arguments`, the command line
// as given (after the program's name), to that program, which parses them
// the same way and takes over the process (app/launch/serve_program.cc).
int runServe(const ServeOptions& options, const std::vector<std::string>& arguments,
             std::ostream& err);

}  // namespace tagwright

#endif  // TAGWRIGHT_APP_SERVE_SERVE_COMMAND_H_
