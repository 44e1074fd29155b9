#ifndef TAGWRIGHT_APP_SERVE_BOUNDED_SERVER_H_
#define TAGWRIGHT_APP_SERVE_BOUNDED_SERVER_H_

#include <httplib.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <functional>
#include <list>
#include <memory>
#include <mutex>

namespace tagwright {

// httplib's server with its connections bounded in time and number, served
// by a fixed set of threads over one epoll set. httplib bounds each receive
// alone, so a client that sends a byte now and then holds a thread for ever;
// here the whole of a request (line, headers and body) must arrive within
// one bound, a kept-alive connection may wait only so long for its next
// request, and connections beyond the workers and their waiting line are
// turned away with 503 instead of queuing unbounded.
//
// A kept-alive connection between requests holds no thread: it waits in the
// epoll set, and whichever worker is free takes its next request. Under load
// a worker that ends a request finds the next ready connection at once,
// instead of each connection's own thread sleeping and being woken.
class BoundedServer final : public httplib::Server {
 public:
  struct Bounds {
    std::chrono::milliseconds request{20000};  // from a request's first byte to its last
    std::chrono::milliseconds idle{5000};      // before a next request, and per answer sent
    std::size_t workers = 16;                  // requests served at once
    std::size_t waiting = 16;                  // further connections held open
  };

  explicit BoundedServer(const Bounds& bounds);
  ~BoundedServer() override;

  // Serves on the bound socket until halt(); false when it could not serve.
  bool serve();
  // Ends serve(), also when called before it; the requests being served
  // are answered first.
  void halt();
  // Called by the serving thread at least every tenth of a second while it
  // serves, and once more when it ends.
  void everyTick(std::function<void()> tick) { tick_ = std::move(tick); }

 private:
  struct Connection;
  using Clock = std::chrono::steady_clock;

  void work();
  void acceptWaiting(int listener);
  void serveRequests(Connection& connection);
  // Puts the connection back in the epoll set to wait for its next request.
  void park(Connection& connection);
  void close(Connection& connection);
  // Shuts the connections that waited longer than the idle bound; the
  // worker that takes the wake-up closes each.
  void shutIdle();

  Bounds bounds_;
  std::function<void()> tick_;
  int wakeFd_;
  int epollFd_;
  std::atomic<bool> halted_{false};
  std::mutex connectionsMutex_;
  std::list<std::unique_ptr<Connection>> connections_;
};

}  // namespace tagwright

#endif  // TAGWRIGHT_APP_SERVE_BOUNDED_SERVER_H_
