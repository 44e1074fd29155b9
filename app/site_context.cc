#include "site_context.h"

#include <algorithm>

#include "platform/failure.h"
#include "platform/host_path.h"

namespace tagwright {
namespace {

// A backslash separates folders too: the mapped path is physical, and the
// platform takes each backslash in it for a separator, so a ".." behind one
// is resolved here, and cannot climb out of the root there.
std::vector<std::string> splitSegments(const std::string& path) {
  std::vector<std::string> segments;
  std::size_t from = 0;
  for (std::size_t end = 0; end != std::string::npos; from = end + 1) {
    end = path.find_first_of("/\\", from);
    if (end != from && from < path.size()) segments.push_back(path.substr(from, end - from));
  }
  return segments;
}

[[noreturn]] void refuse() { throw Failure(Failure::Kind::kOutsideSiteRoot); }

// Resolves "." and ".." lexically; an absolute path that climbs above "/"
// stays at "/", as the operating system does.
std::vector<std::string> normalized(const std::string& path) {
  std::vector<std::string> out;
  for (std::string& segment : splitSegments(path)) {
    if (segment == ".") continue;
    if (segment == "..") {
      if (!out.empty()) out.pop_back();
      continue;
    }
    out.push_back(std::move(segment));
  }
  return out;
}

bool startsWith(const std::vector<std::string>& path, const std::vector<std::string>& prefix) {
  return path.size() >= prefix.size() && std::equal(prefix.begin(), prefix.end(), path.begin());
}

}  // namespace

SiteContext::SiteContext(const std::string& root, const std::string& workingFolder)
    : root_(normalized(root)), workingFolder_(normalized(workingFolder)) {}

std::string SiteContext::MapPath(const std::string& path) {
  std::vector<std::string> result;
  if (!path.empty() && path[0] == '/') {
    result = root_;
  } else {
    if (!startsWith(workingFolder_, root_)) refuse();
    result = workingFolder_;
  }
  for (const std::string& segment : splitSegments(path)) {
    if (segment == ".") continue;
    if (segment == "..") {
      if (result.size() <= root_.size()) refuse();
      result.pop_back();
      continue;
    }
    result.push_back(segment);
  }
  std::string host;
  for (const std::string& segment : result) host += "/" + segment;
  if (host.empty() || (!path.empty() && path.back() == '/')) host += "/";
  return toUtf8(physicalPathOf(host));
}

}  // namespace tagwright
