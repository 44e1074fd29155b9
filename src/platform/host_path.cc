#include "platform/host_path.h"

namespace tagwright {
namespace {

bool isDriveLetter(char32_t c) { return (c >= U'a' && c <= U'z') || (c >= U'A' && c <= U'Z'); }

}  // namespace

std::string hostPath(TextView physicalPath) {
  TextView path = physicalPath;
  bool drive = path.size() >= 2 && isDriveLetter(path[0]) && path[1] == U':';
  if (drive) path.remove_prefix(2);
  std::string out;
  // "C:" alone, or "C:name", is relative to the host's root like "C:\name".
  if (drive && (path.empty() || (path[0] != U'\\' && path[0] != U'/'))) out.push_back('/');
  appendEncoded(path, out);
  for (char& c : out) {
    if (c == '\\') c = '/';
  }
  return out;
}

Text physicalPathOf(std::string_view host) {
  Text out = fromUtf8(host);
  for (char32_t& c : out) {
    if (c == U'/') c = U'\\';
  }
  return out;
}

}  // namespace tagwright
