#ifndef TAGWRIGHT_REWRITE_REWRITE_TRANSACTION_H_
#define TAGWRIGHT_REWRITE_REWRITE_TRANSACTION_H_

#include "platform/int16.h"
#include "platform/platform.h"
#include "platform/text.h"

namespace tagwright {

// The files of one rewrite of a document: the temporary file that the new
// text goes to, and at the end the backup rotation that puts it in place.
// The scan drives it; every failure is a Failure for the scan's handler.
class RewriteTransaction {
 public:
  RewriteTransaction(Platform& platform, TextView DocumentName);

  // Names and opens the temporary file beside the document. Throws
  // Failure::numbered(60002) when it cannot be made.
  void begin();
  // Appends to the temporary file, exactly as given.
  void write(TextView text);
  // Closes the temporary file and puts it in the document's place, leaving
  // the former document as the backup; then removes the stale temporary
  // files of two days ago. Throws Failure::numbered(60010) when the old
  // backup cannot be deleted, 60011 when the document cannot be moved aside,
  // 60012 when the temporary file cannot take the document's name.
  void commit();
  // Deletes the temporary file after a failure; never throws.
  void abandon() noexcept;

  const Text& tempName() const { return tempName_; }
  const Text& backupName() const { return backupName_; }
  const Text& documentName() const { return documentName_; }

 private:
  Platform& platform_;
  Text documentName_;
  Text tempName_;
  Text backupName_;
  Int16 outputFileNumber_ = 0;
};

}  // namespace tagwright

#endif  // TAGWRIGHT_REWRITE_REWRITE_TRANSACTION_H_
