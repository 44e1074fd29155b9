#include "batch/group_sync.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tagwright {

GroupSync::GroupSync(ProcessorPool& processors, std::chrono::milliseconds gatherTime)
    : processors_(processors), gatherTime_(gatherTime) {}

GroupSync::~GroupSync() {
  for (const auto& [device, handle] : fileSystemHandles_) ::close(handle);
}

std::optional<dev_t> GroupSync::enter(const std::string& folder) {
  std::lock_guard lock(mutex_);
  ++active_;
  struct stat status {};
  if (::stat(folder.c_str(), &status) != 0) return std::nullopt;
  if (!fileSystemHandles_.contains(status.st_dev)) {
    int handle = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (handle < 0) return std::nullopt;
    fileSystemHandles_.emplace(status.st_dev, handle);
  }
  return status.st_dev;
}

void GroupSync::leave() {
  std::lock_guard lock(mutex_);
  --active_;
  if (leaderChosen_) gathered_.notify_one();
}

std::uint64_t GroupSync::syncCount() const {
  std::lock_guard lock(mutex_);
  return syncCount_;
}

bool GroupSync::awaitDurable(dev_t fileSystem) {
  processors_.release();
  std::unique_lock lock(mutex_);
  const std::uint64_t group = gathering_;
  devices_.insert(fileSystem);
  ++waiting_;
  if (leaderChosen_) gathered_.notify_one();
  if (!leaderChosen_) {
    leaderChosen_ = true;
    const auto deadline = std::chrono::steady_clock::now() + gatherTime_;
    // A rewrite that is not waiting here may be held up by one that is (two
    // names of one document): the deadline ends the gathering all the same.
    gathered_.wait_until(lock, deadline, [&] { return !syncing_ && waiting_ >= active_; });
    gathered_.wait(lock, [&] { return !syncing_; });
    std::set<dev_t> devices = std::move(devices_);
    devices_.clear();
    waiting_ = 0;
    leaderChosen_ = false;
    ++gathering_;
    syncing_ = true;
    lock.unlock();
    const bool synced = syncFileSystems(devices);
    lock.lock();
    syncing_ = false;
    ++syncCount_;
    if (!synced) failedGroups_.insert(group);
    synced_ = group;
    groupSynced_.notify_all();
    // The next group's leader may wait for this sync to end.
    gathered_.notify_one();
  } else {
    groupSynced_.wait(lock, [&] { return synced_ >= group; });
  }
  const bool synced = !failedGroups_.contains(group);
  lock.unlock();
  processors_.acquire();
  return synced;
}

// Runs without the lock; the handles are only ever added to, and a map's
// elements stay where they are.
bool GroupSync::syncFileSystems(const std::set<dev_t>& devices) {
  bool synced = true;
  for (dev_t device : devices) {
    int handle;
    {
      std::lock_guard lock(mutex_);
      handle = fileSystemHandles_.at(device);
    }
    // syncfs writes and flushes every file of the file system, and reports a
    // write-back failure of any of them since the handle was opened.
    if (::syncfs(handle) != 0) synced = false;
  }
  return synced;
}

}  // namespace tagwright
