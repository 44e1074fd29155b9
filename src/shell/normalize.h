#ifndef TAGWRIGHT_SHELL_NORMALIZE_H_
#define TAGWRIGHT_SHELL_NORMALIZE_H_

#include <string>

#include "platform/text.h"

namespace tagwright {

// A parameter as the operations take it: decoded and trimmed of blanks.
inline Text trimmedParameter(const std::string& utf8) { return Text(trim(fromUtf8(utf8))); }
// Trimmed, then lower-cased: markers and keywords are compared in lower case.
inline Text loweredParameter(const std::string& utf8) { return lower(trim(fromUtf8(utf8))); }

}  // namespace tagwright

#endif  // TAGWRIGHT_SHELL_NORMALIZE_H_
