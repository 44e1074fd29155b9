#ifndef TAGWRIGHT_LOCATE_QUERY_H_
#define TAGWRIGHT_LOCATE_QUERY_H_

#include <cstdint>
#include <functional>

#include "platform/int16.h"
#include "platform/platform.h"
#include "platform/text.h"
#include "tagwright/plain_types.h"

namespace tagwright {

// A request to locate parts of a document, as the public operation and then
// validateParameters leave it: trimmed, lower-cased where the rules say,
// defaults filled in.
struct Query {
  Text DocumentName;
  Text ElementName;
  Text AttributeName;
  Text AttributeValue;
  Int16 StartInstance = 1;
  Int16 CountInstances = 0;
  Text ContentType;
  Text SpanFunction;
  Text StringFunction;
};

// What one call of a document operation takes from its instance.
struct CallContext {
  Platform& platform;
  std::int32_t bufferLength;
  TextView resultSeparator;
  LineEnds lineEnds;
  // False keeps a scan on all the lower-cased characters of each chunk, and
  // an instance carried over chunks in characters, where a read would
  // otherwise search and cut on the bytes and a long chunk would be decoded
  // only as far as a position can reach: the two must agree, and tests hold
  // one against the other.
  bool bytePaths = true;
  // Told of every part taken, with its positions; null for none.
  const std::function<void(const FoundPart&)>* partObserver = nullptr;
};

}  // namespace tagwright

#endif  // TAGWRIGHT_LOCATE_QUERY_H_
