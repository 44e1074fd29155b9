#ifndef TAGWRIGHT_APP_BATCH_GROUP_SYNC_H_
#define TAGWRIGHT_APP_BATCH_GROUP_SYNC_H_

#include <sys/types.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>

#include "batch/processor_pool.h"

namespace tagwright {

// Makes the new files of many rewrites durable with one flush of each file
// system, instead of one per file (group commit). A rewrite that is about to
// put its new file in place waits here; once every rewrite in progress waits
// (or `gatherTime` has passed), one of them syncs the file systems of all
// their folders and all go on. Only then does a new file take a document's
// name, so the promise of a single rewrite holds for each.
//
// While a rewrite waits it gives back its share of the processors, so that
// other documents are prepared meanwhile and the next group is large.
class GroupSync {
 public:
  GroupSync(ProcessorPool& processors, std::chrono::milliseconds gatherTime);
  ~GroupSync();
  GroupSync(const GroupSync&) = delete;
  GroupSync& operator=(const GroupSync&) = delete;

  // A rewrite of a document in `folder` begins; returns its file system, or
  // nothing when the folder cannot be opened (the rewrite then syncs its own
  // file). The file system is opened once, before anything is written to
  // it, so that its sync reports every write-back failure from then on.
  std::optional<dev_t> enter(const std::string& folder);
  // The rewrite ends, whether or not it came to a sync.
  void leave();

  // Waits until `fileSystem` has been synced since this call began. False
  // when that sync failed: the caller then syncs its own file, which fails
  // as a single rewrite would.
  bool awaitDurable(dev_t fileSystem);

  // The number of file system syncs made, for the summary of a run.
  std::uint64_t syncCount() const;

 private:
  bool syncFileSystems(const std::set<dev_t>& devices);

  ProcessorPool& processors_;
  const std::chrono::milliseconds gatherTime_;
  mutable std::mutex mutex_;
  // The leader of the group being gathered waits on `gathered_`, the others
  // on `synced_`: a rewrite that arrives or leaves wakes one thread, not all.
  std::condition_variable gathered_;
  std::condition_variable groupSynced_;
  int active_ = 0;
  int waiting_ = 0;            // in the group being gathered
  bool leaderChosen_ = false;  // for the group being gathered
  bool syncing_ = false;
  std::uint64_t gathering_ = 1;  // the number of the group being gathered
  std::uint64_t synced_ = 0;     // the last group whose sync is over
  std::set<std::uint64_t> failedGroups_;
  std::set<dev_t> devices_;                 // of the group being gathered
  std::map<dev_t, int> fileSystemHandles_;  // a folder of each file system, open
  std::uint64_t syncCount_ = 0;
};

}  // namespace tagwright

#endif  // TAGWRIGHT_APP_BATCH_GROUP_SYNC_H_
