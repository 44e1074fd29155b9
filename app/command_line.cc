#include "command_line.h"

#include <istream>
#include <iterator>
#include <ostream>

#include "plain_file.h"

namespace tagwright {

std::int16_t numberOr(const std::optional<int>& value, int fallback) {
  return static_cast<std::int16_t>(value.value_or(fallback));
}

std::string orDefault(const std::optional<std::string>& value, const char* fallback) {
  return value ? *value : fallback;
}

std::optional<std::string> readNewContent(const CommandLine& line, std::istream& in,
                                          std::ostream& err) {
  if (line.newContent) return line.newContent;
  if (*line.newContentFile == "-") {
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }
  std::optional<std::string> bytes = readPlainFile(*line.newContentFile);
  if (!bytes) {
    err << "tagwright: cannot read --new-content-file " << *line.newContentFile
        << " (it must be a plain file)\n";
  }
  return bytes;
}

}  // namespace tagwright
