#include "serve/connection_stream.h"

#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>

namespace tagwright {
namespace {

// Larger than any answer's head and a typical page, so that both leave in
// one send; a larger body goes out directly behind the head.
constexpr std::size_t kGatherBytes = 64 * 1024;
constexpr std::size_t kInputBytes = 16 * 1024;

int millisecondsUntil(ConnectionStream::Clock::time_point deadline) {
  auto left =
      std::chrono::ceil<std::chrono::milliseconds>(deadline - ConnectionStream::Clock::now());
  if (left.count() <= 0) return 0;
  return static_cast<int>(std::min<std::chrono::milliseconds::rep>(left.count(), 1 << 30));
}

void addressOf(int fd, bool peer, std::string& ip, int& port) {
  sockaddr_storage address{};
  socklen_t length = sizeof address;
  auto* raw = reinterpret_cast<sockaddr*>(&address);
  if ((peer ? ::getpeername(fd, raw, &length) : ::getsockname(fd, raw, &length)) != 0) return;
  char host[NI_MAXHOST];
  char service[NI_MAXSERV];
  if (::getnameinfo(raw, length, host, sizeof host, service, sizeof service,
                    NI_NUMERICHOST | NI_NUMERICSERV) != 0) {
    return;
  }
  ip = host;
  port = std::atoi(service);
}

}  // namespace

ConnectionStream::ConnectionStream(int fd, std::chrono::milliseconds writeBound)
    : fd_(fd), writeBound_(writeBound) {
  input_.resize(kInputBytes);
}

bool ConnectionStream::waitFor(short events, Clock::time_point deadline) const {
  for (;;) {
    pollfd watched{fd_, events, 0};
    int ready = ::poll(&watched, 1, millisecondsUntil(deadline));
    if (ready > 0) return true;
    if (ready == 0 || errno != EINTR) return false;
  }
}

ssize_t ConnectionStream::read(char* ptr, size_t size) {
  // httplib reads the request line and headers a byte at a time.
  if (size == 1 && inputBegin_ < inputEnd_) {
    *ptr = input_[inputBegin_++];
    return 1;
  }
  if (inputBegin_ == inputEnd_) {
    if (expired_) return -1;
    for (;;) {
      ssize_t got = ::recv(fd_, input_.data(), input_.size(), MSG_DONTWAIT);
      if (got >= 0) {
        inputBegin_ = 0;
        inputEnd_ = static_cast<std::size_t>(got);
        if (got == 0) return 0;
        break;
      }
      if (errno == EINTR) continue;
      if (errno != EAGAIN && errno != EWOULDBLOCK) return -1;
      // What the client may wait for before it sends more (a "100 Continue")
      // must not stay gathered here.
      if (!flush()) return -1;
      if (!waitFor(POLLIN, deadline_)) {
        expired_ = Clock::now() >= deadline_;
        return -1;
      }
    }
  }
  std::size_t taken = std::min(size, inputEnd_ - inputBegin_);
  std::memcpy(ptr, input_.data() + inputBegin_, taken);
  inputBegin_ += taken;
  return static_cast<ssize_t>(taken);
}

ssize_t ConnectionStream::write(const char* ptr, size_t size) {
  if (broken_) return -1;
  if (output_.size() + size <= kGatherBytes) {
    output_.append(ptr, size);
    return static_cast<ssize_t>(size);
  }
  if (!flush() || !sendAll(ptr, size)) return -1;
  return static_cast<ssize_t>(size);
}

bool ConnectionStream::flush() {
  if (output_.empty()) return !broken_;
  bool sent = sendAll(output_.data(), output_.size());
  output_.clear();
  return sent;
}

bool ConnectionStream::sendAll(const char* data, std::size_t size) {
  Clock::time_point deadline = Clock::now() + writeBound_;
  while (size > 0 && !broken_) {
    ssize_t sent = ::send(fd_, data, size, MSG_NOSIGNAL | MSG_DONTWAIT);
    if (sent > 0) {
      data += sent;
      size -= static_cast<std::size_t>(sent);
    } else if (sent < 0 && errno == EINTR) {
      continue;
    } else if (sent < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
      broken_ = !waitFor(POLLOUT, deadline);
    } else {
      broken_ = true;
    }
  }
  return !broken_;
}

void ConnectionStream::get_remote_ip_and_port(std::string& ip, int& port) const {
  if (peerPort_ < 0) addressOf(fd_, true, peerIp_, peerPort_);
  ip = peerIp_;
  port = peerPort_;
}

void ConnectionStream::get_local_ip_and_port(std::string& ip, int& port) const {
  if (localPort_ < 0) addressOf(fd_, false, localIp_, localPort_);
  ip = localIp_;
  port = localPort_;
}

}  // namespace tagwright
