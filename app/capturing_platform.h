#ifndef TAGWRIGHT_APP_CAPTURING_PLATFORM_H_
#define TAGWRIGHT_APP_CAPTURING_PLATFORM_H_

#include <optional>
#include <string>

#include "platform/platform.h"
#include "temporary_file.h"

namespace tagwright {

// A platform for a rewrite that must leave the disk as it is (write --stdout,
// --dry-run): the new document that the rewrite writes to its temporary file
// goes to a private file aside instead (memory stays that of a rewrite), and the steps that would
// put it in place or tidy the folder (sync, rename, link, delete, copy of attributes) do nothing.
// Everything else, the reading of the document above all, is the wrapped platform's.
class CapturingPlatform : public Platform {
 public:
  explicit CapturingPlatform(Platform& base) : base_(base) {}

  // What was written to the last file opened for output: after a rewrite
  // that succeeded, the whole new document, unless keepingFailed().
  const TemporaryFile& captured() const { return captured_; }
  // The new document could not be kept whole (the temporary folder is full,
  // say); nothing on disk changed either way.
  bool keepingFailed() const { return failed_; }

  Int16 nextFreeFileNumber() override { return base_.nextFreeFileNumber(); }
  void openForInput(Int16 fileNumber, TextView path) override {
    base_.openForInput(fileNumber, path);
  }
  void openForOutput(Int16 fileNumber, TextView path) override;
  void readLines(Int16 fileNumber, std::string& bytes, std::size_t untilSize,
                 std::vector<std::size_t>* addedLineEnds) override {
    base_.readLines(fileNumber, bytes, untilSize, addedLineEnds);
  }
  bool endOfFile(Int16 fileNumber) override { return base_.endOfFile(fileNumber); }
  std::uint64_t fileSize(Int16 fileNumber) override { return base_.fileSize(fileNumber); }
  void writeBytes(Int16 fileNumber, std::string_view bytes) override;
  void syncFile(Int16 fileNumber) override;
  void flushFile(Int16 fileNumber) override;
  void closeFile(Int16 fileNumber) override;
  void closeAllFiles() override;

  bool firstMatchingFile(TextView pattern) override { return base_.firstMatchingFile(pattern); }
  void deleteMatchingFiles(TextView) override {}
  void deleteNamedFile(TextView) override {}
  void renameFile(TextView, TextView) override {}
  void replaceFile(TextView, TextView) override {}
  // Tells the rewrite that the backup is made, so that it only replaces.
  bool linkFile(TextView, TextView) override { return true; }
  void syncFolderOf(TextView) override {}
  void copyAttributes(TextView, TextView) override {}
  Text resolveLinks(TextView path) override { return base_.resolveLinks(path); }
  std::vector<Text> listMatchingFiles(TextView pattern) override {
    return base_.listMatchingFiles(pattern);
  }
  std::unique_ptr<FileLock> lockFile(TextView path) override { return base_.lockFile(path); }
  void adviseLargeBuffer(void* data, std::size_t size) override {
    base_.adviseLargeBuffer(data, size);
  }
  LocalTime localTime(int daysAgo) override { return base_.localTime(daysAgo); }
  std::unique_ptr<RandomGenerator> seededRandom() override { return base_.seededRandom(); }
  std::optional<std::string> readSettingsFile() override { return base_.readSettingsFile(); }

 private:
  bool isCaptured(Int16 fileNumber) const {
    return capturedNumber_ && *capturedNumber_ == fileNumber;
  }

  Platform& base_;
  std::optional<Int16> capturedNumber_;
  TemporaryFile captured_;
  bool failed_ = false;
};

}  // namespace tagwright

#endif  // TAGWRIGHT_APP_CAPTURING_PLATFORM_H_
