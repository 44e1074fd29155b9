#include "services/scan_meta_tags.h"
#include "shell/normalize.h"
#include "shell/validate_parameters.h"
#include "tagwright/tagwright.h"

namespace tagwright {

std::string Tagwright::readMetaContent(const std::string& DocumentName,
                                       const std::string& MetaNameValue, std::int16_t StartInstance,
                                       std::int16_t CountInstances,
                                       const std::string& ResultEqualsChars,
                                       const std::string& ResultSeparatorChars, int* MatchesFound) {
  int matches = -1;
  std::string result;
  try {
    Query query;
    query.DocumentName = trimmedParameter(DocumentName);
    const Text metaName = loweredParameter(MetaNameValue);
    query.StartInstance = StartInstance;
    query.CountInstances = CountInstances;
    // An empty text stays empty: name and content then stand side by side.
    const Text equals = trimmedParameter(ResultEqualsChars);
    resultSeparator = trimmedParameter(ResultSeparatorChars);
    // Fixed values that pass the checks of a locate request; the reader
    // keeps only the path, the counters and the open file.
    query.ElementName = U"name";
    query.AttributeName = U"content";
    query.ContentType = U"innermarkup";
    Int16 matchCount = 0;

    Int16 fileNumber = 0;
    Text message = validateParameters({platform_, ScriptingContext_.get(), allowPhysicalDocRead},
                                      query, resultSeparator, fileNumber);
    if (message.empty()) {
      Text resultText;
      message = scanMetaTags({platform_, bufferLength, resultSeparator, lineEndMode}, metaName,
                             query.StartInstance, query.CountInstances, fileNumber, matchCount,
                             equals, resultText);
      if (message.empty()) {
        matches = matchCount.value();
        result = toUtf8(resultText);
      }
    }
    if (!message.empty()) result = "ERROR: " + toUtf8(message);
  } catch (...) {
    matches = -1;
    result = "ERROR: Unexpected error in readMetaContent.";
  }
  if (MatchesFound != nullptr) *MatchesFound = matches;
  return result;
}

}  // namespace tagwright
