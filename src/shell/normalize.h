#ifndef TAGWRIGHT_SHELL_NORMALIZE_H_
#define TAGWRIGHT_SHELL_NORMALIZE_H_

#include <cstdint>
#include <string>

#include "locate/query.h"
#include "platform/text.h"

namespace tagwright {

// A parameter as the operations take it: decoded and trimmed of blanks.
inline Text trimmedParameter(const std::string& utf8) { return Text(trim(fromUtf8(utf8))); }
// Trimmed, then lower-cased: markers and keywords are compared in lower case.
inline Text loweredParameter(const std::string& utf8) { return lower(trim(fromUtf8(utf8))); }

// The request of readXPointer or writeXPointer as the operation hands it on:
// names and keywords trimmed and lower-cased, the document name and the
// string function trimmed with their case kept, so that a quoted search text
// is compared as written.
inline Query normalizedQuery(const std::string& DocumentName, const std::string& ElementName,
                             const std::string& AttributeName, const std::string& AttributeValue,
                             std::int16_t StartInstance, std::int16_t CountInstances,
                             const std::string& ContentType, const std::string& SpanFunction,
                             const std::string& StringFunction) {
  Query query;
  query.DocumentName = trimmedParameter(DocumentName);
  query.ElementName = loweredParameter(ElementName);
  query.AttributeName = loweredParameter(AttributeName);
  query.AttributeValue = loweredParameter(AttributeValue);
  query.StartInstance = StartInstance;
  query.CountInstances = CountInstances;
  query.ContentType = loweredParameter(ContentType);
  query.SpanFunction = loweredParameter(SpanFunction);
  query.StringFunction = trimmedParameter(StringFunction);
  return query;
}

}  // namespace tagwright

#endif  // TAGWRIGHT_SHELL_NORMALIZE_H_
