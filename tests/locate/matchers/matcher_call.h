#ifndef TAGWRIGHT_TESTS_LOCATE_MATCHERS_MATCHER_CALL_H_
#define TAGWRIGHT_TESTS_LOCATE_MATCHERS_MATCHER_CALL_H_

#include <string>

#include "locate/matchers/matcher.h"

namespace tagwright {

// A query as validateParameters leaves it, for calling a matcher directly.
inline Query matcherQuery(const std::string& contentType, const std::string& element = "#element",
                          const std::string& attributeName = "*",
                          const std::string& attributeValue = "*") {
  Query query;
  query.ElementName = fromUtf8(element);
  query.AttributeName = fromUtf8(attributeName);
  query.AttributeValue = fromUtf8(attributeValue);
  query.ContentType = fromUtf8(contentType);
  return query;
}

inline const std::string kNotSet = "(not set)";

// What a matcher left: its answer, `contentStart` less P, and `closeMarker`
// (kNotSet when the matcher did not touch it).
struct MatcherOutcome {
  bool result;
  int offset;
  std::string closeMarker;
};

// Calls `matcher` on the lower-cased chunk `before` + `atP` + CR LF, with P
// on the first character of `atP`.
inline MatcherOutcome callMatcher(Matcher matcher, const Query& query, const std::string& atP,
                                  const std::string& before = "") {
  const Text chunkLower = lower(fromUtf8(before + atP + "\r\n"));
  const Int16 p = lengthOf(fromUtf8(before)) + 1;
  Int16 contentStart = p;
  Text closeMarker = fromUtf8(kNotSet);
  const bool result = matcher(query, chunkLower, contentStart, closeMarker);
  return {result, (contentStart - p).value(), toUtf8(closeMarker)};
}

}  // namespace tagwright

#endif  // TAGWRIGHT_TESTS_LOCATE_MATCHERS_MATCHER_CALL_H_
