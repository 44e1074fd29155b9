#ifndef TAGWRIGHT_PLATFORM_PLATFORM_WRAPPER_H_
#define TAGWRIGHT_PLATFORM_PLATFORM_WRAPPER_H_

#include "platform/platform.h"

namespace tagwright {

// A platform that hands every call to another one. A host that changes a
// few calls (a batch that defers its syncs, a rewrite kept off the disk)
// derives from it and overrides just those.
class PlatformWrapper : public Platform {
 public:
  explicit PlatformWrapper(Platform& target) : target_(target) {}

  Int16 nextFreeFileNumber() override { return target_.nextFreeFileNumber(); }
  void openForInput(Int16 fileNumber, TextView path) override {
    target_.openForInput(fileNumber, path);
  }
  void openForOutput(Int16 fileNumber, TextView path) override {
    target_.openForOutput(fileNumber, path);
  }
  void readLines(Int16 fileNumber, std::string& bytes, std::size_t untilSize, LineEnds lineEnds,
                 std::vector<std::size_t>& addedLineEnds) override {
    target_.readLines(fileNumber, bytes, untilSize, lineEnds, addedLineEnds);
  }
  bool endOfFile(Int16 fileNumber) override { return target_.endOfFile(fileNumber); }
  std::uint64_t fileSize(Int16 fileNumber) override { return target_.fileSize(fileNumber); }
  void writeBytes(Int16 fileNumber, std::string_view bytes) override {
    target_.writeBytes(fileNumber, bytes);
  }
  void flushFile(Int16 fileNumber) override { target_.flushFile(fileNumber); }
  void syncFile(Int16 fileNumber) override { target_.syncFile(fileNumber); }
  void closeFile(Int16 fileNumber) override { target_.closeFile(fileNumber); }
  void closeAllFiles() override { target_.closeAllFiles(); }
  bool firstMatchingFile(TextView pattern) override { return target_.firstMatchingFile(pattern); }
  void deleteMatchingFiles(TextView pattern) override { target_.deleteMatchingFiles(pattern); }
  void deleteNamedFile(TextView path) override { target_.deleteNamedFile(path); }
  void renameFile(TextView from, TextView to) override { target_.renameFile(from, to); }
  void replaceFile(TextView from, TextView to) override { target_.replaceFile(from, to); }
  bool linkFile(TextView from, TextView to) override { return target_.linkFile(from, to); }
  void syncFolderOf(TextView path) override { target_.syncFolderOf(path); }
  void copyAttributes(TextView from, TextView to) override { target_.copyAttributes(from, to); }
  Text resolveLinks(TextView path) override { return target_.resolveLinks(path); }
  Text followLinksAlong(TextView path) override { return target_.followLinksAlong(path); }
  std::vector<Text> listMatchingFiles(TextView pattern) override {
    return target_.listMatchingFiles(pattern);
  }
  std::unique_ptr<FileLock> lockFile(TextView path) override { return target_.lockFile(path); }
  void adviseLargeBuffer(void* data, std::size_t size) override {
    target_.adviseLargeBuffer(data, size);
  }
  LocalTime localTime(int daysAgo) override { return target_.localTime(daysAgo); }
  std::unique_ptr<RandomGenerator> seededRandom() override { return target_.seededRandom(); }
  std::optional<std::string> readSettingsFile() override { return target_.readSettingsFile(); }

 private:
  Platform& target_;
};

}  // namespace tagwright

#endif  // TAGWRIGHT_PLATFORM_PLATFORM_WRAPPER_H_
