#include "tagwright/site_context.h"

#include <algorithm>

#include "platform/failure.h"
#include "platform/host_path.h"
#include "platform/platform.h"

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

std::string joined(const std::vector<std::string>& segments) {
  std::string path;
  for (const std::string& segment : segments) path += "/" + segment;
  return path.empty() ? "/" : path;
}

bool startsWith(const std::vector<std::string>& path, const std::vector<std::string>& prefix) {
  return path.size() >= prefix.size() && std::equal(prefix.begin(), prefix.end(), path.begin());
}

}  // namespace

SiteContext::SiteContext(const std::string& root, const std::string& workingFolder,
                         bool followLinksOut, Platform& platform)
    : platform_(platform),
      workingFolder_(normalized(workingFolder)),
      rootKnown_(root.starts_with("/") || !workingFolder.empty()),
      workingFolderKnown_(!workingFolder.empty()),
      followLinksOut_(followLinksOut) {
  root_ = normalized(root.starts_with("/") ? root : workingFolder + "/" + root);
  resolvedRoot_ = resolved(joined(root_));
}

std::vector<std::string> SiteContext::resolved(const std::string& path) const {
  return normalized(hostPath(platform_.followLinksAlong(physicalPathOf(path))));
}

std::vector<std::string> SiteContext::workingFolderInRoot() const {
  if (startsWith(workingFolder_, root_)) return workingFolder_;
  if (!startsWith(workingFolder_, resolvedRoot_)) refuse();
  std::vector<std::string> inRoot = root_;
  inRoot.insert(inRoot.end(),
                workingFolder_.begin() + static_cast<std::ptrdiff_t>(resolvedRoot_.size()),
                workingFolder_.end());
  return inRoot;
}

std::string SiteContext::MapPath(const std::string& path) {
  bool fromRoot = !path.empty() && path[0] == '/';
  if (!rootKnown_ || (!fromRoot && !workingFolderKnown_)) {
    throw Failure(Failure::Kind::kPathNotFound);
  }
  std::vector<std::string> result = fromRoot ? root_ : workingFolderInRoot();
  for (const std::string& segment : splitSegments(path)) {
    if (segment == ".") continue;
    if (segment == "..") {
      if (result.size() <= root_.size()) refuse();
      result.pop_back();
      continue;
    }
    result.push_back(segment);
  }
  // Every path lies inside the root "/": its links need not be followed.
  const bool rootHoldsAll = resolvedRoot_.empty();
  if (!followLinksOut_ && !rootHoldsAll && !startsWith(resolved(joined(result)), resolvedRoot_)) {
    refuse();
  }
  std::string host = joined(result);
  if (!result.empty() && !path.empty() && path.back() == '/') host += "/";
  return toUtf8(physicalPathOf(host));
}

}  // namespace tagwright
