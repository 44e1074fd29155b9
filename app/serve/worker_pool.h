#ifndef TAGWRIGHT_APP_SERVE_WORKER_POOL_H_
#define TAGWRIGHT_APP_SERVE_WORKER_POOL_H_

#include <httplib.h>

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace tagwright {

// The threads that serve connections, each one connection at a time, and a
// bounded line of connections waiting for one. When the line is full a new
// connection is not queued without end: its task runs at once on the
// caller's thread, where the server only turns the client away.
class WorkerPool final : public httplib::TaskQueue {
 public:
  WorkerPool(std::size_t workers, std::size_t waiting);
  ~WorkerPool() override;

  void enqueue(std::function<void()> task) override;
  void shutdown() override;

 private:
  void work();

  std::size_t waiting_;
  std::mutex mutex_;
  std::condition_variable ready_;
  std::deque<std::function<void()>> tasks_;
  bool stopping_ = false;
  std::vector<std::thread> threads_;
};

}  // namespace tagwright

#endif  // TAGWRIGHT_APP_SERVE_WORKER_POOL_H_
