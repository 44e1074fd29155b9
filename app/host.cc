#include "host.h"

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <array>
#include <filesystem>
#include <functional>
#include <iostream>
#include <iterator>
#include <memory>
#include <optional>
#include <sstream>
#include <thread>

#include "batch/batch_run.h"
#include "batch/document_list.h"
#include "json_answer.h"
#include "plain_file.h"
#include "platform/platform.h"
#include "serve/serve_command.h"
#include "tagwright/site_context.h"
#include "tagwright/tagwright.h"
#include "tagwright/version.h"

namespace tagwright {
namespace {

constexpr const char* kSettingsHelp =
    "Settings are read when the program starts, from the file named by the\n"
    "environment variable TAGWRIGHT_SETTINGS, or else /etc/tagwright/settings.conf,\n"
    "as Name=text lines:\n"
    "  BufferLengthCharacters=N      chunk length threshold, 257 to 65534 (default 2048)\n"
    "  AllowVirtualDocReadOnly=1     refuse physical paths for read and meta\n"
    "  AllowVirtualDocWriteOnly=1    refuse physical paths for write\n"
    "  AllowVirtualFileListOnly=1    refuse physical paths for list\n"
    "  LineEnds=any                  a lone LF ends a line too (default crlf)\n"
    "  FollowLinksOut=1              serve links out of --root, as --follow-links-out\n"
    "A path that holds \"\\\" or \":\" is physical (C:\\web\\a.htm is /web/a.htm);\n"
    "any other is virtual: one that begins with \"/\" is taken from --root\n"
    "(default /), any other from the working folder, which must lie inside it;\n"
    "a virtual path whose target, links followed, lies outside --root is refused.\n"
    "A write waits for any other write of the same document to finish.";

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
};

void addText(CLI::App* command, const std::string& name, std::optional<std::string>& value,
             const std::string& help) {
  command->add_option(name, value, help);
}

void addCommon(CLI::App* command, CommandLine& line) {
  command->add_option("--root", line.root, "site root of the page context")->capture_default_str();
  command->add_flag("--no-context", line.noContext,
                    "run without a page context: virtual paths are refused");
  command->add_flag("--json", line.json, "print one JSON object instead of the bare text");
  command->add_flag("--follow-links-out", line.followLinksOut,
                    "serve virtual paths through links that lead out of --root");
}

void addLineEnds(CLI::App* command, CommandLine& line) {
  command
      ->add_option("--line-ends", line.lineEnds,
                   "crlf: CR and CR LF end a line, a lone LF stays in it; any: LF alone ends a "
                   "line too, and a rewrite keeps every line's own end (default: the "
                   "LineEnds setting, else crlf)")
      ->check(CLI::IsMember({"crlf", "any"}));
}

// Leads a user whose page overflowed to the mode that reads its LF line ends.
void hintAtLineEnds(const std::string& answer, const Tagwright& instance,
                    const std::string& document, std::ostream& err) {
  if (answer != "ERROR: Overflow." || instance.lineEnds() != LineEnds::kCrLf) return;
  const std::string path = instance.hostPathOf(document);
  if (path.empty()) return;  // a path the instance could not have opened either
  std::ifstream file(path, std::ios::binary);
  char block[64 * 1024];
  char previous = '\0';
  while (file.read(block, sizeof block) || file.gcount() > 0) {
    for (std::streamsize i = 0; i < file.gcount(); previous = block[i++]) {
      if (block[i] == '\n' && previous != '\r') {
        err << "tagwright: the page has LF line ends, which --line-ends=any (or LineEnds=any in "
               "the settings) reads as line ends\n";
        return;
      }
    }
  }
}

void addLocate(CLI::App* command, CommandLine& line, const char* defaultCount) {
  addText(command, "--element-name", line.elementName,
          "element name, or #element, #comment, #pi, #aspcode, #dtd (default #element)");
  addText(command, "--attribute-name", line.attributeName,
          "attribute that must be present (default *)");
  addText(command, "--attribute-value", line.attributeValue,
          "quoted value it must have (default *)");
  command->add_option("--start-instance", line.startInstance, "first instance taken (default 1)")
      ->check(CLI::Range(-32768, 32767));
  command
      ->add_option(
          "--count-instances", line.countInstances,
          std::string("instances taken; below 1 means 32000 (default ") + defaultCount + ")")
      ->check(CLI::Range(-32768, 32767));
  addText(command, "--content-type", line.contentType,
          "outerMarkup, innerMarkup or innerText (default innerMarkup)");
  addText(command, "--span-function", line.spanFunction,
          "first,second: the spans between two elements (default none)");
  addText(command, "--separator", line.separator,
          "text behind each result, trimmed (default the NUL character)");
  addLineEnds(command, line);
}

// The documents of read, write and meta: one is a single call, several (or a
// list or a walk) a batch.
void addDocuments(CLI::App* command, CommandLine& line) {
  command->add_option("DOCUMENT", line.documents,
                      "the documents: physical or virtual paths; several make a batch");
  command->add_option("--files-from", line.sources.filesFrom,
                      "also the documents named in FILE, one a line; - for stdin");
  command->add_flag("-0,--null", line.sources.nulSeparated,
                    "the names in --files-from end with NUL, as find -print0 writes them");
  command->add_option("--recursive", line.sources.recursiveFolder,
                      "also every file of FOLDER and its folders that matches --pattern, in "
                      "ascending byte order; hidden names and links to folders are passed over");
  command->add_option("--pattern", line.pattern,
                      "the file names that --recursive takes, with * ? [...] (default *)");
  command->add_option("--jobs", line.jobs, "documents handled at once (default: the cores)")
      ->check(CLI::Range(1, 1024));
  command->add_flag("--progress", line.progress,
                    "show a batch's progress and summary on stderr also when it is no terminal");
}

bool isBatch(const CommandLine& line) {
  return line.documents.size() != 1 || line.sources.filesFrom || line.sources.recursiveFolder;
}

std::int16_t numberOr(const std::optional<int>& value, int fallback) {
  return static_cast<std::int16_t>(value.value_or(fallback));
}

std::string orDefault(const std::optional<std::string>& value, const char* fallback) {
  return value ? *value : fallback;
}

int printTextResult(const std::string& result, int matches, bool json, std::ostream& out,
                    std::ostream& err) {
  if (json) {
    out << textAnswerJson(result, matches) << "\n";
  } else {
    out << result;
    err << "matches: " << matches << "\n";
  }
  out.flush();
  return matches == -1 ? 1 : 0;
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

// Several documents: each by an instance of its own, with the operation and
// parameters that a single call of this command line would use.
int runBatchCommand(const CommandLine& line, bool rewrite, bool meta, const Tagwright& mapper,
                    const std::function<void(Tagwright&)>& configure, Platform& platform,
                    std::istream& in, std::ostream& out, std::ostream& err) {
  std::optional<std::string> newContent;
  if (rewrite && !(newContent = readNewContent(line, in, err))) return 2;
  BatchRequest request;
  std::optional<std::vector<std::string>> documents =
      listDocuments(line.sources, mapper, in, err, request.earlierFailures);
  if (!documents) return 2;
  request.documents = std::move(*documents);
  request.configure = configure;
  request.rewrite = rewrite;
  request.json = line.json;
  request.jobs =
      line.jobs.value_or(static_cast<int>(std::max(1u, std::thread::hardware_concurrency())));
  request.progress = line.progress || ::isatty(2) == 1;
  if (rewrite) {
    request.operation = [&line, &newContent](Tagwright& each, const std::string& document) {
      DocumentAnswer answer;
      answer.count = each.writeXPointer(
          *newContent, document, orDefault(line.elementName, "#element"),
          orDefault(line.attributeName, "*"), orDefault(line.attributeValue, "*"),
          numberOr(line.startInstance, 1), numberOr(line.countInstances, 1),
          orDefault(line.contentType, "innermarkup"), orDefault(line.spanFunction, ""),
          orDefault(line.separator, ""), &answer.text);
      return answer;
    };
  } else if (meta) {
    request.operation = [&line](Tagwright& each, const std::string& document) {
      DocumentAnswer answer;
      answer.text = each.readMetaContent(
          document, orDefault(line.metaName, "*"), numberOr(line.startInstance, 1),
          numberOr(line.countInstances, 0), orDefault(line.equals, "$eq$"),
          orDefault(line.separator, ""), &answer.count);
      return answer;
    };
  } else {
    request.operation = [&line](Tagwright& each, const std::string& document) {
      DocumentAnswer answer;
      answer.text = each.readXPointer(
          document, orDefault(line.elementName, "#element"), orDefault(line.attributeName, "*"),
          orDefault(line.attributeValue, "*"), numberOr(line.startInstance, 1),
          numberOr(line.countInstances, 0), orDefault(line.contentType, "innerMarkup"),
          orDefault(line.spanFunction, ""), orDefault(line.stringFunction, ""),
          orDefault(line.separator, ""), &answer.count);
      return answer;
    };
  }
  return runBatch(request, platform, out, err);
}

void checkDocuments(CommandLine& line) {
  if (line.documents.empty() && !line.sources.filesFrom && !line.sources.recursiveFolder) {
    throw CLI::RequiredError("DOCUMENT (or --files-from, or --recursive)");
  }
  if (line.pattern && !line.sources.recursiveFolder) {
    throw CLI::ValidationError("--pattern",
                               "it chooses the files of --recursive, which is missing");
  }
  if (line.sources.nulSeparated && !line.sources.filesFrom) {
    throw CLI::ValidationError("-0", "it tells how --files-from ends its names, which is missing");
  }
  if (line.sources.filesFrom == "-" && line.newContentFile == "-") {
    throw CLI::ValidationError("--files-from",
                               "standard input cannot give both the names and "
                               "the new content");
  }
  if (line.sources.recursiveFolder && line.sources.recursiveFolder->empty()) {
    throw CLI::ValidationError("--recursive", "the folder must not be empty");
  }
  if (line.pattern) line.sources.pattern = *line.pattern;
  line.sources.arguments = line.documents;
  if (!isBatch(line)) line.target = line.documents.front();
}

}  // namespace

int runHost(const std::vector<std::string>& arguments, std::istream& in, std::ostream& out,
            std::ostream& err, Platform* platform) {
  CommandLine line;
  CLI::App app{"tagwright: locate and rewrite parts of HTML, XML and server pages"};
  app.footer(kSettingsHelp);
  app.require_subcommand(1);
  app.set_version_flag("--version", "tagwright " TAGWRIGHT_VERSION);

  CLI::App* read = app.add_subcommand("read", "print the parts of a document that a query locates");
  addDocuments(read, line);
  addLocate(read, line, "0");
  addText(read, "--string-function", line.stringFunction,
          "occurrence,search,offset,length: a piece of each part's plain text (default none)");
  addCommon(read, line);

  CLI::App* write = app.add_subcommand(
      "write", "replace the located parts; the former document is kept as <name>.bak");
  addDocuments(write, line);
  auto* content = write->add_option("--new-content", line.newContent, "the new content");
  auto* contentFile =
      write->add_option("--new-content-file", line.newContentFile,
                        "read the new content from a file, byte for byte; - for stdin");
  content->excludes(contentFile);
  addLocate(write, line, "1");
  addCommon(write, line);

  CLI::App* meta = app.add_subcommand("meta", "print the name and content pairs of <meta> tags");
  addDocuments(meta, line);
  addText(meta, "--meta-name", line.metaName, "names that end in this text (default *: all)");
  meta->add_option("--start-instance", line.startInstance, "first tag taken (default 1)")
      ->check(CLI::Range(-32768, 32767));
  meta->add_option("--count-instances", line.countInstances,
                   "tags taken; below 1 means 32000 (default 0)")
      ->check(CLI::Range(-32768, 32767));
  addText(meta, "--equals", line.equals, "text between name and content, trimmed (default $eq$)");
  addText(meta, "--separator", line.separator, "text behind each pair, trimmed (default NUL)");
  addLineEnds(meta, line);
  addCommon(meta, line);

  CLI::App* list = app.add_subcommand("list", "print the names of a folder's files");
  list->add_option("FOLDER", line.target, "the folder: a physical or virtual path")->required();
  addText(list, "--pattern", line.pattern, "file name pattern with * and ? (default *.*)");
  addText(list, "--separator", line.separator, "text behind each name (default <BR> CR LF)");
  addCommon(list, line);

  ServeOptions serveOptions;
  CLI::App* serve = addServeCommand(app, serveOptions);

  try {
    // "--opt=" gives the option the empty text, as "--opt ''" does.
    std::vector<std::string> reversed;
    for (auto it = arguments.rbegin(); it != arguments.rend(); ++it) {
      bool emptyValue = it->size() > 3 && it->starts_with("--") && it->back() == '=' &&
                        it->find('=') == it->size() - 1;
      if (emptyValue) {
        reversed.emplace_back();
        reversed.push_back(it->substr(0, it->size() - 1));
      } else {
        reversed.push_back(*it);
      }
    }
    app.parse(reversed);
    if (write->parsed() && !line.newContent && !line.newContentFile) {
      throw CLI::RequiredError("--new-content or --new-content-file");
    }
    if (line.root.empty()) throw CLI::ValidationError("--root", "the site root must not be empty");
    if (read->parsed() || write->parsed() || meta->parsed()) checkDocuments(line);
  } catch (const CLI::CallForHelp&) {
    out << app.help();
    return 0;
  } catch (const CLI::CallForAllHelp&) {
    out << app.help("", CLI::AppFormatMode::All);
    return 0;
  } catch (const CLI::CallForVersion& version) {
    out << version.what() << "\n";
    return 0;
  } catch (const CLI::ParseError& error) {
    const CLI::App* failed = app.get_subcommands().empty() ? &app : app.get_subcommands().front();
    err << "tagwright: " << error.what() << "\n";
    err << "Run 'tagwright " << (failed == &app ? "" : failed->get_name() + " ") << "--help'.\n";
    return 2;
  }
  if (serve->parsed()) return runServe(serveOptions, err);

  std::unique_ptr<Tagwright> instance;
  try {
    instance = platform != nullptr ? std::make_unique<Tagwright>(*platform)
                                   : std::make_unique<Tagwright>();
  } catch (const std::exception& error) {
    err << "tagwright: cannot start: " << error.what() << "\n";
    return 1;
  }
  std::shared_ptr<ScriptingContext> context;
  if (!line.noContext) {
    std::error_code gone;  // a working folder that was removed: no path needs it yet
    std::string workingFolder = std::filesystem::current_path(gone).string();
    bool followLinksOut = line.followLinksOut || instance->followsLinksOut();
    context = std::make_shared<SiteContext>(line.root, workingFolder, followLinksOut);
  }
  // The page context is only read once made, so the instances of a batch share it.
  auto configure = [&line, context](Tagwright& each) {
    if (context) each.OnStartPage(context);
    if (line.lineEnds) each.setLineEnds(*line.lineEnds == "any" ? LineEnds::kAny : LineEnds::kCrLf);
  };
  configure(*instance);
  if (!list->parsed() && isBatch(line)) {
    return runBatchCommand(line, write->parsed(), meta->parsed(), *instance, configure,
                           platform != nullptr ? *platform : systemPlatform(), in, out, err);
  }

  int matches = 0;
  if (read->parsed()) {
    std::string result = instance->readXPointer(
        line.target, orDefault(line.elementName, "#element"), orDefault(line.attributeName, "*"),
        orDefault(line.attributeValue, "*"), numberOr(line.startInstance, 1),
        numberOr(line.countInstances, 0), orDefault(line.contentType, "innerMarkup"),
        orDefault(line.spanFunction, ""), orDefault(line.stringFunction, ""),
        orDefault(line.separator, ""), &matches);
    hintAtLineEnds(result, *instance, line.target, err);
    return printTextResult(result, matches, line.json, out, err);
  }
  if (meta->parsed()) {
    std::string result = instance->readMetaContent(
        line.target, orDefault(line.metaName, "*"), numberOr(line.startInstance, 1),
        numberOr(line.countInstances, 0), orDefault(line.equals, "$eq$"),
        orDefault(line.separator, ""), &matches);
    hintAtLineEnds(result, *instance, line.target, err);
    return printTextResult(result, matches, line.json, out, err);
  }
  if (list->parsed()) {
    std::string result = instance->fileListing(line.target, orDefault(line.pattern, "*.*"),
                                               orDefault(line.separator, ""), &matches);
    return printTextResult(result, matches, line.json, out, err);
  }
  std::optional<std::string> newContent = readNewContent(line, in, err);
  if (!newContent) return 2;
  std::string errorResult;
  std::unique_ptr<FileLock> lock = instance->lockForRewrite(line.target);
  int count = instance->writeXPointer(
      *newContent, line.target, orDefault(line.elementName, "#element"),
      orDefault(line.attributeName, "*"), orDefault(line.attributeValue, "*"),
      numberOr(line.startInstance, 1), numberOr(line.countInstances, 1),
      orDefault(line.contentType, "innermarkup"), orDefault(line.spanFunction, ""),
      orDefault(line.separator, ""), &errorResult);
  hintAtLineEnds(errorResult, *instance, line.target, err);
  if (line.json) {
    out << writeAnswerJson(count, errorResult) << "\n";
  } else {
    out << errorResult;
    err << "matches: " << count << "\n";
  }
  out.flush();
  return count == -1 ? 1 : 0;
}

}  // namespace tagwright
