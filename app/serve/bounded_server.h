#ifndef TAGWRIGHT_APP_SERVE_BOUNDED_SERVER_H_
#define TAGWRIGHT_APP_SERVE_BOUNDED_SERVER_H_

#include <httplib.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "serve/connection_stream.h"

namespace tagwright {

// httplib's server with its connections bounded in time and number. httplib
// bounds each receive alone, so a client that sends a byte now and then
// holds a thread for ever; here the whole of a request (line, headers and
// body) must arrive within one bound, a kept-alive connection may wait only
// so long for its next request, and connections beyond the workers and
// their waiting line are turned away with 503 instead of queuing unbounded.
//
// Each connection belongs to one of a few event loops per processor. A
// loop serves a request at once when the whole of it has arrived and it has
// no body (a GET or a HEAD): it never waits on a client, so one thread
// serves many connections, with no thread woken or switched per request.
// Anything else (a request that has a body, that has not fully arrived, or
// an answer the client does not take in at once) goes to a pool of workers,
// which may wait on the client within the bounds, and then gives the
// connection back to its loop. A rewrite that waits for the disk thus never
// holds up the reads of a loop.
class BoundedServer final : public httplib::Server {
 public:
  struct Bounds {
    std::chrono::milliseconds request{20000};  // from a request's first byte to its last
    std::chrono::milliseconds idle{5000};      // before a next request, and per answer sent
    std::size_t workers = 16;                  // requests that may wait on a client at once
    std::size_t waiting = 16;                  // further connections held open
    std::size_t loops = 0;                     // event loops; 0: a few per processor
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
  // Called for each connection turned away with 503, with the client's
  // address and the bytes of the answer's body.
  void whenTurnedAway(
      std::function<void(const std::string& ip, int port, std::size_t bodyBytes)> turnedAway) {
    turnedAway_ = std::move(turnedAway);
  }

 private:
  struct Connection;
  struct Loop;
  using Clock = std::chrono::steady_clock;

  void runLoop(Loop& loop);
  void work();
  void acceptWaiting(int listener);
  // Answers the request whose head the connection holds; false when the
  // answer could not be sent. Says whether the connection ends after it.
  bool answer(Connection& connection, ConnectionStream::Head head);
  // Serves the requests the connection holds without waiting on its client.
  void serveInLoop(Connection& connection);
  // Serves requests, waiting on the client within the bounds, until none
  // is left to read.
  void serveRequests(Connection& connection);
  // Gives the connection to the workers, out of its loop's epoll set.
  void handOff(Connection& connection);
  // Lets the connection wait in its loop's epoll set for its next request.
  void park(Connection& connection);
  void close(Connection& connection);
  // Shuts the connections that waited longer than the idle bound; the loop
  // that gets the wake-up closes each.
  void shutIdle();

  Bounds bounds_;
  std::function<void()> tick_;
  std::function<void(const std::string&, int, std::size_t)> turnedAway_;
  int wakeFd_;
  std::atomic<bool> halted_{false};
  std::vector<std::unique_ptr<Loop>> loops_;
  std::atomic<std::size_t> nextLoop_{0};
  std::mutex connectionsMutex_;
  std::list<std::unique_ptr<Connection>> connections_;
  // Connections handed to the workers.
  std::mutex handedMutex_;
  std::condition_variable handedReady_;
  std::deque<Connection*> handed_;
};

}  // namespace tagwright

#endif  // TAGWRIGHT_APP_SERVE_BOUNDED_SERVER_H_
