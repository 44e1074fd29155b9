#ifndef TAGWRIGHT_APP_HOST_H_
#define TAGWRIGHT_APP_HOST_H_

#include <iosfwd>
#include <string>
#include <vector>

namespace tagwright {

class Platform;

// Runs one `tagwright` command line: creates an instance, hands it a page
// context, calls one operation and prints what it returned. Returns the exit
// status: 0 success, 1 when the operation reported a failure or the instance
// could not be created from the settings, 2 for a command line that cannot
// be run. `platform` replaces the system's in tests. The document "-" is
// read from the process's standard input (descriptor 0), not from `in`.
// `outputIsTerminal`: bare output gains a final line end, for the eye.
int runHost(const std::vector<std::string>& arguments, std::istream& in, std::ostream& out,
            std::ostream& err, Platform* platform = nullptr, bool outputIsTerminal = false);

}  // namespace tagwright

#endif  // TAGWRIGHT_APP_HOST_H_
