#include "serve/confinement.h"

#include <algorithm>
#include <exception>

#include "tagwright/site_context.h"

namespace tagwright {
namespace {

Confinement::Verdict refused(int status, std::string message) {
  return {status, std::move(message), ""};
}

bool hasDotDotSegment(const std::string& path) {
  std::size_t start = 0;
  while (start <= path.size()) {
    std::size_t end = path.find('/', start);
    if (end == std::string::npos) end = path.size();
    if (path.compare(start, end - start, "..") == 0) return true;
    start = end + 1;
  }
  return false;
}

}  // namespace

// Links are never followed out of the root here, whatever the
// administrator's settings: the context refuses every name whose target,
// links followed, lies outside the resolved root, both when this host checks
// a name and when the component maps it again.
Confinement::Confinement(std::string resolvedRoot)
    : root_(std::move(resolvedRoot)),
      context_(std::make_shared<SiteContext>(root_, root_, /*followLinksOut=*/false)) {}

template <typename MapName>
Confinement::Verdict Confinement::checkedName(const std::string& virtualName, MapName map) const {
  if (virtualName.empty()) return refused(400, "a name is required");
  if (virtualName.find('\0') != std::string::npos) return refused(400, "a name holds a NUL byte");
  if (virtualName.find_first_of("\\:") != std::string::npos) {
    return refused(400, "physical paths (a name holding \"\\\" or \":\") are refused");
  }
  std::string mapped;
  try {
    mapped = map(virtualName);
  } catch (const std::exception&) {
    return refused(403, "the name lies outside the site root");
  }
  // The context gives the physical form of an absolute host path.
  std::replace(mapped.begin(), mapped.end(), '\\', '/');
  return {0, "", std::move(mapped)};
}

Confinement::Verdict Confinement::name(const std::string& virtualName) const {
  return checkedName(virtualName,
                     [this](const std::string& name) { return context_->Server().MapPath(name); });
}

Confinement::Verdict Confinement::name(const std::string& virtualName,
                                       CheckedContext& through) const {
  return checkedName(virtualName,
                     [&through](const std::string& name) { return through.check(name); });
}

Confinement::Verdict Confinement::pattern(const std::string& filePattern) {
  if (filePattern.find_first_of(std::string("/\\\0", 3)) != std::string::npos ||
      filePattern.find("..") != std::string::npos) {
    return refused(400, "a pattern may not hold \"/\", \"\\\", \"..\" or a NUL byte");
  }
  return {};
}

Confinement::Verdict Confinement::urlPath(const std::string& path) const {
  if (path.empty() || path[0] != '/') return refused(400, "a path must begin with \"/\"");
  if (hasDotDotSegment(path)) return refused(400, "a path may not hold \"..\"");
  return name(path);
}

}  // namespace tagwright
