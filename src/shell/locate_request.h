#ifndef TAGWRIGHT_SHELL_LOCATE_REQUEST_H_
#define TAGWRIGHT_SHELL_LOCATE_REQUEST_H_

#include "locate/query.h"
#include "shell/validate_parameters.h"

namespace tagwright {

// The common road of readXPointer and writeXPointer: validateParameters,
// then scanDocument on the document it opened. Returns the empty text on
// success, with `scanResult` (UTF-8) and `matches` set; else the failure's
// message. `bytePaths` and `partObserver` as in CallContext.
Text locateRequest(const ValidationContext& validation, std::int32_t bufferLength,
                   LineEnds lineEnds, Query& query, Text& resultSeparator, bool writeMode,
                   std::string_view NewContent, std::string& scanResult, Int16& matches,
                   bool bytePaths = true,
                   const std::function<void(const FoundPart&)>* partObserver = nullptr);

}  // namespace tagwright

#endif  // TAGWRIGHT_SHELL_LOCATE_REQUEST_H_
