#include "batch/document_list.h"

#include <dirent.h>
#include <fnmatch.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>
#include <utility>

#include "plain_file.h"
#include "tagwright/tagwright.h"

namespace tagwright {
namespace {

void splitNames(const std::string& text, char end, std::vector<std::string>& names) {
  std::size_t start = 0;
  while (start < text.size()) {
    std::size_t stop = text.find(end, start);
    if (stop == std::string::npos) stop = text.size();
    std::string name = text.substr(start, stop - start);
    // A list written on another system may end its lines with CR LF.
    if (end == '\n' && !name.empty() && name.back() == '\r') name.pop_back();
    if (!name.empty()) names.push_back(std::move(name));
    start = stop + 1;
  }
}

struct Walk {
  const std::string& pattern;
  std::vector<std::string>& names;
  std::ostream& err;
  int& unreadableFolders;

  // Returns false when `hostFolder` cannot be read.
  bool visit(const std::string& hostFolder, const std::string& namedFolder) {
    DIR* folder = ::opendir(hostFolder.c_str());
    if (folder == nullptr) return false;
    // Each name with its type as the folder tells it, so that a plain file
    // costs no look-up of its own; DT_UNKNOWN where the file system keeps none.
    std::vector<std::pair<std::string, unsigned char>> entries;
    while (dirent* entry = ::readdir(folder)) {
      if (entry->d_name[0] != '.') entries.emplace_back(entry->d_name, entry->d_type);
    }
    ::closedir(folder);
    // std::string compares as unsigned bytes: the order of `LC_ALL=C ls`.
    std::sort(entries.begin(), entries.end());
    for (const auto& [entry, type] : entries) {
      const std::string hostPath = hostFolder + "/" + entry;
      const std::string namedPath = namedFolder + "/" + entry;
      struct stat status {};
      if (type == DT_REG) {
        status.st_mode = S_IFREG;
      } else if (::lstat(hostPath.c_str(), &status) != 0) {
        continue;
      }
      if (S_ISDIR(status.st_mode)) {
        if (!visit(hostPath, namedPath)) {
          err << "tagwright: " << namedPath << ": cannot read the folder: " << std::strerror(errno)
              << "\n";
          ++unreadableFolders;
        }
        continue;
      }
      // A link counts as what it leads to, but a link to a folder is not followed.
      if (S_ISLNK(status.st_mode) && ::stat(hostPath.c_str(), &status) != 0) continue;
      if (!S_ISREG(status.st_mode)) continue;
      if (::fnmatch(pattern.c_str(), entry.c_str(), 0) == 0) names.push_back(namedPath);
    }
    return true;
  }
};

std::string withoutTrailingSlashes(std::string path) {
  while (path.size() > 1 && (path.back() == '/' || path.back() == '\\')) path.pop_back();
  return path;
}

}  // namespace

std::optional<std::vector<std::string>> listDocuments(const DocumentSources& sources,
                                                      const Tagwright& instance, std::istream& in,
                                                      std::ostream& err, int& unreadableFolders) {
  std::vector<std::string> names = sources.arguments;
  if (sources.filesFrom) {
    std::optional<std::string> list;
    if (*sources.filesFrom == "-") {
      list = std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    } else {
      list = readPlainFile(*sources.filesFrom);
    }
    if (!list) {
      err << "tagwright: cannot read --files-from " << *sources.filesFrom
          << " (it must be a plain file)\n";
      return std::nullopt;
    }
    splitNames(*list, sources.nulSeparated ? '\0' : '\n', names);
  }
  if (sources.recursiveFolder) {
    const std::string hostFolder =
        withoutTrailingSlashes(instance.hostPathOf(*sources.recursiveFolder));
    const std::string namedFolder = withoutTrailingSlashes(*sources.recursiveFolder);
    struct stat status {};
    if (hostFolder.empty() || ::stat(hostFolder.c_str(), &status) != 0 ||
        !S_ISDIR(status.st_mode)) {
      err << "tagwright: --recursive " << *sources.recursiveFolder << " names no folder\n";
      return std::nullopt;
    }
    Walk walk{sources.pattern, names, err, unreadableFolders};
    if (!walk.visit(hostFolder, namedFolder == "/" ? "" : namedFolder)) {
      err << "tagwright: --recursive " << *sources.recursiveFolder
          << ": cannot read the folder: " << std::strerror(errno) << "\n";
      return std::nullopt;
    }
  }
  return names;
}

}  // namespace tagwright
