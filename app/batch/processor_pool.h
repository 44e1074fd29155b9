#ifndef TAGWRIGHT_APP_BATCH_PROCESSOR_POOL_H_
#define TAGWRIGHT_APP_BATCH_PROCESSOR_POOL_H_

#include <condition_variable>
#include <mutex>

namespace tagwright {

// The processors that the jobs of a batch share: many more rewrites are in
// progress than there are jobs, and each holds a processor only while it
// works. A thread that finds none sleeps until one is handed back; it never
// spins, since the threads that wait outnumber the processors many times.
class ProcessorPool {
 public:
  explicit ProcessorPool(int processors) : free_(processors) {}

  void acquire() {
    std::unique_lock lock(mutex_);
    if (free_ == 0) {
      ++waiting_;
      handedBack_.wait(lock, [&] { return free_ > 0; });
      --waiting_;
    }
    --free_;
  }

  void release() {
    bool wake;
    {
      std::lock_guard lock(mutex_);
      ++free_;
      wake = waiting_ > 0;
    }
    if (wake) handedBack_.notify_one();
  }

 private:
  std::mutex mutex_;
  std::condition_variable handedBack_;
  int free_;
  int waiting_ = 0;
};

}  // namespace tagwright

#endif  // TAGWRIGHT_APP_BATCH_PROCESSOR_POOL_H_
