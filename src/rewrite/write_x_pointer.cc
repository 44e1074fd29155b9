#include "shell/locate_request.h"
#include "shell/normalize.h"
#include "tagwright/tagwright.h"

namespace tagwright {

int Tagwright::writeXPointer(const std::string& NewContent, const std::string& DocumentName,
                             const std::string& ElementName, const std::string& AttributeName,
                             const std::string& AttributeValue, std::int16_t StartInstance,
                             std::int16_t CountInstances, const std::string& ContentType,
                             const std::string& SpanFunction,
                             const std::string& ResultSeparatorChars, std::string* ErrorResult) {
  int count = -1;
  std::string errorResult;
  try {
    // NewContent goes in as given: neither trimmed nor lower-cased.
    Query query = normalizedQuery(DocumentName, ElementName, AttributeName, AttributeValue,
                                  StartInstance, CountInstances, ContentType, SpanFunction, "");
    resultSeparator = trimmedParameter(ResultSeparatorChars);
    std::string scanResult;
    Int16 localMatches = 0;
    Text message =
        locateRequest({platform_, ScriptingContext_.get(), allowPhysicalDocWrite}, bufferLength,
                      lineEndMode, query, resultSeparator, true, NewContent, scanResult,
                      localMatches, bytePaths, partObserver_ ? &partObserver_ : nullptr);
    if (message.empty()) {
      count = localMatches.value();
      errorResult = std::move(scanResult);
    } else {
      errorResult = "ERROR: " + toUtf8(message);
    }
  } catch (...) {
    count = -1;
    errorResult = "ERROR: Unexpected error in writeXPointer.";
  }
  if (ErrorResult != nullptr) *ErrorResult = errorResult;
  return count;
}

}  // namespace tagwright
