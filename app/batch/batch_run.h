#ifndef TAGWRIGHT_APP_BATCH_BATCH_RUN_H_
#define TAGWRIGHT_APP_BATCH_BATCH_RUN_H_

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

namespace tagwright {

class Platform;
class Tagwright;

// What one operation answered for one document: the count (MatchesFound,
// or the result of writeXPointer) and the text, as a single call prints them.
struct DocumentAnswer {
  int count = 0;
  std::string text;
};

struct BatchRequest {
  std::vector<std::string> documents;
  // The operation on one document, by a fresh instance that `configure` has
  // given the command line's page context and line ends.
  std::function<DocumentAnswer(Tagwright&, const std::string& document)> operation;
  std::function<void(Tagwright&)> configure;
  bool rewrite = false;  // takes each document's rewrite lock; syncs in groups
  bool json = false;
  int jobs = 1;
  bool progress = false;    // a progress line and a summary on `err`
  int earlierFailures = 0;  // folders of the walk that could not be read
};

// Runs the operation on every document, `jobs` at a time, and prints the
// answers in the order of the documents: with `json` one object a line, each
// with "document" first; else "DOCUMENT:TEXT" and a line end for each
// document that matched or failed. Failures are named on `err` too. Returns
// 0 when every document succeeded, else 1.
int runBatch(const BatchRequest& request, Platform& platform, std::ostream& out, std::ostream& err);

}  // namespace tagwright

#endif  // TAGWRIGHT_APP_BATCH_BATCH_RUN_H_
