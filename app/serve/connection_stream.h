#ifndef TAGWRIGHT_APP_SERVE_CONNECTION_STREAM_H_
#define TAGWRIGHT_APP_SERVE_CONNECTION_STREAM_H_

#include <httplib.h>
#include <sys/socket.h>

#include <chrono>
#include <string>

namespace tagwright {

// The numeric address and port of a socket's peer (or its own end), left as
// they were when the system cannot tell.
void socketAddress(int fd, bool peer, std::string& ip, int& port);
// The same of an address as accept() gives it.
void numericAddress(const sockaddr_storage& address, socklen_t length, std::string& ip, int& port);

// One client connection as httplib reads and writes it. Every read of a
// request is bounded by that request's deadline, not by each receive, so a
// client that drips bytes is cut off as surely as a silent one; writes are
// gathered so that a small answer leaves in one send, and bounded too.
class ConnectionStream final : public httplib::Stream {
 public:
  using Clock = std::chrono::steady_clock;

  ConnectionStream(int fd, std::chrono::milliseconds writeBound);

  // True while bytes of a next request are read but not yet taken.
  bool hasInput() const { return inputBegin_ < inputEnd_; }
  // What the bytes read and not yet taken hold of the next request.
  enum class Head {
    kIncomplete,   // not yet all of its head, and it may be a GET or a HEAD
    kWithoutBody,  // all of the head of a GET or HEAD that has no body
    kGetWithBody,  // all of the head of a GET or HEAD that announces a body
    kOther,        // another method: httplib reads its body, if any
  };
  Head head() const;
  // Reads until the head of the next request is there, or the input room is
  // full, or `deadline` passes; what head() then says.
  Head awaitHead(Clock::time_point deadline);
  // Reads what the socket holds without waiting: false when the client has
  // closed or the read failed.
  bool receive();
  // While off, no read or write waits: a read finds only what was received,
  // and what cannot be sent at once stays to be sent (see unsent()).
  void allowWaiting(bool allowed) { waitingAllowed_ = allowed; }
  // True while answered bytes wait to be sent.
  bool unsent() const { return !output_.empty(); }
  // The client's address as it was accepted: once the client has gone, the
  // socket can no longer tell it.
  void knowPeer(std::string ip, int port) {
    peerIp_ = std::move(ip);
    peerPort_ = port;
  }
  // Every read from now on must be done by `deadline`.
  void beginRequest(Clock::time_point deadline) { deadline_ = deadline; }
  // True once a read ran into the deadline: the connection must end.
  bool expired() const { return expired_; }
  // Sends what was gathered; false when the client did not take it in time.
  bool flush();

  // read() and write() wait themselves, each up to its bound.
  bool is_readable() const override { return true; }
  bool is_writable() const override { return !broken_; }
  ssize_t read(char* ptr, size_t size) override;
  ssize_t write(const char* ptr, size_t size) override;
  void get_remote_ip_and_port(std::string& ip, int& port) const override;
  void get_local_ip_and_port(std::string& ip, int& port) const override;
  socket_t socket() const override { return fd_; }

 private:
  // Waits until `events` are ready on the socket or `deadline` passes.
  bool waitFor(short events, Clock::time_point deadline) const;
  bool sendAll(const char* data, std::size_t size);
  // Sends what the socket takes at once; `size` keeps what it did not.
  bool sendSome(const char*& data, std::size_t& size);

  int fd_;
  std::chrono::milliseconds writeBound_;
  Clock::time_point deadline_ = Clock::time_point::max();
  bool expired_ = false;
  bool broken_ = false;
  bool waitingAllowed_ = true;
  std::string input_;
  std::size_t inputBegin_ = 0;
  std::size_t inputEnd_ = 0;
  std::string output_;
  mutable std::string peerIp_;
  mutable int peerPort_ = -1;
  mutable std::string localIp_;
  mutable int localPort_ = -1;
};

}  // namespace tagwright

#endif  // TAGWRIGHT_APP_SERVE_CONNECTION_STREAM_H_
