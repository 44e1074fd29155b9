#include "rewrite/rewrite_transaction.h"

namespace tagwright {

// Placeholder until the rewrite lands: every rewrite fails before any file
// is made, which leaves every document as it was.
RewriteTransaction::RewriteTransaction(Platform& platform, TextView DocumentName)
    : platform_(platform), documentName_(DocumentName) {}

void RewriteTransaction::begin() { throw Failure::numbered(60002); }
void RewriteTransaction::write(TextView) {}
void RewriteTransaction::commit() {}
void RewriteTransaction::abandon() noexcept {}

}  // namespace tagwright
