#ifndef TAGWRIGHT_APP_BATCH_BATCH_RUN_H_
#define TAGWRIGHT_APP_BATCH_BATCH_RUN_H_

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

#include "document_run.h"

namespace tagwright {

class Platform;
class Tagwright;

// One document's part of a batch: the answer, what goes to standard output
// for it (printed in the order of the documents), and the explanations
// for standard error.
struct BatchAnswer {
  DocumentAnswer answer;
  std::string printed;
  std::string notes;
};

struct BatchRequest {
  std::vector<std::string> documents;
  // The operation on one document, by an instance of its own on `platform`,
  // exactly as a single call runs it.
  std::function<BatchAnswer(Platform& platform, const std::string& document)> operation;
  // Maps the names and takes the rewrite locks; only a rewrite needs it.
  Tagwright* mapper = nullptr;
  bool rewrite = false;  // takes each document's rewrite lock; syncs in groups
  int jobs = 1;
  bool progress = false;    // a progress line and a summary on `err`
  int earlierFailures = 0;  // folders of the walk that could not be read
};

// Runs the operation on every document, `jobs` at a time, and prints what
// each printed in the order of the documents. Failures are named on `err`
// too. Returns 0 when every document succeeded, else 1.
int runBatch(const BatchRequest& request, Platform& platform, std::ostream& out, std::ostream& err);

}  // namespace tagwright

#endif  // TAGWRIGHT_APP_BATCH_BATCH_RUN_H_
