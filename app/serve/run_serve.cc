#include <limits.h>
#include <pthread.h>
#include <signal.h>
#include <stdlib.h>

#include <condition_variable>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <mutex>
#include <thread>

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

// SIGTERM and SIGINT end the server as stop() does: the requests being
// served are answered and the access lines written out. The signals are
// blocked in every thread, the server's inheriting the mask, and one thread
// waits for them; a second signal ends the process at once.
class StopOnSignal {
 public:
  explicit StopOnSignal(SiteServer& server) {
    sigemptyset(&signals_);
    sigaddset(&signals_, SIGTERM);
    sigaddset(&signals_, SIGINT);
    pthread_sigmask(SIG_BLOCK, &signals_, nullptr);
    waiter_ = std::thread([this, &server] {
      int signal = 0;
      sigwait(&signals_, &signal);
      {
        std::lock_guard<std::mutex> guard(mutex_);
        signalled_ = true;
        if (done_) return;
      }
      server.stop();
      pthread_sigmask(SIG_UNBLOCK, &signals_, nullptr);
      std::unique_lock<std::mutex> lock(mutex_);
      ended_.wait(lock, [this] { return done_; });
    });
  }
  ~StopOnSignal() {
    bool waiting;
    {
      std::lock_guard<std::mutex> guard(mutex_);
      done_ = true;
      waiting = !signalled_;
    }
    ended_.notify_all();
    // A waiter still in sigwait takes this one, sees the server done, and ends.
    if (waiting) pthread_kill(waiter_.native_handle(), SIGTERM);
    waiter_.join();
  }
  StopOnSignal(const StopOnSignal&) = delete;
  StopOnSignal& operator=(const StopOnSignal&) = delete;

 private:
  sigset_t signals_;
  std::mutex mutex_;
  std::condition_variable ended_;
  bool signalled_ = false;
  bool done_ = false;
  std::thread waiter_;
};

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
  StopOnSignal stopOnSignal(server);
  return server.run() ? 0 : 1;
}

}  // namespace tagwright
