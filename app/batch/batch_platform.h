#ifndef TAGWRIGHT_APP_BATCH_BATCH_PLATFORM_H_
#define TAGWRIGHT_APP_BATCH_BATCH_PLATFORM_H_

#include <mutex>
#include <set>
#include <string>

#include "batch/group_sync.h"
#include "distinct_draws.h"
#include "platform/platform_wrapper.h"

namespace tagwright {

// The system's platform as the rewrites of a batch see it: each one's new
// file is made durable by its group's file system sync (GroupSync) rather
// than by a flush of its own, and the folders that take new documents are
// synced once each at the end (syncFolders) rather than after every rename.
// Everything else goes to the wrapped platform unchanged.
class BatchPlatform : public PlatformWrapper {
 public:
  BatchPlatform(Platform& inner, GroupSync& group)
      : PlatformWrapper(inner), inner_(inner), group_(group) {}

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

  void syncFile(Int16 fileNumber) override;
  void syncFolderOf(TextView path) override;
  // Many rewrites of one folder start in the same second here: their
  // temporary names come from distinct draws.
  std::unique_ptr<RandomGenerator> seededRandom() override { return draws_.generator(); }
  // Every rewrite sweeps its folder for the temporary files left two days
  // ago, by a listing of the folder. In a batch the first sweep of a folder
  // does it for every later rewrite there: none of those files can have come
  // back since, and a folder of n pages would otherwise be listed n times.
  bool firstMatchingFile(TextView pattern) override;
  void deleteMatchingFiles(TextView pattern) override;
  // The batch reads the settings once, when it starts, as a single call does:
  // every instance of the batch then has the same ones.
  std::optional<std::string> readSettingsFile() override { return settings_; }

 private:
  Platform& inner_;
  GroupSync& group_;
  const std::optional<std::string> settings_ = inner_.readSettingsFile();
  DistinctDraws draws_{inner_};
  std::mutex foldersMutex_;
  std::set<std::string> folders_;
  std::mutex sweptMutex_;
  std::set<Text> swept_;
};

}  // namespace tagwright

#endif  // TAGWRIGHT_APP_BATCH_BATCH_PLATFORM_H_
