#ifndef TAGWRIGHT_TESTS_SUPPORT_FAKE_PLATFORM_H_
#define TAGWRIGHT_TESTS_SUPPORT_FAKE_PLATFORM_H_

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/host_path.h"
#include "platform/line_reader.h"
#include "platform/platform.h"
#include "platform/wildcard.h"

namespace tagwright {

// A platform that keeps its files in memory, by host path ("/web/a.htm" for
// the physical "C:\web\a.htm"), logs every call by name, and can fail any
// call: `failCall(n, kind)` makes the n-th call from now on throw.
class FakePlatform : public Platform {
 public:
  std::map<std::string, std::string> files;
  std::optional<std::string> settings;
  bool hardLinks = true;
  std::vector<std::string> calls;
  // Called as each call begins, with its name: lets a test change the files
  // between two calls, as another process could, or fail a call by its name.
  std::function<void(const std::string& call)> beforeCall;

  // Power cut: when call number `crashAtCall` begins, `crashImage` becomes
  // the files as a power cut would leave them: a file written or made since
  // its last sync holds kLostWrites. The run itself goes on.
  static constexpr const char* kLostWrites = "<lost in the power cut>";
  int crashAtCall = -1;
  std::optional<std::map<std::string, std::string>> crashImage;

  void failCall(int n, Failure::Kind kind) {
    failAt_ = static_cast<int>(calls.size()) + n;
    failKind_ = kind;
  }
  int openFileCount() const { return static_cast<int>(open_.size()); }

  Int16 nextFreeFileNumber() override {
    enter("nextFreeFileNumber");
    int n = 1;
    while (open_.contains(n)) ++n;
    return n;
  }
  void openForInput(Int16 fileNumber, TextView path) override {
    enter("openForInput");
    auto it = files.find(hostPath(path));
    if (it == files.end()) throw Failure(Failure::Kind::kFileNotFound);
    OpenFile& file = open_[fileNumber.value()] = {.path = it->first, .bytes = it->second};
    file.source = std::make_unique<Source>(file.bytes, [this] { enter("read"); });
    // A small block, so that lines run over block ends in every test.
    file.reader = std::make_unique<LineReader>(*file.source, 7);
  }
  void openForOutput(Int16 fileNumber, TextView path) override {
    enter("openForOutput");
    std::string host = hostPath(path);
    if (files.contains(host)) throw Failure(Failure::Kind::kFileExists);
    files[host];
    unsynced_.insert(host);
    open_[fileNumber.value()] = {.path = host, .bytes = ""};
  }
  void readLines(Int16 fileNumber, std::string& bytes, std::size_t untilSize, LineEnds lineEnds,
                 std::vector<std::size_t>& addedLineEnds) override {
    open_.at(fileNumber.value()).reader->readLines(bytes, untilSize, lineEnds, addedLineEnds);
  }
  bool endOfFile(Int16 fileNumber) override {
    return open_.at(fileNumber.value()).reader->endOfFile();
  }
  std::uint64_t fileSize(Int16 fileNumber) override {
    return open_.at(fileNumber.value()).bytes.size();
  }
  void writeBytes(Int16 fileNumber, std::string_view bytes) override {
    enter("writeBytes");
    OpenFile& file = open_.at(fileNumber.value());
    file.bytes.append(bytes);
    unsynced_.insert(file.path);
  }
  // Nothing is buffered here: a written file is only ever unsynced.
  void flushFile(Int16) override { enter("flushFile"); }
  void syncFile(Int16 fileNumber) override {
    enter("syncFile");
    const OpenFile& file = open_.at(fileNumber.value());
    files[file.path] = file.bytes;
    unsynced_.erase(file.path);
  }
  void closeFile(Int16 fileNumber) override {
    enter("closeFile");
    if (open_.contains(fileNumber.value())) close(open_.extract(fileNumber.value()).mapped());
  }
  void closeAllFiles() override {
    calls.push_back("closeAllFiles");
    for (auto& [number, file] : open_) close(file);
    open_.clear();
  }
  bool firstMatchingFile(TextView pattern) override {
    enter("firstMatchingFile");
    return !matching(pattern).empty();
  }
  void deleteMatchingFiles(TextView pattern) override {
    for (const std::string& path : matching(pattern)) {
      enter("deleteFile");
      files.erase(path);
      unsynced_.erase(path);
    }
  }
  void deleteNamedFile(TextView path) override {
    enter("deleteFile");
    unsynced_.erase(hostPath(path));
    files.erase(hostPath(path));
  }
  void renameFile(TextView from, TextView to) override { move(from, to, "renameFile", true); }
  void replaceFile(TextView from, TextView to) override { move(from, to, "replaceFile", false); }
  bool linkFile(TextView from, TextView to) override {
    enter("linkFile");
    if (!hardLinks) return false;
    std::string source = hostPath(from), target = hostPath(to);
    if (!files.contains(source)) throw Failure(Failure::Kind::kFileNotFound);
    if (files.contains(target)) throw Failure(Failure::Kind::kFileExists);
    files[target] = files[source];
    if (unsynced_.contains(source)) unsynced_.insert(target);
    return true;
  }
  void syncFolderOf(TextView) override { enter("syncFolderOf"); }
  void copyAttributes(TextView, TextView) override { enter("copyAttributes"); }
  Text resolveLinks(TextView path) override { return enter("resolveLinks"), Text(path); }
  Text followLinksAlong(TextView path) override { return enter("followLinksAlong"), Text(path); }
  std::vector<Text> listMatchingFiles(TextView pattern) override {
    enter("listMatchingFiles");
    std::vector<Text> names;
    for (const std::string& path : matching(pattern)) names.push_back(fromUtf8(nameOf(path)));
    return names;
  }
  // One process, and the tests run one rewrite at a time: nothing to lock.
  std::unique_ptr<FileLock> lockFile(TextView) override { return nullptr; }
  void adviseLargeBuffer(void*, std::size_t) override {}
  LocalTime localTime(int daysAgo) override {
    enter("localTime");
    LocalTime t{11, 19, 0, 43, 51};
    t.day -= daysAgo;  // enough calendar for the tests: days within one month
    return t;
  }
  std::unique_ptr<RandomGenerator> seededRandom() override {
    struct Fixed : RandomGenerator {
      double next() override { return 0.4375; }
    };
    enter("seededRandom");
    return std::make_unique<Fixed>();
  }
  std::optional<std::string> readSettingsFile() override { return settings; }

 private:
  // Reads an open file's bytes through `enter`, so that reads can fail.
  struct Source : ByteSource {
    Source(const std::string& text, std::function<void()> onRead) : bytes(text), enter(onRead) {}
    std::size_t read(char* buffer, std::size_t capacity) override {
      enter();
      std::size_t n = bytes.copy(buffer, capacity, at);
      at += n;
      return n;
    }
    const std::string& bytes;
    std::function<void()> enter;
    std::size_t at = 0;
  };
  struct OpenFile {
    std::string path;
    std::string bytes;  // what is read, or what was written
    std::unique_ptr<ByteSource> source = nullptr;
    std::unique_ptr<LineReader> reader = nullptr;  // for input only
  };

  // Logs the call and throws when it is the one to fail.
  void enter(const std::string& name) {
    if (beforeCall) beforeCall(name);
    calls.push_back(name);
    if (static_cast<int>(calls.size()) == crashAtCall) {
      crashImage = files;
      for (const std::string& path : unsynced_) {
        if (crashImage->contains(path)) (*crashImage)[path] = kLostWrites;
      }
    }
    if (static_cast<int>(calls.size()) == failAt_) throw Failure(failKind_);
  }
  // An output file holds what was written to it once it is closed.
  void close(const OpenFile& file) {
    if (!file.reader) files[file.path] = file.bytes;
  }
  static std::string folderOf(const std::string& path) { return path.substr(0, path.rfind('/')); }
  static std::string nameOf(const std::string& path) { return path.substr(path.rfind('/') + 1); }
  std::vector<std::string> matching(TextView pattern) const {
    std::string host = hostPath(pattern), mask = nameOf(host);
    std::vector<std::string> found;
    for (const auto& [path, bytes] : files) {
      std::string name = nameOf(path);
      bool named = hasWildcard(mask) ? name[0] != '.' && matchesWildcard(mask, name) : name == mask;
      if (folderOf(path) == folderOf(host) && named) found.push_back(path);
    }
    return found;
  }
  void move(TextView from, TextView to, const char* call, bool refuseExisting) {
    enter(call);
    std::string source = hostPath(from), target = hostPath(to);
    if (!files.contains(source)) throw Failure(Failure::Kind::kFileNotFound);
    if (refuseExisting && files.contains(target)) throw Failure(Failure::Kind::kFileExists);
    files[target] = std::move(files[source]);
    files.erase(source);
    if (unsynced_.erase(source) > 0) {
      unsynced_.insert(target);
    } else {
      unsynced_.erase(target);
    }
  }

  std::map<int, OpenFile> open_;
  std::set<std::string> unsynced_;
  int failAt_ = -1;
  Failure::Kind failKind_ = Failure::Kind::kFileAccess;
};

}  // namespace tagwright

#endif  // TAGWRIGHT_TESTS_SUPPORT_FAKE_PLATFORM_H_
