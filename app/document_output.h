#ifndef TAGWRIGHT_APP_DOCUMENT_OUTPUT_H_
#define TAGWRIGHT_APP_DOCUMENT_OUTPUT_H_

#include <iosfwd>
#include <string>

#include "tagwright/tagwright.h"
#include "temporary_file.h"

namespace tagwright {

// How the answer of one operation on one document is printed.
struct OutputForm {
  bool json = false;        // one JSON object
  bool jsonLines = false;   // one JSON object per part, printed as found
  bool exitStatus = false;  // exit 1 when nothing was found, as grep does
  bool terminal = false;    // standard output is a terminal
  // The document's name as a batch names it, or null for a single call.
  // In a batch each JSON object and each part gets "document" first, the
  // bare text stands behind "DOCUMENT:" on a line of its own (and only when
  // something matched or failed), and the count is left to the batch's
  // summary rather than printed as `matches: N`.
  const std::string* document = nullptr;
};

// The exit status of an operation that found `matches` parts (-1: failed).
int exitStatusOf(int matches, const OutputForm& form);

// Prints the answer of read, meta or list: the bare text (and a line end
// when standard output is a terminal) with `matches: N` on `err`, or the
// JSON object; with jsonLines the parts went out already, and only the
// count, or the failure, goes to `err`. Returns the exit status.
int printTextAnswer(const std::string& result, int matches, const OutputForm& form,
                    std::ostream& out, std::ostream& err);

// Prints the answer of a write that replaced the document: its former texts
// or the failure (or the JSON object), and `matches: N`; with jsonLines the
// former parts went out already. Returns the exit status.
int printWriteAnswer(int count, const std::string& errorResult, const OutputForm& form,
                     std::ostream& out, std::ostream& err);

// Prints a write whose new document goes to `out` instead of the disk, and
// nothing else there: `matches: N`, or the failure, go to `err`.
int printNewDocument(int count, const std::string& errorResult, const TemporaryFile& newDocument,
                     const OutputForm& form, std::ostream& out, std::ostream& err);

// One part as a JSON line without its line end, "document" first in a batch:
//   {"text":"x","start":{"byte":3,"line":1,"column":4},"end":{...}}
std::string partJsonLine(const FoundPart& part, const OutputForm& form);

}  // namespace tagwright

#endif  // TAGWRIGHT_APP_DOCUMENT_OUTPUT_H_
