#ifndef TAGWRIGHT_TESTS_SUPPORT_TEMP_FOLDER_H_
#define TAGWRIGHT_TESTS_SUPPORT_TEMP_FOLDER_H_

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "platform/host_path.h"
#include "platform/text.h"

namespace tagwright {

// A fresh folder on the real file system, removed with all it holds at the
// end of its scope. `host(name)` is the path of `name` in it on this system,
// `physical(name)` the same path in the component's language.
class TempFolder {
 public:
  TempFolder() : root_((std::filesystem::temp_directory_path() / "tagwright-XXXXXX").string()) {
    if (::mkdtemp(root_.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
  }
  ~TempFolder() {
    std::error_code ignored;
    std::filesystem::permissions(root_, std::filesystem::perms::owner_all, ignored);
    std::filesystem::remove_all(root_, ignored);
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  std::string host(const std::string& name = "") const { return root_ + "/" + name; }
  std::string physical(const std::string& name = "") const {
    return toUtf8(physicalPathOf(host(name)));
  }
  void write(const std::string& name, const std::string& bytes) const {
    std::filesystem::create_directories(std::filesystem::path(host(name)).parent_path());
    std::ofstream(host(name), std::ios::binary) << bytes;
  }
  // The file's bytes, or nothing when there is no such file.
  std::optional<std::string> read(const std::string& name) const {
    std::ifstream in(host(name), std::ios::binary);
    if (!in) return std::nullopt;
    return std::string(std::istreambuf_iterator<char>(in), {});
  }
  // Every entry under `folder`, links not followed, by its path there: its
  // kind, and the bytes of a plain file, the target of a link; with
  // `modes`, its permission bits too.
  std::map<std::string, std::string> tree(const std::string& folder = "",
                                          bool modes = false) const {
    namespace fs = std::filesystem;
    std::map<std::string, std::string> out;
    for (const auto& entry : fs::recursive_directory_iterator(host(folder))) {
      const fs::file_status status = entry.symlink_status();
      std::string& about = out[entry.path().lexically_relative(host(folder)).string()];
      about = "kind " + std::to_string(static_cast<int>(status.type()));
      if (fs::is_symlink(status)) about = "link to " + fs::read_symlink(entry.path()).string();
      if (fs::is_regular_file(status)) about = *read(fs::relative(entry.path(), host()));
      if (modes) about += " mode " + std::to_string(static_cast<int>(status.permissions()));
    }
    return out;
  }
  // The names in a folder, hidden ones included.
  std::set<std::string> names(const std::string& folder = "") const {
    std::set<std::string> out;
    for (const auto& entry : std::filesystem::directory_iterator(host(folder))) {
      out.insert(entry.path().filename().string());
    }
    return out;
  }

 private:
  std::string root_;
};

}  // namespace tagwright

#endif  // TAGWRIGHT_TESTS_SUPPORT_TEMP_FOLDER_H_
