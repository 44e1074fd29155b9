#include "refusal_cause.h"

#include <filesystem>
#include <ostream>

namespace tagwright {
namespace {

namespace fs = std::filesystem;

bool lexicallyInside(const fs::path& path, const fs::path& folder) {
  auto [end, unused] = std::mismatch(folder.begin(), folder.end(), path.begin(), path.end());
  (void)unused;
  return end == folder.end() || (std::next(end) == folder.end() && end->empty());
}

// True when a ".." of `relative`, taken step by step from `base`, leaves
// `root` at some point, even if later names come back inside.
bool climbsAbove(const fs::path& base, const fs::path& relative, const fs::path& root) {
  fs::path at = base;
  for (const fs::path& segment : relative) {
    if (segment == "..") {
      if (at.lexically_normal() == root.lexically_normal()) return true;
      at = at.parent_path();
    } else if (!segment.empty() && segment != "." && segment != "/") {
      at /= segment;
    }
  }
  return false;
}

}  // namespace

void explainRefusal(const std::string& answer, const std::string& document,
                    const ContextSetting& context, const Tagwright& instance, std::ostream& err) {
  const std::size_t first = document.find_first_not_of(' ');
  if (first == std::string::npos) return;
  const std::string name = document.substr(first, document.find_last_not_of(' ') + 1 - first);
  if (name.find_first_of("\\:") != std::string::npos) return;  // physical: no context involved
  if (answer == "ERROR: Virtual file paths can only be used when running in ASP." &&
      !context.present) {
    err << "tagwright: " << name << " is a virtual path, and --no-context runs without the page "
        << "context that maps it (a physical path holds \"\\\" or \":\")\n";
    return;
  }
  if (answer != "ERROR: Unidentified Error while validating parameters." || !context.present) {
    return;
  }
  if (!instance.hostPathOf(name).empty()) return;  // mapped: refused elsewhere

  const bool fromRoot = name.starts_with("/");
  const fs::path root =
      (context.root.starts_with("/") ? fs::path(context.root)
                                     : fs::path(context.workingFolder) / context.root)
          .lexically_normal();
  const fs::path relative = fs::path(name).relative_path();
  std::string rule;
  if (context.workingFolder.empty() && (!fromRoot || !context.root.starts_with("/"))) {
    err << "tagwright: " << name << " cannot be mapped, root " << context.root
        << ": the working folder is gone, and "
        << (fromRoot ? "the root" : "a path without a leading \"/\"") << " is taken from it\n";
    return;
  }
  const fs::path base = fromRoot ? root : fs::path(context.workingFolder);
  const fs::path mapped = (base / relative).lexically_normal();
  std::error_code failed;
  const fs::path resolvedRoot = fs::weakly_canonical(root, failed);
  if (!fromRoot && !lexicallyInside(base, root) && !lexicallyInside(base, resolvedRoot)) {
    rule = "the working folder " + base.string() + " lies outside the root";
  } else if (climbsAbove(base, relative, root) || !lexicallyInside(mapped, root)) {
    rule = "a \"..\" climbs above the root";
  } else {
    const fs::path target = fs::weakly_canonical(mapped, failed);
    rule = "its target, links followed, is " + target.string() +
           ", outside the root (--follow-links-out serves such links)";
  }
  err << "tagwright: " << name << " maps to " << mapped.string() << ", root " << root.string()
      << ": " << rule << "\n";
}

}  // namespace tagwright
