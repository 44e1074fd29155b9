#include "locate/scan_document.h"
#include "shell/normalize.h"
#include "shell/validate_parameters.h"
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
    Text newContent = fromUtf8(NewContent);
    Query query;
    query.DocumentName = trimmedParameter(DocumentName);
    query.ElementName = loweredParameter(ElementName);
    query.AttributeName = loweredParameter(AttributeName);
    query.AttributeValue = loweredParameter(AttributeValue);
    query.StartInstance = StartInstance;
    query.CountInstances = CountInstances;
    query.ContentType = loweredParameter(ContentType);
    query.SpanFunction = loweredParameter(SpanFunction);
    Int16 localMatches = 0;
    resultSeparator = trimmedParameter(ResultSeparatorChars);

    Int16 fileNumber = 0;
    Text message = validateParameters({platform_, ScriptingContext_.get(), allowPhysicalDocWrite},
                                      query, resultSeparator, fileNumber);
    if (message.empty()) {
      Text scanResult;
      message = scanDocument({platform_, bufferLength, resultSeparator}, scanResult, query,
                             fileNumber, true, newContent, localMatches);
      if (message.empty()) {
        count = localMatches.value();
        errorResult = toUtf8(scanResult);
      }
    }
    if (!message.empty()) errorResult = "ERROR: " + toUtf8(message);
  } catch (...) {
    count = -1;
    errorResult = "ERROR: Unexpected error in writeXPointer.";
  }
  if (ErrorResult != nullptr) *ErrorResult = errorResult;
  return count;
}

}  // namespace tagwright
