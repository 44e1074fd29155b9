#include "rewrite/rewrite_transaction.h"

#include "files/delete_file.h"
#include "files/open_document_file.h"
#include "files/rename_file.h"
#include "files/split_file_path.h"
#include "platform/wildcard.h"
#include "rewrite/rewrite_names.h"

namespace tagwright {
namespace {

// True when a file of this exact name exists, or when that cannot be told.
bool nameTaken(Platform& platform, TextView name) {
  try {
    return platform.firstMatchingFile(name);
  } catch (const Failure&) {
    return true;
  }
}

}  // namespace

RewriteTransaction::RewriteTransaction(Platform& platform, TextView DocumentName)
    : platform_(platform), documentName_(DocumentName) {}

void RewriteTransaction::begin() {
  std::unique_ptr<RandomGenerator> random = platform_.seededRandom();
  Text stamp = stampText(platform_.localTime(0), random->next());
  target_ = platform_.resolveLinks(documentName_);
  Text extensionPart;
  folderPart_ = splitFilePath(target_, baseName_, extensionPart);
  tempName_ = folderPart_ + U"~" + stamp + U".tmp";

  if (nameTaken(platform_, tempName_)) throw Failure::numbered(60002);
  // The creation is exclusive: a writer that took the name since it was
  // checked (another process, or another rewrite of a batch in the same
  // second) makes it fail alike, and that writer's file is not ours to delete.
  outputFileNumber_ = openDocumentFile(platform_, tempName_, true);
  if (outputFileNumber_ == 0) throw Failure::numbered(60002);
  ownsTempFile_ = true;
  // Before any text goes in: a private document's new text is never readable
  // by others, not even while it is written.
  platform_.copyAttributes(target_, tempName_);
}

void RewriteTransaction::write(std::string_view bytes) {
  platform_.writeBytes(outputFileNumber_, bytes);
}

void RewriteTransaction::write(TextView text) {
  encoded_.clear();
  appendEncoded(text, encoded_);
  write(std::string_view(encoded_));
}

void RewriteTransaction::commit() {
  // Synced before it takes the document's name, so that a power cut never
  // leaves an empty or partial document under that name.
  platform_.syncFile(outputFileNumber_);
  platform_.closeFile(outputFileNumber_);

  backupName_ = folderPart_ + baseName_ + U".bak";
  // The backup of "old.bak" would be the document itself; "old.bak.bak" keeps it.
  if (backupName_ == target_) backupName_ += U".bak";
  if (!deleteNamedFile(platform_, backupName_)) throw Failure::numbered(60010);

  if (linkBackup()) {
    try {
      platform_.replaceFile(tempName_, target_);
    } catch (const Failure&) {
      throw Failure::numbered(60012);
    }
  } else {
    if (!renameFile(platform_, target_, backupName_)) throw Failure::numbered(60011);
    if (!renameFile(platform_, tempName_, target_)) throw Failure::numbered(60012);
  }
  ownsTempFile_ = false;

  // A rename is durable only once the folder is. The new document is in
  // place already, so a folder that cannot be synced fails nothing: a power
  // cut before the sync leaves the former or the new document, each whole.
  try {
    platform_.syncFolderOf(target_);
  } catch (const Failure&) {
  }
  removeStaleFiles();
}

bool RewriteTransaction::linkBackup() {
  try {
    return platform_.linkFile(target_, backupName_);
  } catch (const Failure&) {
    throw Failure::numbered(60011);
  }
}

// Stale files that cannot be removed do not fail a rewrite that is done.
void RewriteTransaction::removeStaleFiles() noexcept {
  try {
    Text stalePattern = U"~" + monthDay(platform_.localTime(2)) + U"*.tmp";
    // A document that is itself named like a stale file would go with them.
    Text documentFile = target_.substr(target_.rfind(U'\\') + 1);
    if (matchesWildcard(toUtf8(stalePattern), toUtf8(documentFile))) return;
    // Only this pattern's own "*" is a wildcard: the folder is taken as
    // named, whatever characters it holds.
    deleteFile(platform_, folderPart_ + stalePattern);
  } catch (...) {
  }
}

void RewriteTransaction::abandon() noexcept {
  if (!ownsTempFile_) return;
  try {
    deleteNamedFile(platform_, tempName_);
  } catch (...) {
  }
}

}  // namespace tagwright
