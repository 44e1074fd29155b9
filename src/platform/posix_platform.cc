// The only file of the component that talks to the operating system.
#include <aio.h>
#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#if __has_include(<linux/openat2.h>)
#include <linux/openat2.h>
#endif

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <map>
#include <memory>
#include <random>
#include <system_error>

#include "platform/host_path.h"
#include "platform/line_reader.h"
#include "platform/platform.h"
#include "platform/wildcard.h"

namespace tagwright {
namespace {

constexpr int kLastFileNumber = 255;
constexpr std::size_t kWriteBufferSize = 512 * 1024;
// Small enough to stay in the processor's second-level cache between the
// kernel's copy into it and the line reader's copy out of it: reads of 512 KiB
// took the 16 MiB page about 1/8 longer to read and cut than reads of 128 KiB.
constexpr std::size_t kReadBufferSize = 128 * 1024;
constexpr std::size_t kWritebackStep = 8 * 1024 * 1024;

[[noreturn]] void failWithErrno() { throw Failure::fromErrno(errno); }

// True when a segment of `path` is empty, "." or "..": only then do its
// names need normalizing.
bool hasDotOrEmptySegment(std::string_view path) {
  for (std::size_t start = 1; start <= path.size();) {
    std::size_t end = std::min(path.find('/', start), path.size());
    std::string_view segment = path.substr(start, end - start);
    if (segment.empty() || segment == "." || segment == "..") return true;
    start = end + 1;
  }
  return false;
}

// True when `path`, absolute, names something that exists with no symbolic
// link anywhere along it, so that its names alone are its resolution: one
// lookup by the system, where realpath reads each component as a link. False
// when that cannot be told this way (a link, a missing part, an older system).
bool existsWithoutLinks(const std::string& path) {
#if defined(SYS_openat2) && defined(RESOLVE_NO_SYMLINKS)
  if (path.empty() || path[0] != '/') return false;
  open_how how{};
  how.flags = O_PATH | O_CLOEXEC;
  how.resolve = RESOLVE_NO_SYMLINKS;
  long fd = ::syscall(SYS_openat2, AT_FDCWD, path.c_str(), &how, sizeof how);
  if (fd < 0) return false;
  ::close(static_cast<int>(fd));
  return true;
#else
  (void)path;
  return false;
#endif
}

// `expectedSize` is the file's size when it was opened, 0 when not known.
class FdSource : public ByteSource {
 public:
  // `plainFile`: the descriptor reads a plain file, which gives fewer bytes
  // than asked for only at its end (a pipe may give fewer at any time).
  FdSource(int fd, std::uint64_t expectedSize, bool plainFile)
      : fd_(fd), expectedSize_(expectedSize), plainFile_(plainFile) {}
  std::size_t read(char* buffer, std::size_t capacity) override {
    for (;;) {
      ssize_t n = ::read(fd_, buffer, capacity);
      if (n >= 0) {
        bytesRead_ += static_cast<std::uint64_t>(n);
        // A small page is then read with one call, not with a second that
        // finds its end.
        shortRead_ = plainFile_ && static_cast<std::size_t>(n) < capacity;
        return static_cast<std::size_t>(n);
      }
      if (errno != EINTR) failWithErrno();
    }
  }
  std::size_t bytesLeft() const override {
    return expectedSize_ > bytesRead_ ? static_cast<std::size_t>(expectedSize_ - bytesRead_) : 0;
  }
  bool reachedEnd() const override { return shortRead_; }

 private:
  int fd_;
  const std::uint64_t expectedSize_;
  const bool plainFile_;
  std::uint64_t bytesRead_ = 0;
  bool shortRead_ = false;
};

void writeAll(int fd, const char* data, std::size_t size) {
  while (size > 0) {
    ssize_t n = ::write(fd, data, size);
    if (n < 0) {
      if (errno == EINTR) continue;
      failWithErrno();
    }
    data += n;
    size -= static_cast<std::size_t>(n);
  }
}

// A disk that holds writes in a cache is slow to sync in proportion to what
// was written since its last sync, so a long output is synced in the
// background as it grows: the final sync then finds little left to do. One
// request runs at a time; its failure is kept for the caller's own sync,
// since a failed sync reports its error to one caller only.
class BackgroundSync {
 public:
  BackgroundSync() = default;
  BackgroundSync(const BackgroundSync&) = delete;
  BackgroundSync& operator=(const BackgroundSync&) = delete;
  ~BackgroundSync() { wait(); }

  void startIfIdle(int fd) {
    if (running_ && ::aio_error(request_.get()) == EINPROGRESS) return;
    wait();
    if (error_ != 0) return;
    if (!request_) request_ = std::make_unique<aiocb>();
    *request_ = aiocb{};
    request_->aio_fildes = fd;
    request_->aio_sigevent.sigev_notify = SIGEV_NONE;
    // A host without asynchronous requests only loses the head start.
    running_ = ::aio_fsync(O_DSYNC, request_.get()) == 0;
  }

  // Waits for the request in flight; fails as it failed, or as an earlier one did.
  void finish() {
    wait();
    if (error_ != 0) throw Failure::fromErrno(error_);
  }

  void wait() {
    if (!running_) return;
    const aiocb* requests[] = {request_.get()};
    while (::aio_error(request_.get()) == EINPROGRESS) ::aio_suspend(requests, 1, nullptr);
    int error = ::aio_error(request_.get());
    ::aio_return(request_.get());
    if (error != 0) error_ = error;
    running_ = false;
  }

 private:
  // Held apart: glibc's request ends in a zero-length array, which may not be a member.
  std::unique_ptr<aiocb> request_;
  bool running_ = false;
  int error_ = 0;
};

// The read buffer of a file: the whole file and the read that finds its end
// when it is small, so that a small page costs no large buffer, up to a cap.
// A size of 0 is also what a pipe tells: it gets the cap, not reads of 4 KiB.
std::size_t readBufferFor(std::uint64_t size) {
  constexpr std::uint64_t kSmallest = 4096, kLargest = kReadBufferSize;
  if (size == 0) return kLargest;
  return static_cast<std::size_t>(std::clamp<std::uint64_t>(size + 1, kSmallest, kLargest));
}

struct OpenFile {
  OpenFile(int descriptor, std::uint64_t size, bool plainFile)
      : fd(descriptor), source(descriptor, size, plainFile), reader(source, readBufferFor(size)) {}
  ~OpenFile() {
    backgroundSync.wait();
    if (fd >= 0) ::close(fd);
  }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;

  void flush() {
    write(pending.data(), pending.size());
    pending.clear();
  }

  // Output files are synced before they are used, so their pages are handed
  // to the disk as they fill rather than all at the sync: the writing then
  // overlaps the scan, and the sync waits for little. A kernel without the
  // calls only loses the overlap.
  void write(const char* data, std::size_t size) {
    writeAll(fd, data, size);
    written += size;
    if (written - handedToDisk >= kWritebackStep) {
      handedToDisk = written;
      backgroundSync.startIfIdle(fd);
    }
  }

  int fd;
  bool forOutput = false;
  FdSource source;
  LineReader reader;
  std::string pending;          // output not yet written
  std::uint64_t inputSize = 0;  // of an input file, when opened
  std::size_t written = 0;
  std::size_t handedToDisk = 0;
  BackgroundSync backgroundSync;
};

// File numbers are per thread: two pages on two threads never see each
// other's files, and "close all" touches only the calling thread's.
thread_local std::map<int, std::unique_ptr<OpenFile>> threadFiles;

OpenFile& fileOf(Int16 fileNumber) {
  auto it = threadFiles.find(fileNumber.value());
  if (it == threadFiles.end()) throw Failure(Failure::Kind::kFileAccess);
  return *it->second;
}

void openUnder(Int16 fileNumber, int fd, bool forOutput, std::uint64_t size,
               bool plainFile = false) {
  auto file = std::make_unique<OpenFile>(fd, size, plainFile);
  file->forOutput = forOutput;
  file->inputSize = size;
  threadFiles[fileNumber.value()] = std::move(file);
}

// The folder and the last component of a host path.
std::pair<std::string, std::string> splitHostPath(const std::string& path) {
  std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return {".", path};
  return {slash == 0 ? "/" : path.substr(0, slash), path.substr(slash + 1)};
}

// True for a plain file. A name in a folder that cannot be searched is not
// taken for a missing file: that folder cannot be read, which is a failure.
bool isPlainFile(const std::string& path) {
  struct stat st;
  if (::stat(path.c_str(), &st) == 0) return S_ISREG(st.st_mode);
  if (errno == EACCES) failWithErrno();
  return false;
}

// The host paths of the plain files that match a pattern, ascending by bytes.
std::vector<std::string> matchingHostPaths(TextView pattern, bool missingFolderIsEmpty) {
  auto [folder, mask] = splitHostPath(hostPath(pattern));
  std::string prefix = folder == "/" ? "/" : folder + "/";
  std::vector<std::string> names;
  if (!hasWildcard(mask)) {
    if (!mask.empty() && isPlainFile(prefix + mask)) names.push_back(mask);
  } else {
    DIR* dir = ::opendir(folder.c_str());
    if (dir == nullptr) {
      if (missingFolderIsEmpty && (errno == ENOENT || errno == ENOTDIR)) return {};
      failWithErrno();
    }
    std::unique_ptr<DIR, int (*)(DIR*)> closer(dir, ::closedir);
    for (;;) {
      errno = 0;
      dirent* entry = ::readdir(dir);
      if (entry == nullptr) {
        // A folder that fails half-way must not look like a shorter one.
        if (errno != 0) failWithErrno();
        break;
      }
      std::string name = entry->d_name;
      if (name.empty() || name[0] == '.') continue;
      if (matchesWildcard(mask, name) && isPlainFile(prefix + name)) names.push_back(name);
    }
    std::sort(names.begin(), names.end());
  }
  for (std::string& name : names) name = prefix + name;
  return names;
}

// Opens a plain file for reading without waiting on a FIFO or taking a
// terminal; the name is tested before, so that no device is even opened, and
// what was opened after, since the name may have changed in between. Sets
// `size` to the file's length. O_NONBLOCK stays set: it changes nothing for
// the plain file that was opened.
int openPlainFile(const std::string& path, std::uint64_t& size) {
  struct stat st;
  if (::stat(path.c_str(), &st) != 0) failWithErrno();
  if (!S_ISREG(st.st_mode)) throw Failure(Failure::Kind::kFileAccess);
  int fd = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  if (fd < 0) failWithErrno();
  if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
    ::close(fd);
    throw Failure(Failure::Kind::kFileAccess);
  }
  size = static_cast<std::uint64_t>(st.st_size);
  return fd;
}

class DescriptorLock : public FileLock {
 public:
  explicit DescriptorLock(int fd) : fd_(fd) {}
  ~DescriptorLock() override { ::close(fd_); }
  DescriptorLock(const DescriptorLock&) = delete;
  DescriptorLock& operator=(const DescriptorLock&) = delete;
  int fd() const { return fd_; }

 private:
  int fd_;
};

bool sameFile(const struct stat& a, const struct stat& b) {
  return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

class MinstdRandom : public RandomGenerator {
 public:
  explicit MinstdRandom(std::uint64_t seed) : engine_(static_cast<std::uint32_t>(seed)) {}
  double next() override { return std::uniform_real_distribution<double>(0.0, 1.0)(engine_); }

 private:
  std::mt19937 engine_;
};

class PosixPlatform : public Platform {
 public:
  PosixPlatform() = default;
  explicit PosixPlatform(std::string settingsFile) : settingsFile_(std::move(settingsFile)) {}
  // Serves the document at `streamedPath` (a host path) from `descriptor`.
  PosixPlatform(std::string streamedPath, int descriptor)
      : streamedPath_(std::move(streamedPath)), streamedDescriptor_(descriptor) {}

  Int16 nextFreeFileNumber() override {
    for (int n = 1; n <= kLastFileNumber; ++n) {
      if (!threadFiles.contains(n)) return n;
    }
    throw Failure(Failure::Kind::kTooManyFiles);
  }

  void openForInput(Int16 fileNumber, TextView path) override {
    std::string host = hostPath(path);
    if (streamedPath_ && host == *streamedPath_) {
      openStreamed(fileNumber);
      return;
    }
    std::uint64_t size = 0;
    int fd = openPlainFile(host, size);
    openUnder(fileNumber, fd, false, size, /*plainFile=*/true);
  }

  void openForOutput(Int16 fileNumber, TextView path) override {
    std::string host = hostPath(path);
    int fd = ::open(host.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd < 0) failWithErrno();
    openUnder(fileNumber, fd, true, 0);
  }

  void readLines(Int16 fileNumber, std::string& bytes, std::size_t untilSize, LineEnds lineEnds,
                 std::vector<std::size_t>& addedLineEnds) override {
    fileOf(fileNumber).reader.readLines(bytes, untilSize, lineEnds, addedLineEnds);
  }

  bool endOfFile(Int16 fileNumber) override {
    OpenFile& file = fileOf(fileNumber);
    return file.forOutput || file.reader.endOfFile();
  }

  std::uint64_t fileSize(Int16 fileNumber) override { return fileOf(fileNumber).inputSize; }

  void writeBytes(Int16 fileNumber, std::string_view bytes) override {
    OpenFile& file = fileOf(fileNumber);
    // A large write goes straight out rather than through the buffer.
    if (file.pending.size() + bytes.size() > kWriteBufferSize) {
      file.flush();
      if (bytes.size() >= kWriteBufferSize) {
        file.write(bytes.data(), bytes.size());
        return;
      }
    }
    file.pending.append(bytes);
  }

  void flushFile(Int16 fileNumber) override {
    OpenFile& file = fileOf(fileNumber);
    file.flush();
    // A background sync that failed must fail this file, whoever syncs it.
    file.backgroundSync.finish();
  }

  void syncFile(Int16 fileNumber) override {
    OpenFile& file = fileOf(fileNumber);
    file.flush();
    file.backgroundSync.finish();
    if (::fsync(file.fd) != 0) failWithErrno();
  }

  void closeFile(Int16 fileNumber) override {
    auto it = threadFiles.find(fileNumber.value());
    if (it == threadFiles.end()) return;
    std::unique_ptr<OpenFile> file = std::move(it->second);
    threadFiles.erase(it);
    if (file->forOutput) file->flush();
    file->backgroundSync.finish();
    int fd = file->fd;
    file->fd = -1;
    if (::close(fd) != 0) failWithErrno();
  }

  void closeAllFiles() override { threadFiles.clear(); }

  bool firstMatchingFile(TextView pattern) override {
    return !matchingHostPaths(pattern, true).empty();
  }

  void deleteMatchingFiles(TextView pattern) override {
    for (const std::string& path : matchingHostPaths(pattern, true)) {
      if (::unlink(path.c_str()) != 0 && errno != ENOENT) failWithErrno();
    }
  }

  void deleteNamedFile(TextView path) override {
    std::string host = hostPath(path);
    if (isPlainFile(host) && ::unlink(host.c_str()) != 0 && errno != ENOENT) failWithErrno();
  }

  void renameFile(TextView from, TextView to) override {
    std::string source = hostPath(from), target = hostPath(to);
    if (::renameat2(AT_FDCWD, source.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE) == 0) {
      return;
    }
    if (errno != EINVAL && errno != ENOSYS) failWithErrno();
    // A file system without RENAME_NOREPLACE: test, then rename.
    struct stat st;
    if (::lstat(target.c_str(), &st) == 0) throw Failure(Failure::Kind::kFileExists);
    if (::rename(source.c_str(), target.c_str()) != 0) failWithErrno();
  }

  void replaceFile(TextView from, TextView to) override {
    if (::rename(hostPath(from).c_str(), hostPath(to).c_str()) != 0) failWithErrno();
  }

  bool linkFile(TextView from, TextView to) override {
    if (::link(hostPath(from).c_str(), hostPath(to).c_str()) == 0) return true;
    if (errno == EPERM || errno == EOPNOTSUPP || errno == EXDEV || errno == EMLINK) return false;
    failWithErrno();
  }

  void syncFolderOf(TextView path) override {
    std::string folder = splitHostPath(hostPath(path)).first;
    int fd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) failWithErrno();
    int result = ::fsync(fd);
    int error = errno;
    ::close(fd);
    // Some file systems cannot sync a folder; that is no failure of ours.
    if (result != 0 && error != EINVAL && error != EBADF) throw Failure::fromErrno(error);
  }

  void copyAttributes(TextView from, TextView to) override {
    struct stat st;
    std::string source = hostPath(from), target = hostPath(to);
    if (::stat(source.c_str(), &st) != 0) failWithErrno();
    if (::chmod(target.c_str(), st.st_mode & 07777) != 0) failWithErrno();
    // Only a privileged process may give a file away; others keep their own.
    if (::chown(target.c_str(), st.st_uid, st.st_gid) != 0 && errno != EPERM) failWithErrno();
  }

  Text resolveLinks(TextView path) override {
    std::string host = hostPath(path);
    struct stat st;
    if (::lstat(host.c_str(), &st) != 0 || !S_ISLNK(st.st_mode)) return Text(path);
    char resolved[PATH_MAX];
    if (::realpath(host.c_str(), resolved) == nullptr) return Text(path);
    return physicalPathOf(resolved);
  }

  Text followLinksAlong(TextView path) override {
    std::string host = hostPath(path);
    if (existsWithoutLinks(host)) {
      if (host.size() > 1 && host.back() == '/') host.pop_back();
      if (!hasDotOrEmptySegment(host)) return physicalPathOf(host);
      std::string normal = std::filesystem::path(host).lexically_normal().string();
      if (normal.size() > 1 && normal.back() == '/') normal.pop_back();
      return physicalPathOf(normal);
    }
    // weakly_canonical would stat the path first and then read every
    // component as a link once more.
    char resolved[PATH_MAX];
    if (::realpath(host.c_str(), resolved) != nullptr) return physicalPathOf(resolved);
    std::error_code failed;
    std::filesystem::path real = std::filesystem::weakly_canonical(host, failed);
    return failed ? Text(path) : physicalPathOf(real.string());
  }

  std::vector<Text> listMatchingFiles(TextView pattern) override {
    std::vector<Text> names;
    for (const std::string& path : matchingHostPaths(pattern, true)) {
      names.push_back(fromUtf8(splitHostPath(path).second));
    }
    return names;
  }

  // The lock of the document's own file leaves no lock file behind. A
  // rewrite puts a new file under the name, so a waiter that gets the lock
  // of the file it replaced tries again on the new one.
  std::unique_ptr<FileLock> lockFile(TextView path) override {
    const std::string host = hostPath(path);
    for (;;) {
      std::unique_ptr<DescriptorLock> lock;
      std::uint64_t size = 0;
      try {
        lock = std::make_unique<DescriptorLock>(openPlainFile(host, size));
      } catch (const Failure&) {
        return nullptr;
      }
      int result;
      while ((result = ::flock(lock->fd(), LOCK_EX)) != 0 && errno == EINTR) {
      }
      struct stat held, named;
      if (result != 0 || ::fstat(lock->fd(), &held) != 0) return nullptr;
      if (::stat(host.c_str(), &named) == 0 && sameFile(held, named)) return lock;
    }
  }

  void adviseLargeBuffer(void* data, std::size_t size) override {
    // Only whole large pages inside the buffer can be backed by one.
    constexpr std::uintptr_t kLargePage = 2 * 1024 * 1024;
    const auto begin = reinterpret_cast<std::uintptr_t>(data);
    const std::uintptr_t first = (begin + kLargePage - 1) & ~(kLargePage - 1);
    const std::uintptr_t last = (begin + size) & ~(kLargePage - 1);
    if (last > first) {
      ::madvise(reinterpret_cast<void*>(first), last - first, MADV_HUGEPAGE);
    }
  }

  LocalTime localTime(int daysAgo) override {
    std::time_t now = std::time(nullptr) - static_cast<std::time_t>(daysAgo) * 24 * 60 * 60;
    std::tm parts{};
    ::localtime_r(&now, &parts);
    return {parts.tm_mon + 1, parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec};
  }

  std::unique_ptr<RandomGenerator> seededRandom() override {
    auto ticks = std::chrono::steady_clock::now().time_since_epoch().count();
    return std::make_unique<MinstdRandom>(static_cast<std::uint64_t>(ticks));
  }

  std::optional<std::string> readSettingsFile() override {
    const char* named = std::getenv("TAGWRIGHT_SETTINGS");
    std::string path = settingsFile_      ? *settingsFile_
                       : named != nullptr ? named
                                          : "/etc/tagwright/settings.conf";
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (file == nullptr) return std::nullopt;
    std::string text;
    char block[4096];
    std::size_t n;
    while ((n = std::fread(block, 1, sizeof block, file)) > 0) text.append(block, n);
    bool failed = std::ferror(file) != 0;
    std::fclose(file);
    if (failed) return std::nullopt;
    return text;
  }

 private:
  // A pipe is read like a file, once: a second opening finds it at its end.
  // Its size is unknown (0) unless it is a plain file given as the stream.
  void openStreamed(Int16 fileNumber) {
    int fd = ::fcntl(streamedDescriptor_, F_DUPFD_CLOEXEC, 0);
    if (fd < 0) failWithErrno();
    struct stat st;
    std::uint64_t size = 0;
    if (::fstat(fd, &st) == 0 && S_ISREG(st.st_mode) && st.st_size > 0) {
      size = static_cast<std::uint64_t>(st.st_size);
    }
    openUnder(fileNumber, fd, false, size);
  }

  std::optional<std::string> settingsFile_;
  std::optional<std::string> streamedPath_;
  int streamedDescriptor_ = -1;
};

}  // namespace

Platform& systemPlatform() {
  // Stateless: the files it keeps are per thread, above.
  static PosixPlatform platform;
  return platform;
}

std::unique_ptr<Platform> systemPlatformWithSettings(std::string settingsFile) {
  return std::make_unique<PosixPlatform>(std::move(settingsFile));
}

std::unique_ptr<Platform> systemPlatformStreaming(const std::string& documentPath, int descriptor) {
  return std::make_unique<PosixPlatform>(hostPath(fromUtf8(documentPath)), descriptor);
}

}  // namespace tagwright
