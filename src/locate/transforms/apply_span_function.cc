#include "locate/transforms/apply_span_function.h"

namespace tagwright {
namespace {

// Finds the element `name` in `lowered` from `from`: the plain tag "<name>"
// first, and "<name " only once no plain tag is left at or after `from`. So
// a later plain tag wins over a nearer one with attributes, and a tag of the
// second form passed over that way is not visited again. "<name/>" and a
// name followed by a line end are no occurrence. Returns the "<" or 0.
class ElementFinder {
 public:
  ElementFinder(TextView lowered, TextView name)
      : lowered_(lowered),
        plainTag_(U"<" + Text(name) + U">"),
        tagWithAttributes_(U"<" + Text(name) + U" ") {}

  Int16 find(Int16 from) const {
    Int16 at = searchFrom(lowered_, plainTag_, from);
    if (at == 0) at = searchFrom(lowered_, tagWithAttributes_, from);
    return at;
  }

 private:
  TextView lowered_;
  Text plainTag_;
  Text tagWithAttributes_;
};

Text closingTag(TextView name) { return U"</" + Text(name) + U">"; }

}  // namespace

Text applySpanFunction(Int16& MatchesFound, TextView SpanFunction, TextView foundText,
                       TextView ContentType, TextView NewContent, Text& replacementText,
                       bool writeMode, TextView resultSeparator) {
  const Text lowered = lower(foundText);
  Text spanList;
  Int16 copyPosition = 1;

  // Both names are lower case already; a further comma stays in the second.
  const std::size_t comma = SpanFunction.find(U',');
  const TextView firstName = trim(SpanFunction.substr(0, comma));
  const TextView secondName =
      comma == TextView::npos ? TextView() : trim(SpanFunction.substr(comma + 1));
  const ElementFinder first(lowered, firstName);
  const ElementFinder second(lowered, secondName);
  const Text firstClosingTag = closingTag(firstName);
  const Text secondClosingTag = closingTag(secondName);
  const bool outerMarkup = ContentType == U"outermarkup";

  Int16 instanceStart = first.find(1);
  replacementText.clear();
  while (instanceStart > 0) {
    Int16 tagEnd = searchFrom(lowered, U">", instanceStart);
    Int16 secondStart = tagEnd == 0 ? Int16(0) : second.find(tagEnd + 1);
    // Stays 0 where this occurrence gives no span.
    Int16 spanEnd = 0;
    if (secondStart > 0 && outerMarkup) {
      Int16 secondTagEnd = searchFrom(lowered, U">", secondStart);
      Int16 selfClose = searchFrom(lowered, U"/>", secondStart);
      if (selfClose > 0 && selfClose < secondTagEnd) {
        spanEnd = secondTagEnd + 1;
      } else {
        // A second tag of the "<name " form with no ">" behind it makes this
        // search start at 0, which is the invalid-argument failure.
        Int16 closeAt = searchFrom(lowered, secondClosingTag, secondTagEnd);
        if (closeAt > 0) spanEnd = closeAt + lengthOf(secondClosingTag);
      }
    } else if (secondStart > 0) {
      // Only the place in front of the second element is looked at, not
      // which element it closes: a self-closed tag there leaves an empty span.
      if (mid(lowered, secondStart - 2, 1) == U"/") {
        instanceStart = secondStart;
      } else {
        Int16 closeAt = searchFrom(lowered, firstClosingTag, instanceStart);
        if (closeAt > 0) {
          instanceStart = closeAt + lengthOf(firstClosingTag);
          spanEnd = secondStart;
        }
      }
    }
    if (spanEnd > instanceStart) {
      spanList.append(mid(foundText, instanceStart, spanEnd - instanceStart));
      spanList.append(resultSeparator);
      MatchesFound += 1;
      if (writeMode) {
        // A span that overlaps the one before starts in front of the copy
        // position: the negative length fails the whole rewrite.
        if (instanceStart > 1) {
          replacementText.append(mid(foundText, copyPosition, instanceStart - copyPosition));
        }
        replacementText.append(NewContent);
        copyPosition = spanEnd;
      }
    }
    // From the instance start, not the span end: spans may overlap.
    instanceStart = first.find(instanceStart + 1);
  }
  if (writeMode && copyPosition.index() < foundText.size()) {
    replacementText.append(mid(foundText, copyPosition));
  }
  return spanList;
}

}  // namespace tagwright
