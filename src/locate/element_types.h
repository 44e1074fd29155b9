#ifndef TAGWRIGHT_LOCATE_ELEMENT_TYPES_H_
#define TAGWRIGHT_LOCATE_ELEMENT_TYPES_H_

#include "locate/matchers/matcher.h"

namespace tagwright {

// The opening marker that makes a candidate, and the matcher that judges it.
struct ElementType {
  Text openMarker;
  Matcher matcher;
  // True when the matcher's verdict rests on the start tag alone: the
  // candidate's characters up to the first ">" behind it.
  bool judgedByStartTag = false;
};

// The element type of a trimmed, lower-cased ElementName: one of the five
// "#" words, or a plain element name.
ElementType elementTypeFor(TextView ElementName);

}  // namespace tagwright

#endif  // TAGWRIGHT_LOCATE_ELEMENT_TYPES_H_
