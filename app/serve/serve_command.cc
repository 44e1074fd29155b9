#include "serve/serve_command.h"

namespace tagwright {
namespace {

constexpr const char* kServeFooter =
    "The API lives under /_tagwright/api/ (read, meta, list: GET with the long\n"
    "options as query parameters, doc= or folder= for the name; write: POST of a\n"
    "JSON object with the same keys) and answers with the --json objects. The\n"
    "editor page is /_tagwright/. Writes need 'Authorization: Bearer TOKEN'; so\n"
    "do reads and the site's files unless --public-read. Physical paths, names\n"
    "whose target lies outside the root, and patterns with a folder are refused.";

}  // namespace

CLI::App* addServeCommand(CLI::App& app, ServeOptions& options) {
  CLI::App* serve = app.add_subcommand("serve", "serve a site folder over HTTP, with an API");
  serve->footer(kServeFooter);
  serve->add_option("--root", options.root, "the site folder")->required();
  serve->add_option("--listen", options.listen, "address:port (port 0: any free port)")
      ->capture_default_str();
  serve->add_option("--token-file", options.tokenFile, "file whose first line is the token")
      ->required();
  serve->add_flag("--public-read", options.publicRead,
                  "reads and the site's files need no token (writes always do)");
  serve
      ->add_option("--threads", options.threads,
                   "workers for requests that wait: rewrites, bodies, slow clients")
      ->check(CLI::Range(1, 1024))
      ->capture_default_str();
  serve->add_option("--max-body", options.maxBodyBytes, "largest request body in bytes")
      ->check(CLI::Range(std::size_t{1}, std::size_t{1} << 30))
      ->capture_default_str();
  serve
      ->add_option(
          "--timeout", options.timeoutSeconds,
          "seconds a connection may wait idle for its next request, or take to receive an answer")
      ->check(CLI::Range(1, 3600))
      ->capture_default_str();
  serve
      ->add_option("--request-timeout", options.requestTimeoutSeconds,
                   "seconds within which the whole of a request (line, headers, body) must "
                   "arrive, however the client spaces its bytes")
      ->check(CLI::Range(1, 3600))
      ->capture_default_str();
  return serve;
}

}  // namespace tagwright
