#include "platform/wildcard.h"

#include "platform/text.h"

namespace tagwright {
namespace {

bool matchFrom(TextView pattern, TextView name) {
  // Iterative matching with one backtrack point: linear for the patterns
  // that file searches see.
  std::size_t p = 0, n = 0, starAt = TextView::npos, starName = 0;
  while (n < name.size()) {
    if (p < pattern.size() && (pattern[p] == U'?' || pattern[p] == name[n])) {
      ++p, ++n;
    } else if (p < pattern.size() && pattern[p] == U'*') {
      starAt = p++;
      starName = n;
    } else if (starAt != TextView::npos) {
      p = starAt + 1;
      n = ++starName;
    } else {
      return false;
    }
  }
  while (p < pattern.size() && pattern[p] == U'*') ++p;
  return p == pattern.size();
}

}  // namespace

bool matchesWildcard(std::string_view pattern, std::string_view name) {
  if (pattern == "*.*") return true;
  return matchFrom(fromUtf8(pattern), fromUtf8(name));
}

bool hasWildcard(std::string_view pattern) {
  return pattern.find_first_of("*?") != std::string_view::npos;
}

}  // namespace tagwright
