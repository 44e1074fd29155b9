#include "serve/connection_stream.h"

#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string_view>

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

}  // namespace

void numericAddress(const sockaddr_storage& address, socklen_t length, std::string& ip, int& port) {
  char host[NI_MAXHOST];
  char service[NI_MAXSERV];
  if (::getnameinfo(reinterpret_cast<const sockaddr*>(&address), length, host, sizeof host, service,
                    sizeof service, NI_NUMERICHOST | NI_NUMERICSERV) != 0) {
    return;
  }
  ip = host;
  port = std::atoi(service);
}

void socketAddress(int fd, bool peer, std::string& ip, int& port) {
  sockaddr_storage address{};
  socklen_t length = sizeof address;
  auto* raw = reinterpret_cast<sockaddr*>(&address);
  if ((peer ? ::getpeername(fd, raw, &length) : ::getsockname(fd, raw, &length)) != 0) return;
  numericAddress(address, length, ip, port);
}

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

bool ConnectionStream::receive() {
  std::size_t kept = inputEnd_ - inputBegin_;
  if (kept == input_.size()) return true;
  std::memmove(input_.data(), input_.data() + inputBegin_, kept);
  inputBegin_ = 0;
  inputEnd_ = kept;
  for (;;) {
    ssize_t got = ::recv(fd_, input_.data() + kept, input_.size() - kept, MSG_DONTWAIT);
    if (got > 0) {
      inputEnd_ += static_cast<std::size_t>(got);
      return true;
    }
    if (got < 0 && errno == EINTR) continue;
    return got < 0 && (errno == EAGAIN || errno == EWOULDBLOCK);
  }
}

ConnectionStream::Head ConnectionStream::head() const {
  std::string_view input(input_.data() + inputBegin_, inputEnd_ - inputBegin_);
  bool mayBeGetOrHead = false;
  for (std::string_view method : {"GET ", "HEAD "}) {
    if (input.starts_with(method)) {
      mayBeGetOrHead = true;
    } else if (method.starts_with(input)) {
      return Head::kIncomplete;
    }
  }
  if (!mayBeGetOrHead) return Head::kOther;
  const std::size_t end = input.find("\r\n\r\n");
  if (end == std::string_view::npos) return Head::kIncomplete;
  std::string_view head = input.substr(0, end + 2);
  // httplib reads no body of a GET or a HEAD: its bytes would be taken for
  // the next requests of the connection. A header that announces one, in
  // any case of letters, says so; "Content-Length: 0" announces none.
  auto named = [](std::string_view name, std::string_view lower) {
    return std::equal(name.begin(), name.end(), lower.begin(), lower.end(),
                      [](char a, char b) { return (a | 0x20) == b; });
  };
  for (std::size_t line = head.find("\r\n") + 2; line < head.size();) {
    const std::size_t next = head.find("\r\n", line);
    const std::size_t colon = std::min(next, head.find(':', line));
    std::string_view name = head.substr(line, colon - line);
    std::string_view value = head.substr(colon + 1, next - std::min(next, colon + 1));
    value.remove_prefix(std::min(value.find_first_not_of(" \t"), value.size()));
    value = value.substr(0, value.find_last_not_of(" \t") + 1);
    if (named(name, "transfer-encoding") || (named(name, "content-length") && value != "0")) {
      return Head::kGetWithBody;
    }
    line = next + 2;
  }
  return Head::kWithoutBody;
}

ConnectionStream::Head ConnectionStream::awaitHead(Clock::time_point deadline) {
  Head found = head();
  while (found == Head::kIncomplete && inputEnd_ - inputBegin_ < input_.size() &&
         waitFor(POLLIN, deadline)) {
    const std::size_t before = inputEnd_ - inputBegin_;
    if (!receive() || inputEnd_ - inputBegin_ == before) break;
    found = head();
  }
  return found;
}

ssize_t ConnectionStream::read(char* ptr, size_t size) {
  // httplib reads the request line and headers a byte at a time.
  if (size == 1 && inputBegin_ < inputEnd_) {
    *ptr = input_[inputBegin_++];
    return 1;
  }
  if (inputBegin_ == inputEnd_) {
    if (expired_ || !waitingAllowed_) return -1;
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
  if (output_.size() + size <= kGatherBytes || (!waitingAllowed_ && !output_.empty())) {
    output_.append(ptr, size);
    return static_cast<ssize_t>(size);
  }
  if (!flush()) return -1;
  if (waitingAllowed_) return sendAll(ptr, size) ? static_cast<ssize_t>(size) : -1;
  // Without waiting, what the socket does not take at once is kept to be
  // sent, behind what was kept before.
  const char* rest = ptr;
  std::size_t restSize = size;
  if (output_.empty() && !sendSome(rest, restSize)) return -1;
  output_.append(rest, restSize);
  return static_cast<ssize_t>(size);
}

bool ConnectionStream::flush() {
  if (output_.empty()) return !broken_;
  if (!waitingAllowed_) {
    const char* data = output_.data();
    std::size_t left = output_.size();
    const bool sent = sendSome(data, left);
    output_.erase(0, output_.size() - left);
    return sent;
  }
  bool sent = sendAll(output_.data(), output_.size());
  output_.clear();
  return sent;
}

bool ConnectionStream::sendSome(const char*& data, std::size_t& size) {
  while (size > 0 && !broken_) {
    ssize_t sent = ::send(fd_, data, size, MSG_NOSIGNAL | MSG_DONTWAIT);
    if (sent > 0) {
      data += sent;
      size -= static_cast<std::size_t>(sent);
    } else if (sent < 0 && errno == EINTR) {
      continue;
    } else if (sent < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
      break;
    } else {
      broken_ = true;
    }
  }
  return !broken_;
}

bool ConnectionStream::sendAll(const char* data, std::size_t size) {
  Clock::time_point deadline = Clock::now() + writeBound_;
  while (size > 0 && sendSome(data, size)) {
    if (size > 0) broken_ = !waitFor(POLLOUT, deadline);
  }
  return !broken_;
}

void ConnectionStream::get_remote_ip_and_port(std::string& ip, int& port) const {
  if (peerPort_ < 0) socketAddress(fd_, true, peerIp_, peerPort_);
  ip = peerIp_;
  port = peerPort_;
}

void ConnectionStream::get_local_ip_and_port(std::string& ip, int& port) const {
  if (localPort_ < 0) socketAddress(fd_, false, localIp_, localPort_);
  ip = localIp_;
  port = localPort_;
}

}  // namespace tagwright
