#include "serve/bounded_server.h"

#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include "serve/connection_stream.h"
#include "serve/worker_pool.h"

namespace tagwright {
namespace {

constexpr std::string_view kTurnedAway =
    "HTTP/1.1 503 Service Unavailable\r\nConnection: close\r\nRetry-After: 1\r\n"
    "Content-Type: application/json\r\nContent-Length: 35\r\n\r\n"
    "{\"error\":\"the server is too busy\"}\n";

}  // namespace

BoundedServer::BoundedServer(const Bounds& bounds)
    : bounds_(bounds), wakeFd_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  new_task_queue = [this] { return new WorkerPool(bounds_.workers, bounds_.waiting); };
  using Seconds = std::chrono::seconds;
  set_keep_alive_timeout(std::chrono::ceil<Seconds>(bounds_.idle).count());
}

BoundedServer::~BoundedServer() {
  if (wakeFd_ >= 0) ::close(wakeFd_);
}

bool BoundedServer::serve() {
  acceptThread_ = std::this_thread::get_id();
  return listen_after_bind();
}

void BoundedServer::halt() {
  std::uint64_t one = 1;
  if (wakeFd_ >= 0) {
    [[maybe_unused]] ssize_t written = ::write(wakeFd_, &one, sizeof one);
  }
  stop();
}

bool BoundedServer::process_and_close_socket(socket_t sock) {
  bool served = false;
  if (std::this_thread::get_id() == acceptThread_.load()) {
    // Every worker is busy and the waiting line is full: say so at once,
    // without waiting on this client, and take the next connection.
    ::send(sock, kTurnedAway.data(), kTurnedAway.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    // A request left unread would make the close a reset, which may reach
    // the client before the answer does.
    ::shutdown(sock, SHUT_WR);
    char unread[4096];
    for (int i = 0; i < 16 && ::recv(sock, unread, sizeof unread, MSG_DONTWAIT) > 0; ++i) {
    }
  } else {
    ConnectionStream stream(sock, bounds_.idle);
    for (std::size_t left = keep_alive_max_count_; left > 0 && is_running(); --left) {
      if (!stream.awaitRequest(bounds_.idle, wakeFd_)) break;
      stream.beginRequest(ConnectionStream::Clock::now() + bounds_.request);
      bool clientCloses = false;
      served = process_request(stream, left == 1, clientCloses, nullptr);
      served = stream.flush() && served;
      if (!served || clientCloses || stream.expired()) break;
    }
  }
  ::shutdown(sock, SHUT_RDWR);
  ::close(sock);
  return served;
}

}  // namespace tagwright
