#include "serve/worker_pool.h"

namespace tagwright {

WorkerPool::WorkerPool(std::size_t workers, std::size_t waiting) : waiting_(waiting) {
  threads_.reserve(workers);
  for (std::size_t i = 0; i < workers; ++i) threads_.emplace_back([this] { work(); });
}

WorkerPool::~WorkerPool() { shutdown(); }

void WorkerPool::enqueue(std::function<void()> task) {
  {
    std::lock_guard<std::mutex> guard(mutex_);
    if (tasks_.size() < waiting_) {
      tasks_.push_back(std::move(task));
      ready_.notify_one();
      return;
    }
  }
  task();
}

void WorkerPool::shutdown() {
  {
    std::lock_guard<std::mutex> guard(mutex_);
    stopping_ = true;
  }
  ready_.notify_all();
  for (std::thread& thread : threads_) {
    if (thread.joinable()) thread.join();
  }
}

void WorkerPool::work() {
  for (;;) {
    std::function<void()> task;
    {
      std::unique_lock<std::mutex> lock(mutex_);
      ready_.wait(lock, [this] { return stopping_ || !tasks_.empty(); });
      if (tasks_.empty()) return;
      task = std::move(tasks_.front());
      tasks_.pop_front();
    }
    task();
  }
}

}  // namespace tagwright
