#ifndef TAGWRIGHT_LOCATE_TRANSFORMS_APPLY_SPAN_FUNCTION_H_
#define TAGWRIGHT_LOCATE_TRANSFORMS_APPLY_SPAN_FUNCTION_H_

#include "platform/int16.h"
#include "platform/text.h"

namespace tagwright {

// The spans of `foundText` that run from an element named by the first name
// of `SpanFunction` ("first,second", lower case) to the next element named by
// the second, each followed by `resultSeparator`; `MatchesFound` rises by one
// per span. With "outermarkup" a span holds both elements, otherwise it is
// the text between them. In write mode `replacementText` becomes `foundText`
// with each span replaced by `NewContent`. Throws the overflow, or
// Failure(kInvalidArgument) for overlapping spans in write mode.
Text applySpanFunction(Int16& MatchesFound, TextView SpanFunction, TextView foundText,
                       TextView ContentType, TextView NewContent, Text& replacementText,
                       bool writeMode, TextView resultSeparator);

}  // namespace tagwright

#endif  // TAGWRIGHT_LOCATE_TRANSFORMS_APPLY_SPAN_FUNCTION_H_
