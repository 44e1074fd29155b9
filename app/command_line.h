#ifndef TAGWRIGHT_APP_COMMAND_LINE_H_
#define TAGWRIGHT_APP_COMMAND_LINE_H_

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "batch/document_list.h"

namespace tagwright {

// The values of one command line; an option left out stays empty here and
// the operation's default applies.
struct CommandLine {
  std::string target;
  std::vector<std::string> documents;
  DocumentSources sources;
  std::optional<int> jobs;
  bool progress = false;
  std::optional<std::string> elementName, attributeName, attributeValue, contentType;
  std::optional<std::string> spanFunction, stringFunction, separator;
  std::optional<std::string> newContent, newContentFile;
  std::optional<std::string> metaName, equals, pattern;
  std::optional<int> startInstance, countInstances;
  std::optional<std::string> lineEnds;
  std::string root = "/";
  bool noContext = false;
  bool followLinksOut = false;
  bool json = false;
  bool jsonLines = false;
  bool exitStatus = false;
  bool toStdout = false;
  bool dryRun = false;
};

// The document name that stands for standard input.
constexpr const char* kStandardInput = "-";

// The operation a command line asks for.
enum class Operation { kRead, kWrite, kMeta, kList };

// A number option's value, or `fallback` when it was left out.
std::int16_t numberOr(const std::optional<int>& value, int fallback);
// A text option's value, or `fallback` when it was left out.
std::string orDefault(const std::optional<std::string>& value, const char* fallback);
// The new content of a write: --new-content, or the bytes of
// --new-content-file (`in` for -). Nothing, having said why on `err`, when
// the file cannot be read or is no plain file.
std::optional<std::string> readNewContent(const CommandLine& line, std::istream& in,
                                          std::ostream& err);

}  // namespace tagwright

#endif  // TAGWRIGHT_APP_COMMAND_LINE_H_
