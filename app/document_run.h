#ifndef TAGWRIGHT_APP_DOCUMENT_RUN_H_
#define TAGWRIGHT_APP_DOCUMENT_RUN_H_

#include <iosfwd>
#include <string>

#include "capturing_platform.h"
#include "command_line.h"
#include "document_output.h"
#include "refusal_cause.h"
#include "tagwright/tagwright.h"

namespace tagwright {

// What one operation answered for one document: the count (MatchesFound,
// or the result of writeXPointer) and the text, as a single call prints them.
struct DocumentAnswer {
  int count = 0;
  std::string text;
};

// What the run of an operation on one document needs beside the command line.
struct DocumentRun {
  const ContextSetting& context;
  // The platform that keeps the new document aside, with --stdout and
  // --dry-run; null otherwise.
  const CapturingPlatform* capture = nullptr;
  OutputForm form;
  // The new content of a write, read once for all the documents of a batch;
  // null to read it from the command line.
  const std::string* newContent = nullptr;
  // The caller holds the document's rewrite lock already.
  bool locked = false;
  // Where the answer goes too, when the caller needs it; may be null.
  DocumentAnswer* answer = nullptr;
};

// Runs the command line's operation on `document` (the name the component
// is given: the folder of a list) with `instance`, and prints the answer as `run.form`
// says, with the explanations the host can add on `err`. Returns the exit
// status. `in` gives --new-content-file -.
int runOnDocument(Tagwright& instance, const CommandLine& line, Operation operation,
                  const std::string& document, const DocumentRun& run, std::istream& in,
                  std::ostream& out, std::ostream& err);

}  // namespace tagwright

#endif  // TAGWRIGHT_APP_DOCUMENT_RUN_H_
