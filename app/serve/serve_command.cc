#include "serve/serve_command.h"

#include <limits.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

#include "serve/site_server.h"

namespace tagwright {
namespace {

constexpr const char* kServeFooter =
    "The API lives under /_tagwright/api/ (read, meta, list: GET with the long\n"
    "options as query parameters, doc= or folder= for the name; write: POST of a\n"
    "JSON object with the same keys) and answers with the --json objects. The\n"
    "editor page is /_tagwright/. Writes need 'Authorization: Bearer TOKEN'; so\n"
    "do reads and the site's files unless --public-read. Physical paths, names\n"
    "whose target lies outside the root, and patterns with a folder are refused.";

std::string readToken(const std::string& file) {
  std::ifstream in(file, std::ios::binary);
  if (!in) return "";
  std::string token(std::istreambuf_iterator<char>(in), {});
  while (!token.empty() && (token.back() == '\n' || token.back() == '\r')) token.pop_back();
  return token;
}

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
  serve->add_option("--threads", options.threads, "requests handled at once")
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

int runServe(const ServeOptions& options, std::ostream& err) {
  char resolved[PATH_MAX];
  std::error_code ignored;
  if (::realpath(options.root.c_str(), resolved) == nullptr ||
      !std::filesystem::is_directory(resolved, ignored)) {
    err << "tagwright serve: --root " << options.root << " is no folder\n";
    return 2;
  }
  std::string token = readToken(options.tokenFile);
  if (token.empty()) {
    err << "tagwright serve: no token in --token-file " << options.tokenFile << "\n";
    return 2;
  }
  std::size_t colon = options.listen.rfind(':');
  int port = -1;
  if (colon != std::string::npos) {
    try {
      std::size_t used = 0;
      port = std::stoi(options.listen.substr(colon + 1), &used);
      if (used != options.listen.size() - colon - 1 || port > 65535) port = -1;
    } catch (const std::exception&) {
    }
  }
  if (port < 0 || colon == 0) {
    err << "tagwright serve: --listen wants address:port, not " << options.listen << "\n";
    return 2;
  }
  std::string address = options.listen.substr(0, colon);
  if (address.size() > 2 && address.front() == '[' && address.back() == ']') {
    address = address.substr(1, address.size() - 2);
  }
  SiteServer server(options, resolved, token, err);
  std::string failure = server.start();
  if (!failure.empty()) {
    err << "tagwright serve: " << failure << "\n";
    return 2;
  }
  int bound = server.bind(address, port);
  if (bound < 0) {
    err << "tagwright serve: cannot listen on " << options.listen << "\n";
    return 2;
  }
  err << "tagwright serve: " << resolved << " on http://" << options.listen.substr(0, colon) << ":"
      << bound << "/ (editor: /_tagwright/)" << std::endl;
  return server.run() ? 0 : 1;
}

}  // namespace tagwright
