#ifndef TAGWRIGHT_LOCATE_SCAN_DOCUMENT_H_
#define TAGWRIGHT_LOCATE_SCAN_DOCUMENT_H_

#include <string>
#include <string_view>

#include "locate/query.h"
#include "platform/int16.h"
#include "platform/text.h"

namespace tagwright {

// Pulls the open document `fileNumber` through chunk by chunk, finds the
// instances of the query's element type, takes those that StartInstance and
// CountInstances select, cuts out their text, runs it through the span or
// string function and, for "innertext", stripMarkup, and collects the results
// each followed by the separator, less the last character, into `scanResult`
// (UTF-8, as the operations return it).
// Closes the document in every case.
//
// In write mode the new document goes to a temporary file with each taken
// stretch replaced by `NewContent` (UTF-8, written as it is), and at the end takes the document's
// place, the former document becoming the backup.
//
// Returns the empty text on success (also when nothing was found), else the
// failure's message; `scanResult` is then empty and `MatchesFound` means
// nothing.
Text scanDocument(const CallContext& call, std::string& scanResult, const Query& query,
                  Int16 fileNumber, bool writeMode, std::string_view NewContent,
                  Int16& MatchesFound);

}  // namespace tagwright

#endif  // TAGWRIGHT_LOCATE_SCAN_DOCUMENT_H_
