#ifndef TAGWRIGHT_TESTS_SUPPORT_TEMP_FOLDER_H_
#define TAGWRIGHT_TESTS_SUPPORT_TEMP_FOLDER_H_

#include <stdlib.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/host_path.h"
#include "platform/text.h"

namespace tagwright {

// A fresh folder on the real file system for tests of the POSIX platform,
// removed with all it holds at the end of its scope.
class TempFolder {
 public:
  TempFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "tagwright-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
    root_ = pattern;
  }
  ~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(root_, ignored);
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  std::filesystem::path path() const { return root_; }
  // The host path of `name` in the folder, and its physical form ("\tmp\...").
  std::string host(const std::string& name) const { return root_ + "/" + name; }
  std::string physical(const std::string& name) const { return toUtf8(physicalPathOf(host(name))); }
  std::string file(const std::string& name) const { return host(name); }

  void write(const std::string& name, const std::string& bytes) const {
    std::filesystem::create_directories(std::filesystem::path(host(name)).parent_path());
    std::ofstream(host(name), std::ios::binary) << bytes;
  }
  // The file's bytes, or nothing when there is no such file.
  std::optional<std::string> read(const std::string& name) const {
    std::ifstream in(host(name), std::ios::binary);
    if (!in) return std::nullopt;
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }
  // The names in the folder (not recursive), hidden ones included.
  std::vector<std::string> names(const std::string& subfolder = "") const {
    std::vector<std::string> out;
    for (const auto& entry : std::filesystem::directory_iterator(host(subfolder))) {
      out.push_back(entry.path().filename().string());
    }
    std::sort(out.begin(), out.end());
    return out;
  }

 private:
  std::string root_;
};

}  // namespace tagwright

#endif  // TAGWRIGHT_TESTS_SUPPORT_TEMP_FOLDER_H_
