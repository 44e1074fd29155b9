#include "shell/locate_request.h"

#include "locate/scan_document.h"

namespace tagwright {

Text locateRequest(const ValidationContext& validation, std::int32_t bufferLength,
                   LineEnds lineEnds, Query& query, Text& resultSeparator, bool writeMode,
                   std::string_view NewContent, std::string& scanResult, Int16& matches,
                   bool bytePaths, const std::function<void(const FoundPart&)>* partObserver) {
  Int16 fileNumber = 0;
  Text message = validateParameters(validation, query, resultSeparator, fileNumber);
  if (!message.empty()) return message;
  return scanDocument(
      {validation.platform, bufferLength, resultSeparator, lineEnds, bytePaths, partObserver},
      scanResult, query, fileNumber, writeMode, NewContent, matches);
}

}  // namespace tagwright
