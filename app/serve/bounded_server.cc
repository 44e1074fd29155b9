#include "serve/bounded_server.h"

#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <thread>
#include <vector>

#include "serve/connection_stream.h"

namespace tagwright {
namespace {

constexpr std::string_view kTurnedAway =
    "HTTP/1.1 503 Service Unavailable\r\nConnection: close\r\nRetry-After: 1\r\n"
    "Content-Type: application/json\r\nContent-Length: 35\r\n\r\n"
    "{\"error\":\"the server is too busy\"}\n";

void turnAway(int fd) {
  ::send(fd, kTurnedAway.data(), kTurnedAway.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
  // A request left unread would make the close a reset, which may reach the
  // client before the answer does.
  ::shutdown(fd, SHUT_WR);
  char unread[4096];
  for (int i = 0; i < 16 && ::recv(fd, unread, sizeof unread, MSG_DONTWAIT) > 0; ++i) {
  }
  ::close(fd);
}

}  // namespace

// In an epoll set a connection is found by its address; the wake-up
// descriptor by null and the listening socket by the server's own address.
struct BoundedServer::Loop {
  ~Loop() {
    if (epollFd >= 0) ::close(epollFd);
  }
  int epollFd = ::epoll_create1(EPOLL_CLOEXEC);
  std::thread thread;
};

struct BoundedServer::Connection {
  Connection(int fd, std::chrono::milliseconds writeBound, Loop& owner)
      : stream(fd, writeBound), loop(owner) {}

  // Takes the connection from its loop's set: false when it was shut as idle.
  bool take() {
    Clock::rep since = parkedSince.load();
    while (since > 0) {
      if (parkedSince.compare_exchange_weak(since, kBusy)) return true;
    }
    return false;
  }

  static constexpr Clock::rep kBusy = 0;
  static constexpr Clock::rep kShut = -1;

  ConnectionStream stream;
  Loop& loop;
  // When it was parked to wait for a request, or kBusy while a loop or a
  // worker serves it, or kShut once it waited too long. One value, so that
  // a connection parked anew is never taken for the one parked before.
  std::atomic<Clock::rep> parkedSince{kBusy};
  std::size_t requestsLeft = 0;
  bool inLoopSet = false;
  bool closeWhenSent = false;  // after the answer being sent
  std::list<std::unique_ptr<Connection>>::iterator self;
};

BoundedServer::BoundedServer(const Bounds& bounds)
    : bounds_(bounds), wakeFd_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  bounds_.workers = std::max<std::size_t>(bounds_.workers, 1);
  // A loop that opens a page not in the cache waits for the disk, and its
  // connections with it: a few loops a processor keep the processors busy
  // while some wait.
  constexpr unsigned kLoopsPerProcessor = 4;
  if (bounds_.loops == 0) {
    bounds_.loops = kLoopsPerProcessor * std::max(1u, std::thread::hardware_concurrency());
  }
}

BoundedServer::~BoundedServer() {
  if (wakeFd_ >= 0) ::close(wakeFd_);
}

bool BoundedServer::serve() {
  const int listener = svr_sock_;
  if (listener == INVALID_SOCKET || wakeFd_ < 0) return false;
  ::fcntl(listener, F_SETFL, ::fcntl(listener, F_GETFL) | O_NONBLOCK);
  for (std::size_t i = 0; i < bounds_.loops; ++i) {
    auto loop = std::make_unique<Loop>();
    // The wake-up stays readable once written, so every loop sees it. The
    // first loop alone accepts, so that connections are taken in the order
    // they came and the bound on their number holds in that order.
    epoll_event wake{EPOLLIN, {.ptr = nullptr}};
    epoll_event listening{EPOLLIN, {.ptr = this}};
    if (loop->epollFd < 0 || ::epoll_ctl(loop->epollFd, EPOLL_CTL_ADD, wakeFd_, &wake) != 0 ||
        (i == 0 && ::epoll_ctl(loop->epollFd, EPOLL_CTL_ADD, listener, &listening) != 0)) {
      return false;
    }
    loops_.push_back(std::move(loop));
  }
  for (const auto& loop : loops_) loop->thread = std::thread([this, &loop] { runLoop(*loop); });
  std::vector<std::thread> workers;
  workers.reserve(bounds_.workers);
  for (std::size_t i = 0; i < bounds_.workers; ++i) workers.emplace_back([this] { work(); });

  const int tick = static_cast<int>(
      std::clamp<std::chrono::milliseconds::rep>(bounds_.idle.count() / 4, 10, 100));
  for (;;) {
    pollfd woken{wakeFd_, POLLIN, 0};
    if (::poll(&woken, 1, tick) > 0) break;
    shutIdle();
    if (tick_) tick_();
  }
  for (const auto& loop : loops_) loop->thread.join();
  for (std::thread& worker : workers) worker.join();
  if (tick_) tick_();

  std::lock_guard<std::mutex> guard(connectionsMutex_);
  for (const auto& connection : connections_) {
    ::shutdown(connection->stream.socket(), SHUT_RDWR);
    ::close(connection->stream.socket());
  }
  connections_.clear();
  loops_.clear();
  ::close(svr_sock_.exchange(INVALID_SOCKET));
  return true;
}

void BoundedServer::halt() {
  halted_ = true;
  std::uint64_t one = 1;
  if (wakeFd_ >= 0) {
    [[maybe_unused]] ssize_t written = ::write(wakeFd_, &one, sizeof one);
  }
  std::lock_guard<std::mutex> guard(handedMutex_);
  handedReady_.notify_all();
}

void BoundedServer::runLoop(Loop& loop) {
  constexpr int kEvents = 64;
  epoll_event events[kEvents];
  for (;;) {
    const int ready = ::epoll_wait(loop.epollFd, events, kEvents, -1);
    if (ready < 0 && errno == EINTR) continue;
    if (ready < 0) return;
    for (int i = 0; i < ready; ++i) {
      void* source = events[i].data.ptr;
      if (source == nullptr) return;
      if (source == this) {
        acceptWaiting(svr_sock_);
        continue;
      }
      auto& connection = *static_cast<Connection*>(source);
      if (connection.take()) {
        serveInLoop(connection);
      } else {
        close(connection);
      }
    }
  }
}

void BoundedServer::work() {
  for (;;) {
    Connection* connection = nullptr;
    {
      std::unique_lock<std::mutex> lock(handedMutex_);
      handedReady_.wait(lock, [this] { return halted_ || !handed_.empty(); });
      if (handed_.empty()) return;
      connection = handed_.front();
      handed_.pop_front();
    }
    serveRequests(*connection);
  }
}

void BoundedServer::acceptWaiting(int listener) {
  for (;;) {
    sockaddr_storage address{};
    socklen_t length = sizeof address;
    int fd = ::accept4(listener, reinterpret_cast<sockaddr*>(&address), &length,
                       SOCK_NONBLOCK | SOCK_CLOEXEC);
    if (fd < 0) {
      if (errno == EINTR || errno == ECONNABORTED) continue;
      // Out of descriptors: wait a little rather than spin on the backlog.
      if (errno != EAGAIN && errno != EWOULDBLOCK) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
      }
      return;
    }
    int one = 1;
    ::setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
    // The loops take new connections in turn, so that each serves its share.
    Loop& loop = *loops_[nextLoop_++ % loops_.size()];
    auto owned = std::make_unique<Connection>(fd, bounds_.idle, loop);
    Connection& connection = *owned;
    std::string ip;
    int port = -1;
    numericAddress(address, length, ip, port);
    connection.stream.knowPeer(ip, port);
    {
      std::lock_guard<std::mutex> guard(connectionsMutex_);
      if (connections_.size() < bounds_.workers + bounds_.waiting) {
        connections_.push_front(std::move(owned));
        connection.self = connections_.begin();
      }
    }
    // Every worker busy and the waiting line full: say so at once, without
    // waiting on this client, and take the next connection.
    if (owned) {
      if (turnedAway_) {
        turnedAway_(ip, port, kTurnedAway.size() - kTurnedAway.find("\r\n\r\n") - 4);
      }
      turnAway(fd);
      continue;
    }
    connection.requestsLeft = keep_alive_max_count_;
    park(connection);
  }
}

bool BoundedServer::answer(Connection& connection, ConnectionStream::Head head) {
  ConnectionStream& stream = connection.stream;
  const bool last = connection.requestsLeft-- <= 1;
  bool clientCloses = false;
  const bool served = process_request(stream, last, clientCloses, nullptr);
  // The unread body of a GET would be taken for the next requests, and so
  // would the rest of a head that never came whole.
  const bool nextRequestFollows =
      head == ConnectionStream::Head::kWithoutBody || head == ConnectionStream::Head::kOther;
  connection.closeWhenSent =
      !served || clientCloses || last || stream.expired() || halted_ || !nextRequestFollows;
  return stream.flush();
}

void BoundedServer::serveInLoop(Connection& connection) {
  ConnectionStream& stream = connection.stream;
  stream.allowWaiting(false);
  if (!stream.receive()) return close(connection);
  while (stream.hasInput()) {
    const ConnectionStream::Head head = stream.head();
    if (head != ConnectionStream::Head::kWithoutBody &&
        head != ConnectionStream::Head::kGetWithBody) {
      return handOff(connection);
    }
    if (!answer(connection, head)) return close(connection);
    // An answer the socket did not take whole is finished by a worker, also
    // when the connection ends after it.
    if (stream.unsent()) return handOff(connection);
    if (connection.closeWhenSent) return close(connection);
  }
  park(connection);
}

void BoundedServer::handOff(Connection& connection) {
  if (connection.inLoopSet) {
    ::epoll_ctl(connection.loop.epollFd, EPOLL_CTL_DEL, connection.stream.socket(), nullptr);
    connection.inLoopSet = false;
  }
  {
    std::lock_guard<std::mutex> guard(handedMutex_);
    handed_.push_back(&connection);
  }
  handedReady_.notify_one();
}

void BoundedServer::serveRequests(Connection& connection) {
  ConnectionStream& stream = connection.stream;
  stream.allowWaiting(true);
  // What the loop could not send at once goes first.
  if (!stream.flush() || connection.closeWhenSent) return close(connection);
  while (stream.hasInput()) {
    const Clock::time_point deadline = Clock::now() + bounds_.request;
    stream.beginRequest(deadline);
    // A head that never comes whole is httplib's to refuse.
    const ConnectionStream::Head head = stream.awaitHead(deadline);
    if (!answer(connection, head) || connection.closeWhenSent) return close(connection);
  }
  park(connection);
}

void BoundedServer::park(Connection& connection) {
  const bool wasInSet = connection.inLoopSet;
  connection.inLoopSet = true;
  // From here its loop (or the idle sweep) may take the connection: nothing
  // of it is touched after that, unless it never got into the set.
  connection.parkedSince = std::max<Clock::rep>(Clock::now().time_since_epoch().count(), 1);
  if (wasInSet) return;
  // Level-triggered: bytes that came while a worker had it wake the loop.
  epoll_event waiting{EPOLLIN | EPOLLRDHUP, {.ptr = &connection}};
  if (::epoll_ctl(connection.loop.epollFd, EPOLL_CTL_ADD, connection.stream.socket(), &waiting) !=
      0) {
    close(connection);
  }
}

void BoundedServer::close(Connection& connection) {
  const int fd = connection.stream.socket();
  std::unique_ptr<Connection> owned;
  {
    std::lock_guard<std::mutex> guard(connectionsMutex_);
    owned = std::move(*connection.self);
    connections_.erase(connection.self);
  }
  ::shutdown(fd, SHUT_RDWR);
  // Closing it also takes it out of the epoll set.
  ::close(fd);
}

void BoundedServer::shutIdle() {
  const Clock::rep now = Clock::now().time_since_epoch().count();
  const Clock::rep idle = std::chrono::duration_cast<Clock::duration>(bounds_.idle).count();
  std::lock_guard<std::mutex> guard(connectionsMutex_);
  for (const auto& connection : connections_) {
    Clock::rep since = connection->parkedSince.load();
    if (since <= 0 || now - since < idle) continue;
    // The shut socket wakes its loop, which closes it.
    if (connection->parkedSince.compare_exchange_strong(since, Connection::kShut)) {
      ::shutdown(connection->stream.socket(), SHUT_RDWR);
    }
  }
}

}  // namespace tagwright
