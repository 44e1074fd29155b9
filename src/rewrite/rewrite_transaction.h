#ifndef TAGWRIGHT_REWRITE_REWRITE_TRANSACTION_H_
#define TAGWRIGHT_REWRITE_REWRITE_TRANSACTION_H_

#include <string>
#include <string_view>

#include "platform/int16.h"
#include "platform/platform.h"
#include "platform/text.h"

namespace tagwright {

// The files of one rewrite of a document: the temporary file that the new
// text goes to, and at the end the backup rotation that puts it in place.
// The scan drives it; every failure is a Failure for the scan's handler.
//
// For a document C:\web\page.htm the files are:
//   C:\web\~11190043514375.tmp   the new text while it is written
//   C:\web\page.bak              the former document afterwards
//   C:\web\~1117*.tmp            stale temporary files of two days ago, removed
// A document reached through a symbolic link is rewritten where the link
// points, with these files beside that file; the link stays a link.
//
// Whatever fails, the former document stays whole under its name or as the
// backup, and the new text reaches the document's name only complete and
// synced to the disk.
class RewriteTransaction {
 public:
  RewriteTransaction(Platform& platform, TextView DocumentName);

  // Names and opens the temporary file beside the document, with the
  // document's permission bits, owner and group. Throws
  // Failure::numbered(60002) when it cannot be made, also when a file of
  // that name is already there (another rewrite's, which must not be
  // emptied); other platform failures come through as they are.
  void begin();
  // Appends to the temporary file, exactly as given.
  void write(std::string_view bytes);
  void write(TextView text);
  // Syncs and closes the temporary file and puts it in the document's place,
  // leaving the former document as the backup; then removes the stale
  // temporary files of two days ago. Throws Failure::numbered(60010) when the
  // old backup cannot be deleted, 60011 when the backup cannot be made of the
  // document, 60012 when the temporary file cannot take the document's name.
  // REQUIRES: begin() succeeded and the document's file is closed.
  void commit();
  // Deletes the temporary file after a failure, once all files are closed;
  // never throws.
  void abandon() noexcept;

  const Text& tempName() const { return tempName_; }
  const Text& backupName() const { return backupName_; }
  const Text& documentName() const { return documentName_; }

 private:
  // Makes the backup a second name of the document, so that the document's
  // name never stands empty. False when the file system has no hard links.
  bool linkBackup();
  void removeStaleFiles() noexcept;

  Platform& platform_;
  Text documentName_;
  Text target_;  // the document's file, links followed
  Text folderPart_;
  Text baseName_;
  Text tempName_;
  Text backupName_;
  Int16 outputFileNumber_ = 0;
  std::string encoded_;  // a text being written, as UTF-8
  bool ownsTempFile_ = false;
};

}  // namespace tagwright

#endif  // TAGWRIGHT_REWRITE_REWRITE_TRANSACTION_H_
