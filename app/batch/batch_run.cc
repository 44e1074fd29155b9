#include "batch/batch_run.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <memory>
#include <mutex>
#include <optional>
#include <ostream>
#include <thread>

#include "batch/batch_platform.h"
#include "batch/group_sync.h"
#include "batch/processor_pool.h"
#include "batch/progress_line.h"
#include "tagwright/tagwright.h"

namespace tagwright {
namespace {

using Clock = std::chrono::steady_clock;

// Rewrites wait for their group's sync without holding a processor, so more
// of them are in progress than there are jobs: the more wait, the fewer syncs.
constexpr int kRewritesPerJob = 32;
// How long a group waits for rewrites still in progress before it syncs.
constexpr std::chrono::milliseconds kGatherTime{10};
// The answers the printer is woken for at once; less than the window.
constexpr std::size_t kPrintRun = 16;

// Holds one of the processors that the jobs share, while in scope.
class Processor {
 public:
  explicit Processor(ProcessorPool& processors) : processors_(processors) { processors_.acquire(); }
  ~Processor() { processors_.release(); }
  Processor(const Processor&) = delete;
  Processor& operator=(const Processor&) = delete;

 private:
  ProcessorPool& processors_;
};

class Batch {
 public:
  Batch(const BatchRequest& request, Platform& platform)
      : request_(request),
        jobs_(std::max(1, request.jobs)),
        processors_(jobs_),
        group_(processors_, kGatherTime),
        platform_(platform, group_),
        window_(std::max<std::size_t>(64, static_cast<std::size_t>(jobs_) * kRewritesPerJob * 4)),
        slots_(window_) {}

  int run(std::ostream& out, std::ostream& err) {
    const std::size_t total = request_.documents.size();
    const int perJob = request_.rewrite ? kRewritesPerJob : 1;
    const std::size_t workerCount =
        std::min(total, static_cast<std::size_t>(jobs_) * static_cast<std::size_t>(perJob));
    std::vector<std::jthread> workers;
    for (std::size_t i = 0; i < workerCount; ++i) workers.emplace_back([this] { work(); });

    ProgressLine progress(err, request_.progress, total);
    int changed = 0, matched = 0, failed = 0;
    for (std::size_t index = 0; index < total; ++index) {
      std::optional<BatchAnswer> done;
      bool wakeWorkers = false;
      {
        std::unique_lock lock(mutex_);
        while (!slots_[index % window_]) {
          awaited_ = index;
          if (!ready_.wait_for(lock, std::chrono::milliseconds(100),
                               [&] { return slots_[index % window_].has_value(); })) {
            lock.unlock();
            progress.show(index, matched, failed);
            lock.lock();
          }
        }
        awaited_ = kNothing;
        done = std::move(slots_[index % window_]);
        slots_[index % window_].reset();
        printed_ = index + 1;
        wakeWorkers = workersWaiting_ > 0;
      }
      if (wakeWorkers) room_.notify_all();
      const std::string& document = request_.documents[index];
      const DocumentAnswer& answer = done->answer;
      // Standard error flushes standard output, which is written in blocks
      // otherwise: it is written to only when there is something to say.
      if (!done->notes.empty() || answer.count == -1) progress.clear();
      if (!done->notes.empty()) err << done->notes;
      if (answer.count == -1) {
        ++failed;
        err << "tagwright: " << document << ": " << answer.text << "\n";
      } else if (answer.count > 0) {
        ++matched;
        if (request_.rewrite) ++changed;
      }
      out << done->printed;
      progress.show(index + 1, matched, failed);
    }
    workers.clear();
    out.flush();

    if (request_.rewrite) {
      for (const std::string& folder : platform_.syncFolders()) {
        progress.clear();
        err << "tagwright: " << folder << ": the folder could not be synced\n";
      }
    }
    progress.summary(matched, changed, failed, request_.rewrite ? group_.syncCount() : 0);
    return failed > 0 || request_.earlierFailures > 0 ? 1 : 0;
  }

 private:
  void work() {
    for (;;) {
      std::size_t index;
      {
        std::unique_lock lock(mutex_);
        auto mayClaim = [&] {
          return claimed_ >= request_.documents.size() || claimed_ < printed_ + window_;
        };
        if (!mayClaim()) {
          ++workersWaiting_;
          room_.wait(lock, mayClaim);
          --workersWaiting_;
        }
        if (claimed_ >= request_.documents.size()) return;
        index = claimed_++;
      }
      BatchAnswer answer = handle(request_.documents[index]);
      bool wakePrinter;
      {
        std::lock_guard lock(mutex_);
        slots_[index % window_] = std::move(answer);
        wakePrinter = printable();
      }
      if (wakePrinter) ready_.notify_one();
    }
  }

  // True when the printer waits and a run of answers is there for it: a
  // printer woken for every answer would cost a switch of threads per page.
  // REQUIRES: mutex_ held.
  bool printable() const {
    if (awaited_ == kNothing) return false;
    const std::size_t total = request_.documents.size();
    std::size_t run = 0;
    while (run < kPrintRun && awaited_ + run < total && slots_[(awaited_ + run) % window_]) ++run;
    return run == kPrintRun || awaited_ + run == total;
  }

  BatchAnswer handle(const std::string& document) {
    try {
      // A read runs on one of the `jobs` workers, which hold a processor each.
      if (!request_.rewrite) return request_.operation(platform_, document);
      // The lock first: a rewrite that waits for it holds no processor, and
      // is not among those that its group waits for.
      std::unique_ptr<FileLock> lock = request_.mapper->lockForRewrite(document);
      BatchPlatform::Rewrite rewrite(platform_, request_.mapper->hostPathOf(document));
      Processor processor(processors_);
      return request_.operation(platform_, document);
    } catch (const std::exception& error) {
      return {{-1, std::string("ERROR: ") + error.what()}, {}, {}};
    }
  }

  const BatchRequest& request_;
  const int jobs_;
  ProcessorPool processors_;
  GroupSync group_;
  BatchPlatform platform_;
  const std::size_t window_;  // answers held for printing, at most
  std::mutex mutex_;
  std::condition_variable ready_, room_;
  std::vector<std::optional<BatchAnswer>> slots_;
  std::size_t claimed_ = 0;
  std::size_t printed_ = 0;
  static constexpr std::size_t kNothing = static_cast<std::size_t>(-1);
  std::size_t awaited_ = kNothing;  // the answer the printer waits for
  int workersWaiting_ = 0;          // for room in the window
};

}  // namespace

int runBatch(const BatchRequest& request, Platform& platform, std::ostream& out,
             std::ostream& err) {
  Batch batch(request, platform);
  return batch.run(out, err);
}

}  // namespace tagwright
