#ifndef TAGWRIGHT_REWRITE_REWRITE_NAMES_H_
#define TAGWRIGHT_REWRITE_REWRITE_NAMES_H_

#include "platform/platform.h"
#include "platform/text.h"

namespace tagwright {

// The stamp of a temporary name: the local time as "mmddhhnnss" followed
// directly by the whole part of `randomValue` * 10000 in plain decimal, with
// no leading zeros (one to four digits). `randomValue` lies in [0, 1).
//   stampText({11, 19, 0, 43, 51}, 0.4375) == U"11190043514375"
Text stampText(const LocalTime& now, double randomValue);

// The date as "mmdd", as the pattern of stale temporary files names it.
//   monthDay({11, 17, 0, 43, 51}) == U"1117"
Text monthDay(const LocalTime& date);

}  // namespace tagwright

#endif  // TAGWRIGHT_REWRITE_REWRITE_NAMES_H_
