#include "shell/locate_request.h"
#include "shell/normalize.h"
#include "tagwright/tagwright.h"

namespace tagwright {

std::string Tagwright::readXPointer(const std::string& DocumentName, const std::string& ElementName,
                                    const std::string& AttributeName,
                                    const std::string& AttributeValue, std::int16_t StartInstance,
                                    std::int16_t CountInstances, const std::string& ContentType,
                                    const std::string& SpanFunction,
                                    const std::string& StringFunction,
                                    const std::string& ResultSeparatorChars, int* MatchesFound) {
  int matches = -1;
  std::string result;
  try {
    Query query =
        normalizedQuery(DocumentName, ElementName, AttributeName, AttributeValue, StartInstance,
                        CountInstances, ContentType, SpanFunction, StringFunction);
    resultSeparator = trimmedParameter(ResultSeparatorChars);
    std::string scanResult;
    Int16 localMatches = 0;
    Text message =
        locateRequest({platform_, ScriptingContext_.get(), allowPhysicalDocRead}, bufferLength,
                      lineEndMode, query, resultSeparator, false, {}, scanResult, localMatches,
                      bytePaths, partObserver_ ? &partObserver_ : nullptr);
    if (message.empty()) {
      matches = localMatches.value();
      result = std::move(scanResult);
    } else {
      result = "ERROR: " + toUtf8(message);
    }
  } catch (...) {
    matches = -1;
    result = "ERROR: Unexpected error in readXPointer.";
  }
  if (MatchesFound != nullptr) *MatchesFound = matches;
  return result;
}

}  // namespace tagwright
