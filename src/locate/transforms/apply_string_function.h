#ifndef TAGWRIGHT_LOCATE_TRANSFORMS_APPLY_STRING_FUNCTION_H_
#define TAGWRIGHT_LOCATE_TRANSFORMS_APPLY_STRING_FUNCTION_H_

#include "platform/text.h"

namespace tagwright {

// A piece of the plain text of `foundText`: `StringFunction` is
// "occurrence,search,offset,length"; the piece of `length` characters starts
// `offset` characters from the occurrence-th occurrence of the search text
// (quoted: case-sensitive; bare: not). Never throws: a fault of form gives
// "ERROR: Illegal String function format :" + StringFunction, any other
// failure "ERROR: Unexpected error while executing String function.".
//   applyStringFunction(U"1,usd,-7,5", U"Price: USD 120 net") == U"Price"
Text applyStringFunction(TextView StringFunction, TextView foundText);

}  // namespace tagwright

#endif  // TAGWRIGHT_LOCATE_TRANSFORMS_APPLY_STRING_FUNCTION_H_
