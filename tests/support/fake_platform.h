#ifndef TAGWRIGHT_TESTS_SUPPORT_FAKE_PLATFORM_H_
#define TAGWRIGHT_TESTS_SUPPORT_FAKE_PLATFORM_H_

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/line_reader.h"
#include "platform/platform.h"

namespace tagwright {

// A platform that keeps its files in memory, by host path ("/web/a.htm" for
// the physical "C:\web\a.htm"), logs every call by name, and can fail any
// call: `failCall(n, kind)` makes the n-th call from now on throw, and
// `failNamedCall(name, kind, k)` the k-th call of that name.
class FakePlatform : public Platform {
 public:
  std::map<std::string, std::string> files;
  std::set<std::string> made;  // every file ever opened for output
  std::optional<std::string> settings;
  LocalTime now{11, 19, 0, 43, 51};
  double random = 0.4375;
  bool hardLinks = true;
  std::vector<std::string> calls;

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
  void failNamedCall(const std::string& name, Failure::Kind kind, int occurrence = 1) {
    failName_ = name;
    failNameOccurrence_ = occurrence;
    failKind_ = kind;
  }
  int openFileCount() const { return static_cast<int>(open_.size()); }

  Int16 nextFreeFileNumber() override;
  void openForInput(Int16 fileNumber, TextView path) override;
  void openForOutput(Int16 fileNumber, TextView path) override;
  void readLines(Int16 fileNumber, std::string& bytes, std::size_t untilSize) override {
    open_.at(fileNumber.value()).reader->readLines(bytes, untilSize);
  }
  bool endOfFile(Int16 fileNumber) override {
    return open_.at(fileNumber.value()).reader->endOfFile();
  }
  std::uint64_t fileSize(Int16 fileNumber) override {
    return open_.at(fileNumber.value()).bytes.size();
  }
  void writeBytes(Int16 fileNumber, std::string_view bytes) override;
  void syncFile(Int16 fileNumber) override;
  void closeFile(Int16 fileNumber) override;
  void closeAllFiles() override;
  bool firstMatchingFile(TextView pattern) override;
  void deleteMatchingFiles(TextView pattern) override;
  void renameFile(TextView from, TextView to) override { move(from, to, "renameFile", true); }
  void replaceFile(TextView from, TextView to) override { move(from, to, "replaceFile", false); }
  bool linkFile(TextView from, TextView to) override;
  void syncFolderOf(TextView) override { enter("syncFolderOf"); }
  void copyAttributes(TextView, TextView) override { enter("copyAttributes"); }
  Text resolveLinks(TextView path) override { return enter("resolveLinks"), Text(path); }
  std::vector<Text> listMatchingFiles(TextView pattern) override;
  void adviseLargeBuffer(void*, std::size_t) override {}
  LocalTime localTime(int daysAgo) override;
  std::unique_ptr<RandomGenerator> seededRandom() override;
  std::optional<std::string> readSettingsFile() override { return settings; }

 private:
  struct OpenFile {
    std::string path;
    std::string bytes;  // what is read, or what was written
    std::unique_ptr<ByteSource> source = nullptr;
    std::unique_ptr<LineReader> reader = nullptr;  // for input only
  };

  // Logs the call and throws when it is the one to fail.
  void enter(const std::string& name);
  std::vector<std::string> matching(TextView pattern) const;
  void move(TextView from, TextView to, const char* call, bool refuseExisting);

  std::map<int, OpenFile> open_;
  std::set<std::string> unsynced_;
  int failAt_ = -1;
  std::string failName_;
  int failNameOccurrence_ = 0;
  Failure::Kind failKind_ = Failure::Kind::kFileAccess;
};

}  // namespace tagwright

#endif  // TAGWRIGHT_TESTS_SUPPORT_FAKE_PLATFORM_H_
