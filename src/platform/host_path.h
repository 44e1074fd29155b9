#ifndef TAGWRIGHT_PLATFORM_HOST_PATH_H_
#define TAGWRIGHT_PLATFORM_HOST_PATH_H_

#include <string>

#include "platform/text.h"

namespace tagwright {

// Maps a physical path onto the host file system: every "\" becomes "/", and
// a leading drive such as "C:" stands for the host's root, so "C:\web\a.htm"
// is "/web/a.htm". The result is UTF-8 bytes, raw bytes given back as they were.
std::string hostPath(TextView physicalPath);

// The physical form of an absolute host path: "/srv/a.htm" is "\srv\a.htm".
Text physicalPathOf(std::string_view hostPath);

}  // namespace tagwright

#endif  // TAGWRIGHT_PLATFORM_HOST_PATH_H_
