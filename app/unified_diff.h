#ifndef TAGWRIGHT_APP_UNIFIED_DIFF_H_
#define TAGWRIGHT_APP_UNIFIED_DIFF_H_

#include <iosfwd>
#include <string>

namespace tagwright {

// Writes to `out` the unified diff that turns the file `originalPath` into
// the file `newPath`, their names a/NAME and b/NAME, as `diff -u` makes it:
// GNU diff does the work, every byte taken as text. Returns 0 when the two
// are the same, 1 when they differ, and 2, having said why on `err`, when
// the diff could not be made.
int printUnifiedDiff(const std::string& originalPath, const std::string& newPath,
                     const std::string& name, std::ostream& out, std::ostream& err);

}  // namespace tagwright

#endif  // TAGWRIGHT_APP_UNIFIED_DIFF_H_
