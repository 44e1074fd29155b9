#include "document_output.h"

#include <nlohmann/json.hpp>
#include <ostream>

#include "json_answer.h"

namespace tagwright {
namespace {

nlohmann::ordered_json positionJson(const TextPosition& position) {
  nlohmann::ordered_json object;
  object["byte"] = position.byte;
  object["line"] = position.line;
  object["column"] = position.column;
  return object;
}

// The bare result, ended for the eye on a terminal only, so that what a
// pipe receives is the result exactly.
void printBare(const std::string& text, const OutputForm& form, std::ostream& out) {
  out << text;
  if (form.terminal && !text.empty() && text.back() != '\n') out << '\n';
}

}  // namespace

int exitStatusOf(int matches, const OutputForm& form) {
  if (matches == -1) return 1;
  return form.exitStatus && matches == 0 ? 1 : 0;
}

namespace {

// One answer in the form asked for; `json` makes its JSON object, and only
// when that form is asked for, since a result may be as long as a document.
// The JSON object of an answer in a batch: "document" first, then the
// members of the object a single call prints.
std::string withDocument(const std::string& document, const std::string& object) {
  const std::string name = nlohmann::json(Tagwright::replaceRawBytes(document)).dump();
  return "{\"document\":" + name + (object.size() > 2 ? "," : "") + object.substr(1);
}

template <typename Json>
int printAnswer(const std::string& text, int count, Json json, const OutputForm& form,
                std::ostream& out, std::ostream& err) {
  if (form.document != nullptr) {
    // The batch names failures and counts the matches itself.
    if (form.json) {
      out << withDocument(*form.document, json()) << "\n";
    } else if (!form.jsonLines && count != 0) {
      out << *form.document << ":" << text << "\n";
    }
    return exitStatusOf(count, form);
  }
  if (form.jsonLines) {
    if (count == -1) err << text << "\n";
    err << "matches: " << count << "\n";
  } else if (form.json) {
    out << json() << "\n";
  } else {
    printBare(text, form, out);
    err << "matches: " << count << "\n";
  }
  out.flush();
  return exitStatusOf(count, form);
}

}  // namespace

int printTextAnswer(const std::string& result, int matches, const OutputForm& form,
                    std::ostream& out, std::ostream& err) {
  return printAnswer(
      result, matches, [&] { return textAnswerJson(result, matches); }, form, out, err);
}

int printWriteAnswer(int count, const std::string& errorResult, const OutputForm& form,
                     std::ostream& out, std::ostream& err) {
  return printAnswer(
      errorResult, count, [&] { return writeAnswerJson(count, errorResult); }, form, out, err);
}

int printNewDocument(int count, const std::string& errorResult, const TemporaryFile& newDocument,
                     const OutputForm& form, std::ostream& out, std::ostream& err) {
  if (count == -1) {
    err << errorResult << "\n";
  } else if (!newDocument.copyTo(out)) {
    err << "tagwright: cannot read back the new document from " << newDocument.path() << "\n";
    return 2;
  } else {
    out.flush();
  }
  err << "matches: " << count << "\n";
  return exitStatusOf(count, form);
}

std::string partJsonLine(const FoundPart& part, const OutputForm& form) {
  nlohmann::ordered_json object;
  if (form.document != nullptr) object["document"] = Tagwright::replaceRawBytes(*form.document);
  object["text"] = Tagwright::replaceRawBytes(part.text);
  object["start"] = positionJson(part.start);
  object["end"] = positionJson(part.end);
  return object.dump();
}

}  // namespace tagwright
