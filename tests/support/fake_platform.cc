#include "support/fake_platform.h"

#include <functional>

#include "platform/host_path.h"
#include "platform/wildcard.h"

namespace tagwright {
namespace {

std::pair<std::string, std::string> splitPath(const std::string& path) {
  std::size_t slash = path.rfind('/');
  return {path.substr(0, slash + 1), path.substr(slash + 1)};
}

// Reads an open file's bytes through the platform, so that reads can fail.
struct FakeSource : ByteSource {
  FakeSource(const std::string& text, std::function<void()> onRead) : bytes(text), enter(onRead) {}
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

struct FixedRandom : RandomGenerator {
  explicit FixedRandom(double fixed) : value(fixed) {}
  double next() override { return value; }
  double value;
};

}  // namespace

void FakePlatform::enter(const std::string& name) {
  calls.push_back(name);
  if (static_cast<int>(calls.size()) == crashAtCall) {
    crashImage = files;
    for (const std::string& path : unsynced_) {
      if (crashImage->contains(path)) (*crashImage)[path] = kLostWrites;
    }
  }
  bool byName = name == failName_ && --failNameOccurrence_ == 0;
  if (byName || static_cast<int>(calls.size()) == failAt_) throw Failure(failKind_);
}

Int16 FakePlatform::nextFreeFileNumber() {
  enter("nextFreeFileNumber");
  int n = 1;
  while (open_.contains(n)) ++n;
  return n;
}

void FakePlatform::openForInput(Int16 fileNumber, TextView path) {
  enter("openForInput");
  auto it = files.find(hostPath(path));
  if (it == files.end()) throw Failure(Failure::Kind::kFileNotFound);
  OpenFile& file = open_[fileNumber.value()] = {.path = it->first, .bytes = it->second};
  file.source = std::make_unique<FakeSource>(file.bytes, [this] { enter("read"); });
  // A small block, so that lines run over block ends in every test.
  file.reader = std::make_unique<LineReader>(*file.source, 7);
}

void FakePlatform::openForOutput(Int16 fileNumber, TextView path) {
  enter("openForOutput");
  std::string host = hostPath(path);
  files[host].clear();
  made.insert(host);
  unsynced_.insert(host);
  open_[fileNumber.value()] = {.path = host, .bytes = ""};
}

void FakePlatform::writeBytes(Int16 fileNumber, std::string_view bytes) {
  enter("writeBytes");
  OpenFile& file = open_.at(fileNumber.value());
  file.bytes.append(bytes);
  unsynced_.insert(file.path);
}

void FakePlatform::syncFile(Int16 fileNumber) {
  enter("syncFile");
  const OpenFile& file = open_.at(fileNumber.value());
  files[file.path] = file.bytes;
  unsynced_.erase(file.path);
}

void FakePlatform::closeFile(Int16 fileNumber) {
  enter("closeFile");
  auto it = open_.find(fileNumber.value());
  if (it != open_.end() && !it->second.reader) files[it->second.path] = it->second.bytes;
  if (it != open_.end()) open_.erase(it);
}

void FakePlatform::closeAllFiles() {
  calls.push_back("closeAllFiles");
  for (auto& [number, file] : open_) {
    if (!file.reader) files[file.path] = file.bytes;
  }
  open_.clear();
}

std::vector<std::string> FakePlatform::matching(TextView pattern) const {
  auto [folder, mask] = splitPath(hostPath(pattern));
  std::vector<std::string> found;
  for (const auto& [path, bytes] : files) {
    auto [fileFolder, name] = splitPath(path);
    bool named = hasWildcard(mask) ? name[0] != '.' && matchesWildcard(mask, name) : name == mask;
    if (fileFolder == folder && named) found.push_back(path);
  }
  return found;
}

bool FakePlatform::firstMatchingFile(TextView pattern) {
  enter("firstMatchingFile");
  return !matching(pattern).empty();
}

void FakePlatform::deleteMatchingFiles(TextView pattern) {
  for (const std::string& path : matching(pattern)) {
    enter("deleteFile");
    files.erase(path);
    unsynced_.erase(path);
  }
}

void FakePlatform::move(TextView from, TextView to, const char* call, bool refuseExisting) {
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

bool FakePlatform::linkFile(TextView from, TextView to) {
  enter("linkFile");
  if (!hardLinks) return false;
  std::string source = hostPath(from), target = hostPath(to);
  if (!files.contains(source)) throw Failure(Failure::Kind::kFileNotFound);
  if (files.contains(target)) throw Failure(Failure::Kind::kFileExists);
  files[target] = files[source];
  if (unsynced_.contains(source)) unsynced_.insert(target);
  return true;
}

std::vector<Text> FakePlatform::listMatchingFiles(TextView pattern) {
  enter("listMatchingFiles");
  std::vector<Text> names;
  for (const std::string& path : matching(pattern))
    names.push_back(fromUtf8(splitPath(path).second));
  return names;
}

LocalTime FakePlatform::localTime(int daysAgo) {
  enter("localTime");
  LocalTime t = now;
  t.day -= daysAgo;  // enough calendar for the tests: days within one month
  return t;
}

std::unique_ptr<RandomGenerator> FakePlatform::seededRandom() {
  enter("seededRandom");
  return std::make_unique<FixedRandom>(random);
}

}  // namespace tagwright
