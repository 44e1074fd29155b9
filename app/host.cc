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
#include "capturing_platform.h"
#include "command_line.h"
#include "document_output.h"
#include "document_run.h"
#include "manual.h"
#include "platform/platform.h"
#include "refusal_cause.h"
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
    "A write waits for any other write of the same document to finish.\n"
    "Exit status: 0 success, 1 a failure the component reported (or, with -e, nothing\n"
    "found; with --dry-run, a diff that is not empty), 2 a command line that cannot be\n"
    "run (or a failed --dry-run).";

void addText(CLI::App* command, const std::string& name, std::optional<std::string>& value,
             const std::string& help) {
  command->add_option(name, value, help);
}

void addCommon(CLI::App* command, CommandLine& line) {
  command->add_option("--root", line.root, "site root of the page context")->capture_default_str();
  command->add_flag("--no-context", line.noContext,
                    "run without a page context: virtual paths are refused");
  command->add_flag("--json", line.json, "print one JSON object instead of the bare text");
  command->add_flag("-e,--exit-status", line.exitStatus,
                    "exit 1 when nothing was found (0 matches), as grep does");
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
  command->add_option(
      "DOCUMENT", line.documents,
      "the documents: physical or virtual paths, or - for standard input; several make a batch");
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

// Several documents: each by an instance of its own, run and printed by the
// code that runs a single call of this command line, in the batch's form.
int runBatchCommand(const CommandLine& line, Operation operation, Tagwright& mapper,
                    const std::function<void(Tagwright&)>& configure, const ContextSetting& context,
                    Platform& platform, std::istream& in, std::ostream& out, std::ostream& err) {
  std::optional<std::string> newContent;
  if (operation == Operation::kWrite && !(newContent = readNewContent(line, in, err))) return 2;
  BatchRequest request;
  std::optional<std::vector<std::string>> documents =
      listDocuments(line.sources, mapper, in, err, request.earlierFailures);
  if (!documents) return 2;
  request.documents = std::move(*documents);
  request.mapper = &mapper;
  // A dry run takes each document's lock by itself, as a single one does.
  request.rewrite = operation == Operation::kWrite && !line.dryRun;
  request.jobs =
      line.jobs.value_or(static_cast<int>(std::max(1u, std::thread::hardware_concurrency())));
  request.progress = line.progress || ::isatty(2) == 1;
  request.operation = [&, operation](Platform& each, const std::string& document) {
    std::optional<CapturingPlatform> capture;
    if (line.dryRun) capture.emplace(each);
    Tagwright instance(capture ? *capture : each);
    configure(instance);
    BatchAnswer answer;
    DocumentRun run{
        context,
        capture ? &*capture : nullptr,
        OutputForm{.json = line.json, .jsonLines = line.jsonLines, .document = &document},
        newContent ? &*newContent : nullptr,
        request.rewrite,
        &answer.answer};
    std::ostringstream printed, notes;
    runOnDocument(instance, line, operation, document, run, in, printed, notes);
    answer.printed = std::move(printed).str();
    answer.notes = std::move(notes).str();
    return answer;
  };
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

void addJsonLines(CLI::App* command, CommandLine& line) {
  command->add_flag("--json-lines", line.jsonLines,
                    "print one JSON object per part, as found: its text and where it starts and "
                    "ends in the document ({\"byte\", \"line\", \"column\"}: byte from 0, line "
                    "and column from 1, columns in characters)");
}

// Options of `write` beyond replacing the document.
void addWriteForms(CLI::App* write, CommandLine& line) {
  auto* toStdout = write->add_flag(
      "--stdout", line.toStdout,
      "write the new document to standard output and leave the file as it is; DOCUMENT may be "
      "- (standard input)");
  auto* dryRun = write->add_flag(
      "--dry-run", line.dryRun,
      "change nothing; print the unified diff (diff -u, names a/DOCUMENT and b/DOCUMENT) from "
      "the document to what the write would make, and exit 1 when they differ, 0 when not, 2 on "
      "a failure; with several documents, a diff for each and the exit status of a batch");
  toStdout->excludes(dryRun);
}

// The checks of the new options that CLI11 cannot express.
void checkOutputForms(const CommandLine& line, CLI::App* read, CLI::App* write, CLI::App* list) {
  const bool batch = !list->parsed() && isBatch(line);
  if (batch) {
    const bool single = line.exitStatus || line.toStdout ||
                        std::find(line.documents.begin(), line.documents.end(), kStandardInput) !=
                            line.documents.end();
    if (single) throw CLI::ValidationError("-e, --stdout and - take one document");
  }
  const bool fromStandardInput = !list->parsed() && !batch && line.target == kStandardInput;
  if (line.jsonLines && !read->parsed() && !write->parsed())
    throw CLI::ValidationError("--json-lines", "only read and write print one object per part");
  if (line.jsonLines && line.json)
    throw CLI::ValidationError("--json-lines", "choose --json or --json-lines");
  if (!write->parsed()) return;
  if ((line.toStdout || line.dryRun) && (line.json || line.jsonLines))
    throw CLI::ValidationError("--json", "--stdout and --dry-run print no JSON");
  if (fromStandardInput && !line.toStdout)
    throw CLI::ValidationError("DOCUMENT", "standard input (-) is written with --stdout only");
  if (fromStandardInput && line.newContentFile == std::optional<std::string>(kStandardInput))
    throw CLI::ValidationError("--new-content-file", "standard input holds the document");
}

// The name the component is given for the document "-": one that every
// page context maps, to a file that is never opened on disk.
std::string standardInputName(const CommandLine& line) { return line.noContext ? "\\-" : "/-"; }

// The host path that `name` maps to, as the platform will be asked to open
// it, or empty when the context refuses it (the operation then says so).
std::string mappedPath(const std::string& name, const ContextSetting& context) {
  if (!context.present) return name;
  try {
    Tagwright probe(Tagwright::systemPlatform());
    // Links are not what is asked here, only the name the path maps to.
    probe.OnStartPage(std::make_shared<SiteContext>(context.root, context.workingFolder, true));
    return probe.hostPathOf(name);
  } catch (const std::exception&) {
    return {};  // settings that the instance proper will report
  }
}

}  // namespace

int runHost(const std::vector<std::string>& arguments, std::istream& in, std::ostream& out,
            std::ostream& err, Platform* platform, bool outputIsTerminal) {
  CommandLine line;
  CLI::App app{"tagwright: locate and rewrite parts of HTML, XML and server pages", "tagwright"};
  app.footer(kSettingsHelp);
  app.require_subcommand(1);
  app.set_version_flag("--version", "tagwright " TAGWRIGHT_VERSION);
  bool manPageWanted = false, completionWanted = false;
  app.add_flag("--help-man", manPageWanted, "print the manual page")->group("");
  app.add_flag("--completion-bash", completionWanted, "print the bash completion")->group("");

  CLI::App* read = app.add_subcommand("read", "print the parts of a document that a query locates");
  addDocuments(read, line);
  addLocate(read, line, "0");
  addText(read, "--string-function", line.stringFunction,
          "occurrence,search,offset,length: a piece of each part's plain text (default none)");
  addJsonLines(read, line);
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
  addWriteForms(write, line);
  addJsonLines(write, line);
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
    // The build makes the manual page and the completion from these.
    if (arguments.size() == 1 &&
        (arguments[0] == "--help-man" || arguments[0] == "--completion-bash")) {
      out << (arguments[0] == "--help-man" ? manPage(app) : bashCompletion(app));
      return 0;
    }
    app.parse(reversed);
    if (write->parsed() && !line.newContent && !line.newContentFile) {
      throw CLI::RequiredError("--new-content or --new-content-file");
    }
    if (line.root.empty()) throw CLI::ValidationError("--root", "the site root must not be empty");
    if (read->parsed() || write->parsed() || meta->parsed()) checkDocuments(line);
    checkOutputForms(line, read, write, list);
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
  if (serve->parsed()) return runServe(serveOptions, arguments, err);

  ContextSetting setting;
  setting.present = !line.noContext;
  setting.root = line.root;
  std::error_code gone;  // a working folder that was removed: no path needs it yet
  setting.workingFolder = std::filesystem::current_path(gone).string();

  const bool batch = !list->parsed() && isBatch(line);
  const bool fromStandardInput = !list->parsed() && !batch && line.target == kStandardInput;
  const std::string document = fromStandardInput ? standardInputName(line) : line.target;
  std::unique_ptr<Platform> streaming;
  if (fromStandardInput && platform == nullptr) {
    streaming = Tagwright::streamingPlatform(mappedPath(document, setting), STDIN_FILENO);
  }
  Platform& base = streaming             ? *streaming
                   : platform != nullptr ? *platform
                                         : Tagwright::systemPlatform();
  std::optional<CapturingPlatform> capture;
  // A batch gives each document a capture of its own.
  if (!batch && (line.toStdout || line.dryRun)) capture.emplace(base);

  std::unique_ptr<Tagwright> instance;
  try {
    instance = std::make_unique<Tagwright>(capture ? *capture : base);
  } catch (const std::exception& error) {
    err << "tagwright: cannot start: " << error.what() << "\n";
    return 1;
  }
  setting.followLinksOut = line.followLinksOut || instance->followsLinksOut();
  std::shared_ptr<ScriptingContext> context;
  if (setting.present) {
    context =
        std::make_shared<SiteContext>(setting.root, setting.workingFolder, setting.followLinksOut);
  }
  // The page context is only read once made, so the instances of a batch share it.
  auto configure = [&line, context](Tagwright& each) {
    if (context) each.OnStartPage(context);
    if (line.lineEnds) each.setLineEnds(*line.lineEnds == "any" ? LineEnds::kAny : LineEnds::kCrLf);
  };
  configure(*instance);
  const Operation operation = read->parsed()   ? Operation::kRead
                              : meta->parsed() ? Operation::kMeta
                              : list->parsed() ? Operation::kList
                                               : Operation::kWrite;
  if (batch) {
    return runBatchCommand(line, operation, *instance, configure, setting, base, in, out, err);
  }

  DocumentRun run{setting,
                  capture ? &*capture : nullptr,
                  {line.json, line.jsonLines, line.exitStatus, outputIsTerminal}};
  return runOnDocument(*instance, line, operation, document, run, in, out, err);
}

}  // namespace tagwright
