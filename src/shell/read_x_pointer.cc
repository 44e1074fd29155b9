#include "locate/scan_document.h"
#include "shell/normalize.h"
#include "shell/validate_parameters.h"
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
    Query query;
    query.DocumentName = trimmedParameter(DocumentName);
    query.ElementName = loweredParameter(ElementName);
    query.AttributeName = loweredParameter(AttributeName);
    query.AttributeValue = loweredParameter(AttributeValue);
    query.StartInstance = StartInstance;
    query.CountInstances = CountInstances;
    query.ContentType = loweredParameter(ContentType);
    query.SpanFunction = loweredParameter(SpanFunction);
    // The case stays, so that a quoted search text is compared as written.
    query.StringFunction = trimmedParameter(StringFunction);
    Int16 localMatches = 0;
    resultSeparator = trimmedParameter(ResultSeparatorChars);

    Int16 fileNumber = 0;
    Text message = validateParameters({platform_, ScriptingContext_.get(), allowPhysicalDocRead},
                                      query, resultSeparator, fileNumber);
    if (message.empty()) {
      Text scanResult;
      message = scanDocument({platform_, bufferLength, resultSeparator}, scanResult, query,
                             fileNumber, false, {}, localMatches);
      if (message.empty()) {
        matches = localMatches.value();
        result = toUtf8(scanResult);
      }
    }
    if (!message.empty()) result = "ERROR: " + toUtf8(message);
  } catch (...) {
    matches = -1;
    result = "ERROR: Unexpected error in readXPointer.";
  }
  if (MatchesFound != nullptr) *MatchesFound = matches;
  return result;
}

}  // namespace tagwright
