#ifndef TAGWRIGHT_TESTS_SUPPORT_TEMP_FOLDER_H_
#define TAGWRIGHT_TESTS_SUPPORT_TEMP_FOLDER_H_

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

namespace tagwright {

// A fresh folder under the system's temporary folder, removed at the end.
class TempFolder {
 public:
  TempFolder() {
    std::random_device seed;
    path_ = std::filesystem::temp_directory_path() /
            ("tagwright-test-" + std::to_string(seed()) + std::to_string(seed()));
    std::filesystem::create_directories(path_);
  }
  ~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }
  std::string file(const std::string& name) const { return (path_ / name).string(); }

  void write(const std::string& name, const std::string& bytes) const {
    std::filesystem::create_directories((path_ / name).parent_path());
    std::ofstream(path_ / name, std::ios::binary) << bytes;
  }
  std::string read(const std::string& name) const {
    std::ifstream in(path_ / name, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }

 private:
  std::filesystem::path path_;
};

}  // namespace tagwright

#endif  // TAGWRIGHT_TESTS_SUPPORT_TEMP_FOLDER_H_
