#ifndef TAGWRIGHT_APP_PLAIN_FILE_H_
#define TAGWRIGHT_APP_PLAIN_FILE_H_

#include <optional>
#include <string>

namespace tagwright {

// The bytes of the plain file at the host path `path` (links followed).
// Nothing for a file that cannot be read, and for anything but a plain file:
// a FIFO or a device could block or never end.
std::optional<std::string> readPlainFile(const std::string& path);

}  // namespace tagwright

#endif  // TAGWRIGHT_APP_PLAIN_FILE_H_
