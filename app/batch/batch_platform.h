#ifndef TAGWRIGHT_APP_BATCH_BATCH_PLATFORM_H_
#define TAGWRIGHT_APP_BATCH_BATCH_PLATFORM_H_

#include <atomic>
#include <mutex>
#include <set>
#include <string>

#include "batch/group_sync.h"
#include "platform/platform.h"

namespace tagwright {

// The system's platform as the rewrites of a batch see it: each one's new
// file is made durable by its group's file system sync (GroupSync) rather
// than by a flush of its own, and the folders that take new documents are
// synced once each at the end (syncFolders) rather than after every rename.
// Everything else goes to the wrapped platform unchanged.
class BatchPlatform : public Platform {
 public:
  BatchPlatform(Platform& inner, GroupSync& group) : inner_(inner), group_(group) {}

  // The rewrite of the document at `hostPath` on the calling thread, from
  // construction to destruction. Outside one, every call is the wrapped
  // platform's own.
  class Rewrite {
   public:
    Rewrite(BatchPlatform& platform, const std::string& hostPath);
    ~Rewrite();
    Rewrite(const Rewrite&) = delete;
    Rewrite& operator=(const Rewrite&) = delete;

   private:
    BatchPlatform& platform_;
  };

  // Syncs each folder that a rewrite put a document in, once. Returns the
  // folders that could not be synced (their documents are in place all the
  // same, as a single rewrite leaves them).
  std::set<std::string> syncFolders();

  Int16 nextFreeFileNumber() override { return inner_.nextFreeFileNumber(); }
  void openForInput(Int16 fileNumber, TextView path) override {
    inner_.openForInput(fileNumber, path);
  }
  void openForOutput(Int16 fileNumber, TextView path) override {
    inner_.openForOutput(fileNumber, path);
  }
  void readLines(Int16 fileNumber, std::string& bytes, std::size_t untilSize,
                 std::vector<std::size_t>* addedLineEnds) override {
    inner_.readLines(fileNumber, bytes, untilSize, addedLineEnds);
  }
  bool endOfFile(Int16 fileNumber) override { return inner_.endOfFile(fileNumber); }
  std::uint64_t fileSize(Int16 fileNumber) override { return inner_.fileSize(fileNumber); }
  void writeBytes(Int16 fileNumber, std::string_view bytes) override {
    inner_.writeBytes(fileNumber, bytes);
  }
  void flushFile(Int16 fileNumber) override { inner_.flushFile(fileNumber); }
  void syncFile(Int16 fileNumber) override;
  void closeFile(Int16 fileNumber) override { inner_.closeFile(fileNumber); }
  void closeAllFiles() override { inner_.closeAllFiles(); }
  bool firstMatchingFile(TextView pattern) override { return inner_.firstMatchingFile(pattern); }
  void deleteMatchingFiles(TextView pattern) override { inner_.deleteMatchingFiles(pattern); }
  void deleteNamedFile(TextView path) override { inner_.deleteNamedFile(path); }
  void renameFile(TextView from, TextView to) override { inner_.renameFile(from, to); }
  void replaceFile(TextView from, TextView to) override { inner_.replaceFile(from, to); }
  bool linkFile(TextView from, TextView to) override { return inner_.linkFile(from, to); }
  void syncFolderOf(TextView path) override;
  void copyAttributes(TextView from, TextView to) override { inner_.copyAttributes(from, to); }
  Text resolveLinks(TextView path) override { return inner_.resolveLinks(path); }
  std::vector<Text> listMatchingFiles(TextView pattern) override {
    return inner_.listMatchingFiles(pattern);
  }
  std::unique_ptr<FileLock> lockFile(TextView path) override { return inner_.lockFile(path); }
  void adviseLargeBuffer(void* data, std::size_t size) override {
    inner_.adviseLargeBuffer(data, size);
  }
  LocalTime localTime(int daysAgo) override { return inner_.localTime(daysAgo); }
  // The values that name the new files: a rewrite's temporary file is named
  // by the second and a value of four digits, and many rewrites of one folder
  // start in the same second here. Independent seeds would soon give two of
  // them one name (the second then fails); the batch's values instead walk
  // all 10000 four-digit values in a scrambled order before one comes again.
  std::unique_ptr<RandomGenerator> seededRandom() override;
  // The batch reads the settings once, when it starts, as a single call does:
  // every instance of the batch then has the same ones.
  std::optional<std::string> readSettingsFile() override { return settings_; }

 private:
  Platform& inner_;
  GroupSync& group_;
  const std::optional<std::string> settings_ = inner_.readSettingsFile();
  std::atomic<std::uint64_t> drawn_ = 0;
  const std::uint64_t firstValue_ =
      static_cast<std::uint64_t>(inner_.seededRandom()->next() * 10000.0);
  std::mutex foldersMutex_;
  std::set<std::string> folders_;
};

}  // namespace tagwright

#endif  // TAGWRIGHT_APP_BATCH_BATCH_PLATFORM_H_
