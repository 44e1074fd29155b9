#include <limits.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

#include "serve/serve_command.h"
#include "serve/site_server.h"

namespace tagwright {
namespace {

std::string readToken(const std::string& file) {
  std::ifstream in(file, std::ios::binary);
  if (!in) return "";
  std::string token(std::istreambuf_iterator<char>(in), {});
  while (!token.empty() && (token.back() == '\n' || token.back() == '\r')) token.pop_back();
  return token;
}

}  // namespace

int runServe(const ServeOptions& options, const std::vector<std::string>&, std::ostream& err) {
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
