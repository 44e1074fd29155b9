#ifndef TAGWRIGHT_APP_SERVE_BOUNDED_SERVER_H_
#define TAGWRIGHT_APP_SERVE_BOUNDED_SERVER_H_

#include <httplib.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <thread>

namespace tagwright {

// httplib's server with its connections bounded in time and number. httplib
// bounds each receive alone, so a client that sends a byte now and then
// holds a worker for ever; here the whole of a request (line, headers and
// body) must arrive within one bound, a kept-alive connection may wait
// only so long for its next request, and connections beyond the workers and
// their waiting line are turned away with 503 instead of queuing unbounded.
class BoundedServer final : public httplib::Server {
 public:
  struct Bounds {
    std::chrono::milliseconds request{20000};  // from a request's first byte to its last
    std::chrono::milliseconds idle{5000};      // before a next request, and per answer sent
    std::size_t workers = 16;                  // connections served at once
    std::size_t waiting = 16;                  // connections waiting for a worker
  };

  explicit BoundedServer(const Bounds& bounds);
  ~BoundedServer() override;

  // Serves on the bound socket until halt(); false when it could not serve.
  bool serve();
  // Ends serve(), and wakes the connections waiting for a next request.
  void halt();

 private:
  bool process_and_close_socket(socket_t sock) override;

  Bounds bounds_;
  int wakeFd_;
  std::atomic<std::thread::id> acceptThread_;
};

}  // namespace tagwright

#endif  // TAGWRIGHT_APP_SERVE_BOUNDED_SERVER_H_
