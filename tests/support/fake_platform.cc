#include "support/fake_platform.h"

#include <algorithm>

#include "platform/host_path.h"
#include "platform/wildcard.h"

namespace tagwright {
namespace {

std::pair<std::string, std::string> splitPath(const std::string& path) {
  std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return {"", path};
  return {path.substr(0, slash + 1), path.substr(slash + 1)};
}

class ScriptedRandom : public RandomGenerator {
 public:
  explicit ScriptedRandom(std::vector<double> values) : values_(std::move(values)) {}
  double next() override {
    double value = values_.empty() ? 0.0 : values_[at_ % values_.size()];
    ++at_;
    return value;
  }

 private:
  std::vector<double> values_;
  std::size_t at_ = 0;
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
  bool byNumber = static_cast<int>(calls.size()) == failAt_;
  bool byName = !failName_.empty() && name == failName_ && --failNameOccurrence_ == 0;
  if (byNumber || byName) throw Failure(failKind_);
}

std::size_t FakePlatform::StringSource::read(char* buffer, std::size_t capacity) {
  owner->enter("read");
  std::size_t n = std::min(capacity, bytes.size() - at);
  std::copy_n(bytes.data() + at, n, buffer);
  at += n;
  return n;
}

void FakePlatform::moveSyncState(const std::string& from, const std::string& to) {
  if (unsynced_.erase(from) > 0) {
    unsynced_.insert(to);
  } else {
    unsynced_.erase(to);
  }
}

FakePlatform::OpenFile& FakePlatform::fileOf(Int16 fileNumber) {
  auto it = open_.find(fileNumber.value());
  if (it == open_.end()) throw Failure(Failure::Kind::kFileAccess);
  return it->second;
}

Int16 FakePlatform::nextFreeFileNumber() {
  enter("nextFreeFileNumber");
  int n = 1;
  while (open_.contains(n)) ++n;
  return n;
}

void FakePlatform::openForInput(Int16 fileNumber, TextView path) {
  enter("openForInput");
  std::string host = hostPath(path);
  auto it = files.find(host);
  if (it == files.end()) throw Failure(Failure::Kind::kFileNotFound);
  OpenFile file;
  file.path = host;
  file.source = std::make_unique<StringSource>();
  file.source->bytes = it->second;
  file.source->owner = this;
  // A small block, so that lines run over block ends in every test.
  file.reader = std::make_unique<LineReader>(*file.source, 7);
  open_[fileNumber.value()] = std::move(file);
}

void FakePlatform::openForOutput(Int16 fileNumber, TextView path) {
  enter("openForOutput");
  std::string host = hostPath(path);
  auto [folder, name] = splitPath(host);
  if (unreadableFolders.contains(folder)) throw Failure(Failure::Kind::kPermissionDenied);
  OpenFile file;
  file.path = host;
  file.forOutput = true;
  files[host].clear();
  unsynced_.insert(host);
  open_[fileNumber.value()] = std::move(file);
}

void FakePlatform::readLine(Int16 fileNumber, Text& chunk) {
  fileOf(fileNumber).reader->readLine(chunk);
}

bool FakePlatform::endOfFile(Int16 fileNumber) {
  OpenFile& file = fileOf(fileNumber);
  return file.forOutput || file.reader->endOfFile();
}

void FakePlatform::writeText(Int16 fileNumber, TextView text) {
  enter("writeText");
  OpenFile& file = fileOf(fileNumber);
  appendEncoded(text, file.written);
  unsynced_.insert(file.path);
}

void FakePlatform::syncFile(Int16 fileNumber) {
  enter("syncFile");
  OpenFile& file = fileOf(fileNumber);
  files[file.path] = file.written;
  unsynced_.erase(file.path);
}

void FakePlatform::closeFile(Int16 fileNumber) {
  enter("closeFile");
  auto it = open_.find(fileNumber.value());
  if (it == open_.end()) return;
  if (it->second.forOutput) files[it->second.path] = it->second.written;
  open_.erase(it);
}

void FakePlatform::closeAllFiles() {
  calls.push_back("closeAllFiles");
  for (auto& [number, file] : open_) {
    if (file.forOutput) files[file.path] = file.written;
  }
  open_.clear();
}

std::vector<std::string> FakePlatform::matching(TextView pattern) const {
  auto [folder, mask] = splitPath(hostPath(pattern));
  std::vector<std::string> found;
  for (const auto& [path, bytes] : files) {
    auto [fileFolder, name] = splitPath(path);
    if (fileFolder != folder) continue;
    if (hasWildcard(mask) ? (name[0] != '.' && matchesWildcard(mask, name)) : name == mask) {
      found.push_back(path);
    }
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

void FakePlatform::renameFile(TextView from, TextView to) {
  enter("renameFile");
  std::string source = hostPath(from), target = hostPath(to);
  if (!files.contains(source)) throw Failure(Failure::Kind::kFileNotFound);
  if (files.contains(target)) throw Failure(Failure::Kind::kFileExists);
  files[target] = std::move(files[source]);
  files.erase(source);
  moveSyncState(source, target);
}

void FakePlatform::replaceFile(TextView from, TextView to) {
  enter("replaceFile");
  std::string source = hostPath(from), target = hostPath(to);
  if (!files.contains(source)) throw Failure(Failure::Kind::kFileNotFound);
  files[target] = std::move(files[source]);
  files.erase(source);
  moveSyncState(source, target);
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

void FakePlatform::syncFolderOf(TextView) { enter("syncFolderOf"); }

void FakePlatform::copyAttributes(TextView, TextView) { enter("copyAttributes"); }

Text FakePlatform::resolveLinks(TextView path) {
  enter("resolveLinks");
  return Text(path);
}

std::vector<Text> FakePlatform::listMatchingFiles(TextView pattern) {
  enter("listMatchingFiles");
  auto [folder, mask] = splitPath(hostPath(pattern));
  if (unreadableFolders.contains(folder)) throw Failure(Failure::Kind::kPermissionDenied);
  std::vector<Text> names;
  for (const std::string& path : matching(pattern))
    names.push_back(fromUtf8(splitPath(path).second));
  return names;
}

LocalTime FakePlatform::localTime(int daysAgo) {
  enter("localTime");
  LocalTime t = now;
  // Enough calendar for the tests: days within one month, else the month before.
  t.day -= daysAgo;
  if (t.day < 1) {
    t.month = t.month == 1 ? 12 : t.month - 1;
    t.day += 30;
  }
  return t;
}

std::unique_ptr<RandomGenerator> FakePlatform::seededRandom() {
  enter("seededRandom");
  return std::make_unique<ScriptedRandom>(randomValues);
}

std::optional<std::string> FakePlatform::readSettingsFile() { return settings; }

}  // namespace tagwright
