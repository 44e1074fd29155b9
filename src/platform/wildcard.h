#ifndef TAGWRIGHT_PLATFORM_WILDCARD_H_
#define TAGWRIGHT_PLATFORM_WILDCARD_H_

#include <string_view>

namespace tagwright {

// True when `name` matches `pattern`, where "*" is any run of characters,
// "?" one character, and "*.*" every name. Names compare byte for byte, as
// the file system writes them. `name` and `pattern` are UTF-8; "?" takes one
// character, not one byte.
bool matchesWildcard(std::string_view pattern, std::string_view name);

// True when a pattern holds "*" or "?", so that it passes over hidden names.
bool hasWildcard(std::string_view pattern);

}  // namespace tagwright

#endif  // TAGWRIGHT_PLATFORM_WILDCARD_H_
