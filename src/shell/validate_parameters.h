#ifndef TAGWRIGHT_SHELL_VALIDATE_PARAMETERS_H_
#define TAGWRIGHT_SHELL_VALIDATE_PARAMETERS_H_

#include "locate/query.h"
#include "platform/platform.h"
#include "tagwright/tagwright.h"

namespace tagwright {

// What validateParameters needs of the instance.
struct ValidationContext {
  Platform& platform;
  ScriptingContext* scriptingContext;  // null outside a page host
  bool allowPhysicalPath;              // the flag for the request's mode
};

// Checks a request in a fixed order, fills in its defaults, makes
// DocumentName a physical path and opens the document. On success returns
// the empty text and `fileNumber` holds the open document; on failure
// returns the message (no file is open then). The first failing check wins.
// An empty `resultSeparator` becomes the single NUL character.
Text validateParameters(const ValidationContext& context, Query& query, Text& resultSeparator,
                        Int16& fileNumber);

// True for a physical path: one that holds "\" or ":" anywhere.
bool isPhysicalPath(TextView path);

}  // namespace tagwright

#endif  // TAGWRIGHT_SHELL_VALIDATE_PARAMETERS_H_
