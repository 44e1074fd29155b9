#ifndef TAGWRIGHT_APP_CAPTURING_PLATFORM_H_
#define TAGWRIGHT_APP_CAPTURING_PLATFORM_H_

#include <optional>
#include <string>

#include "platform/platform_wrapper.h"
#include "temporary_file.h"

namespace tagwright {

// A platform for a rewrite that must leave the disk as it is (write --stdout,
// --dry-run): the new document that the rewrite writes to its temporary file
// goes to a private file aside instead (memory stays that of a rewrite), and the steps that would
// put it in place or tidy the folder (sync, rename, link, delete, copy of attributes) do nothing.
// Everything else, the reading of the document above all, is the wrapped platform's.
class CapturingPlatform : public PlatformWrapper {
 public:
  explicit CapturingPlatform(Platform& base) : PlatformWrapper(base), base_(base) {}

  // What was written to the last file opened for output: after a rewrite
  // that succeeded, the whole new document, unless keepingFailed().
  const TemporaryFile& captured() const { return captured_; }
  // The new document could not be kept whole (the temporary folder is full,
  // say); nothing on disk changed either way.
  bool keepingFailed() const { return failed_; }

  void openForOutput(Int16 fileNumber, TextView path) override;
  void writeBytes(Int16 fileNumber, std::string_view bytes) override;
  void syncFile(Int16 fileNumber) override;
  void flushFile(Int16 fileNumber) override;
  void closeFile(Int16 fileNumber) override;
  void closeAllFiles() override;

  void deleteMatchingFiles(TextView) override {}
  void deleteNamedFile(TextView) override {}
  void renameFile(TextView, TextView) override {}
  void replaceFile(TextView, TextView) override {}
  // Tells the rewrite that the backup is made, so that it only replaces.
  bool linkFile(TextView, TextView) override { return true; }
  void syncFolderOf(TextView) override {}
  void copyAttributes(TextView, TextView) override {}

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
