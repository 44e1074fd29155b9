#include "batch/batch_platform.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <optional>

#include "platform/text.h"
#include "platform/wildcard.h"

namespace tagwright {
namespace {

// The rewrite in progress on this thread: the folder its new file is made
// in (that of the document, links followed) and the folder's file system.
struct ThreadRewrite {
  bool active = false;
  std::string folder;
  std::optional<dev_t> fileSystem;
};
thread_local ThreadRewrite threadRewrite;

// True when the last name of `pattern` holds a wildcard: the folder in front
// of it is taken as named, whatever characters it holds.
bool namesManyFiles(TextView pattern) {
  const std::size_t slash = pattern.find_last_of(U"\\/");
  return hasWildcard(toUtf8(slash == TextView::npos ? pattern : pattern.substr(slash + 1)));
}

// The folder that holds the file `hostPath` names, links followed, or empty
// when there is no such file. The folder of a document that is no link
// itself is named as the path names it: links among the folders lead to the
// same folder, to be synced and stated, and cost no look-up of each name.
std::string folderHolding(const std::string& hostPath) {
  struct stat status {};
  if (::lstat(hostPath.c_str(), &status) == 0 && !S_ISLNK(status.st_mode)) {
    const std::size_t slash = hostPath.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : hostPath.substr(0, slash);
  }
  std::error_code error;
  std::filesystem::path target = std::filesystem::canonical(hostPath, error);
  return error ? std::string() : target.parent_path().string();
}

}  // namespace

BatchPlatform::Rewrite::Rewrite(BatchPlatform& platform, const std::string& hostPath)
    : platform_(platform) {
  threadRewrite.active = true;
  threadRewrite.folder = folderHolding(hostPath);
  // A document that cannot be found has no folder: its rewrite fails by itself.
  threadRewrite.fileSystem = platform_.group_.enter(threadRewrite.folder);
}

BatchPlatform::Rewrite::~Rewrite() {
  platform_.group_.leave();
  threadRewrite = ThreadRewrite{};
}

void BatchPlatform::syncFile(Int16 fileNumber) {
  if (threadRewrite.active && threadRewrite.fileSystem) {
    inner_.flushFile(fileNumber);
    if (group_.awaitDurable(*threadRewrite.fileSystem)) return;
  }
  inner_.syncFile(fileNumber);
}

void BatchPlatform::syncFolderOf(TextView path) {
  if (!threadRewrite.active || threadRewrite.folder.empty()) return inner_.syncFolderOf(path);
  std::lock_guard lock(foldersMutex_);
  folders_.insert(threadRewrite.folder);
}

bool BatchPlatform::firstMatchingFile(TextView pattern) {
  if (!namesManyFiles(pattern)) return inner_.firstMatchingFile(pattern);
  {
    std::lock_guard lock(sweptMutex_);
    if (swept_.contains(Text(pattern))) return false;
  }
  if (inner_.firstMatchingFile(pattern)) return true;
  std::lock_guard lock(sweptMutex_);
  swept_.emplace(pattern);
  return false;
}

void BatchPlatform::deleteMatchingFiles(TextView pattern) {
  inner_.deleteMatchingFiles(pattern);
  if (!namesManyFiles(pattern)) return;
  std::lock_guard lock(sweptMutex_);
  swept_.emplace(pattern);
}

std::set<std::string> BatchPlatform::syncFolders() {
  std::set<std::string> failed;
  std::lock_guard lock(foldersMutex_);
  for (const std::string& folder : folders_) {
    int handle = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    bool synced = handle >= 0 && (::fsync(handle) == 0 || errno == EINVAL);
    if (handle >= 0) ::close(handle);
    if (!synced) failed.insert(folder);
  }
  folders_.clear();
  return failed;
}

}  // namespace tagwright
