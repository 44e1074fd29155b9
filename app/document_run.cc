#include "document_run.h"

#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <ostream>

#include "unified_diff.h"

namespace tagwright {
namespace {

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

// A document name without leading "/", for the diff's a/NAME and b/NAME.
std::string diffName(const std::string& document) {
  const std::size_t first = document.find_first_not_of('/');
  return first == std::string::npos ? document : document.substr(first);
}

void printPartsAsFound(Tagwright& instance, const OutputForm& form, std::ostream& out) {
  instance.observeParts(
      [&out, &form](const FoundPart& part) { out << partJsonLine(part, form) << "\n"; });
}

void keepAnswer(const DocumentRun& run, int count, const std::string& text) {
  if (run.answer != nullptr) *run.answer = {count, text};
}

// Runs one write of the command line on `instance`. With --stdout or
// --dry-run `capture` holds the new document instead of the disk.
int runWrite(Tagwright& instance, const CommandLine& line, const std::string& document,
             const DocumentRun& run, std::istream& in, std::ostream& out, std::ostream& err) {
  const CapturingPlatform* capture = run.capture;
  const OutputForm& form = run.form;
  std::optional<std::string> readContent;
  if (run.newContent == nullptr && !(readContent = readNewContent(line, in, err))) return 2;
  const std::string* newContent = run.newContent != nullptr ? run.newContent : &*readContent;
  std::string errorResult;
  if (line.jsonLines) printPartsAsFound(instance, form, out);
  // A dry run takes its turn too, so that its diff starts from the document
  // that it rewrote; --stdout reads the document once and needs none.
  std::unique_ptr<FileLock> lock =
      line.toStdout || run.locked ? nullptr : instance.lockForRewrite(document);
  int count = instance.writeXPointer(
      *newContent, document, orDefault(line.elementName, "#element"),
      orDefault(line.attributeName, "*"), orDefault(line.attributeValue, "*"),
      numberOr(line.startInstance, 1), numberOr(line.countInstances, 1),
      orDefault(line.contentType, "innermarkup"), orDefault(line.spanFunction, ""),
      orDefault(line.separator, ""), &errorResult);
  keepAnswer(run, count, errorResult);
  explainRefusal(errorResult, document, run.context, instance, err);
  if (line.target != kStandardInput) hintAtLineEnds(errorResult, instance, document, err);
  if (capture != nullptr && count != -1 && capture->keepingFailed()) {
    keepAnswer(run, -1, "the new document could not be kept aside; nothing was changed");
    err << "tagwright: cannot keep the new document in " << capture->captured().path()
        << "; nothing was changed\n";
    return 2;
  }
  if (line.toStdout) {
    return printNewDocument(count, errorResult, capture->captured(), form, out, err);
  }
  if (line.dryRun) {
    // A batch names the failures and counts the matches itself.
    if (form.document == nullptr) {
      err << (count == -1 ? errorResult + "\n" : "") << "matches: " << count << "\n";
    }
    if (count == -1) return 2;
    return printUnifiedDiff(instance.hostPathOf(document), capture->captured().path(),
                            diffName(document), out, err);
  }
  return printWriteAnswer(count, errorResult, form, out, err);
}

}  // namespace

int runOnDocument(Tagwright& instance, const CommandLine& line, Operation operation,
                  const std::string& document, const DocumentRun& run, std::istream& in,
                  std::ostream& out, std::ostream& err) {
  if (operation == Operation::kWrite) return runWrite(instance, line, document, run, in, out, err);
  int matches = 0;
  std::string result;
  if (operation == Operation::kList) {
    result = instance.fileListing(document, orDefault(line.pattern, "*.*"),
                                  orDefault(line.separator, ""), &matches);
    keepAnswer(run, matches, result);
    return printTextAnswer(result, matches, run.form, out, err);
  }
  if (operation == Operation::kRead) {
    if (line.jsonLines) printPartsAsFound(instance, run.form, out);
    result = instance.readXPointer(
        document, orDefault(line.elementName, "#element"), orDefault(line.attributeName, "*"),
        orDefault(line.attributeValue, "*"), numberOr(line.startInstance, 1),
        numberOr(line.countInstances, 0), orDefault(line.contentType, "innerMarkup"),
        orDefault(line.spanFunction, ""), orDefault(line.stringFunction, ""),
        orDefault(line.separator, ""), &matches);
  } else {
    result = instance.readMetaContent(
        document, orDefault(line.metaName, "*"), numberOr(line.startInstance, 1),
        numberOr(line.countInstances, 0), orDefault(line.equals, "$eq$"),
        orDefault(line.separator, ""), &matches);
  }
  keepAnswer(run, matches, result);
  explainRefusal(result, document, run.context, instance, err);
  if (line.target != kStandardInput) hintAtLineEnds(result, instance, document, err);
  return printTextAnswer(result, matches, run.form, out, err);
}

}  // namespace tagwright
