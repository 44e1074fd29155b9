#ifndef TAGWRIGHT_APP_COMMAND_LINE_H_
#define TAGWRIGHT_APP_COMMAND_LINE_H_

#include <optional>
#include <string>

namespace tagwright {

// The values of one command line; an option left out stays empty here and
// the operation's default applies.
struct CommandLine {
  std::string target;
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

}  // namespace tagwright

#endif  // TAGWRIGHT_APP_COMMAND_LINE_H_
