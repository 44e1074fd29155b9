#include "batch/batch_run.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <memory>
#include <mutex>
#include <nlohmann/json.hpp>
#include <optional>
#include <ostream>
#include <semaphore>
#include <thread>

#include "batch/batch_platform.h"
#include "batch/group_sync.h"
#include "batch/progress_line.h"
#include "json_answer.h"
#include "tagwright/tagwright.h"

namespace tagwright {
namespace {

using Clock = std::chrono::steady_clock;

// Rewrites wait for their group's sync without holding a processor, so more
// of them are in progress than there are jobs: the more wait, the fewer syncs.
constexpr int kRewritesPerJob = 32;
// How long a group waits for rewrites still in progress before it syncs.
constexpr std::chrono::milliseconds kGatherTime{10};

std::string answerLine(const BatchRequest& request, const std::string& document,
                       const DocumentAnswer& answer) {
  if (!request.json) return document + ":" + answer.text + "\n";
  const std::string object = request.rewrite ? writeAnswerJson(answer.count, answer.text)
                                             : textAnswerJson(answer.text, answer.count);
  const std::string name = nlohmann::json(Tagwright::replaceRawBytes(document)).dump();
  return "{\"document\":" + name + "," + object.substr(1) + "\n";
}

// Holds one of the processors that the jobs share, while in scope.
class Processor {
 public:
  explicit Processor(std::counting_semaphore<>& processors) : processors_(processors) {
    processors_.acquire();
  }
  ~Processor() { processors_.release(); }
  Processor(const Processor&) = delete;
  Processor& operator=(const Processor&) = delete;

 private:
  std::counting_semaphore<>& processors_;
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
      std::optional<DocumentAnswer> answer;
      {
        std::unique_lock lock(mutex_);
        while (!slots_[index % window_]) {
          if (!ready_.wait_for(lock, std::chrono::milliseconds(100),
                               [&] { return slots_[index % window_].has_value(); })) {
            lock.unlock();
            progress.show(index, matched, failed);
            lock.lock();
          }
        }
        answer = std::move(slots_[index % window_]);
        slots_[index % window_].reset();
        printed_ = index + 1;
      }
      room_.notify_all();
      const std::string& document = request_.documents[index];
      if (answer->count == -1) {
        ++failed;
        progress.clear();
        err << "tagwright: " << document << ": " << answer->text << "\n";
      } else if (answer->count > 0) {
        ++matched;
        if (request_.rewrite) ++changed;
      }
      if (request_.json || answer->count != 0) out << answerLine(request_, document, *answer);
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
        room_.wait(lock, [&] {
          return claimed_ >= request_.documents.size() || claimed_ < printed_ + window_;
        });
        if (claimed_ >= request_.documents.size()) return;
        index = claimed_++;
      }
      DocumentAnswer answer = handle(request_.documents[index]);
      {
        std::lock_guard lock(mutex_);
        slots_[index % window_] = std::move(answer);
      }
      ready_.notify_all();
    }
  }

  // The document by an instance of its own, exactly as a single call.
  DocumentAnswer handle(const std::string& document) {
    try {
      Tagwright instance(platform_);
      request_.configure(instance);
      if (!request_.rewrite) {
        Processor processor(processors_);
        return request_.operation(instance, document);
      }
      // The lock first: a rewrite that waits for it holds no processor, and
      // is not among those that its group waits for.
      std::unique_ptr<FileLock> lock = instance.lockForRewrite(document);
      BatchPlatform::Rewrite rewrite(platform_, instance.hostPathOf(document));
      Processor processor(processors_);
      return request_.operation(instance, document);
    } catch (const std::exception& error) {
      return {-1, std::string("ERROR: ") + error.what()};
    }
  }

  const BatchRequest& request_;
  const int jobs_;
  std::counting_semaphore<> processors_;
  GroupSync group_;
  BatchPlatform platform_;
  const std::size_t window_;  // answers held for printing, at most
  std::mutex mutex_;
  std::condition_variable ready_, room_;
  std::vector<std::optional<DocumentAnswer>> slots_;
  std::size_t claimed_ = 0;
  std::size_t printed_ = 0;
};

}  // namespace

int runBatch(const BatchRequest& request, Platform& platform, std::ostream& out,
             std::ostream& err) {
  Batch batch(request, platform);
  return batch.run(out, err);
}

}  // namespace tagwright
