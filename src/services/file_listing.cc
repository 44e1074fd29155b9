#include "shell/validate_parameters.h"
#include "tagwright/tagwright.h"

namespace tagwright {
namespace {

constexpr TextView kEveryFile = U"*.*";
constexpr TextView kDefaultSeparator = U"<BR>\r\n";

// The listing's own failures; the numbers mean nothing outside this file.
std::string messageFor(int number) {
  switch (number) {
    case 60000:
      return "A physical or virtual path for the files to be listed must be provided.";
    case 60001:
      return "The virtual path provided does not map to a physical path on the server.";
    case 60002:
      return "Virtual file paths can only be used when running in ASP.";
    case 60003:
      return "The use of physical file paths is denied by the administrator.";
    default:
      return "Unexpected error in fileListing.";
  }
}

bool namesFolder(TextView pattern) {
  return pattern.find_first_of(U"/\\") != TextView::npos || pattern.find(U"..") != TextView::npos;
}

}  // namespace

std::string Tagwright::fileListing(const std::string& FileListRoot,
                                   const std::string& FileSpecification,
                                   const std::string& ListSeparator, int* MatchesFound) {
  int matches = -1;
  std::string result;
  try {
    // None of the parameters is trimmed: blanks at their ends are part of
    // the folder, the pattern and the separator.
    const Text root = fromUtf8(FileListRoot);
    const Text fileSpecification =
        FileSpecification.empty() ? Text(kEveryFile) : fromUtf8(FileSpecification);
    const Text separator =
        ListSeparator.empty() ? Text(kDefaultSeparator) : fromUtf8(ListSeparator);
    Text list;
    Int16 count = 0;

    if (root.empty()) throw Failure::numbered(60000);
    // The kind of path is read from FileListRoot, never from the mapped
    // folder: a virtual path is not refused for mapping to a physical one.
    Text folder;
    if (isPhysicalPath(root)) {
      if (!allowPhysicalFileList) throw Failure::numbered(60003);
      folder = root;
    } else {
      if (!ScriptingContext_) throw Failure::numbered(60002);
      folder = fromUtf8(ScriptingContext_->Server().MapPath(FileListRoot));
    }
    if (folder.empty()) throw Failure::numbered(60001);
    if (folder.back() != U'\\') folder.push_back(U'\\');
    // A pattern with a folder of its own names a path by itself, which an
    // administrator who refuses physical paths has refused too.
    if (!allowPhysicalFileList && namesFolder(fileSpecification)) throw Failure::numbered(60003);

    for (const Text& name : platform_.listMatchingFiles(folder + fileSpecification)) {
      // Whatever the pattern says, a name that begins with "." stays hidden.
      if (name.starts_with(U'.')) continue;
      list.append(name).append(separator);
      count += 1;
    }
    matches = count.value();
    // The last cut: one character, whatever the separator's length, so the
    // default separator leaves "<BR>" and the CR behind the last name.
    if (!list.empty()) list.pop_back();
    result = toUtf8(list);
  } catch (const Failure& failure) {
    matches = -1;
    result = "ERROR: " + (failure.kind() == Failure::Kind::kNumbered
                              ? messageFor(failure.number())
                              : std::string(failure.description()) + ".");
  } catch (const std::exception& failure) {
    // A page host may raise its own failure in MapPath; its text is the
    // description.
    matches = -1;
    result = "ERROR: " + std::string(failure.what()) + ".";
  } catch (...) {
    matches = -1;
    result = "ERROR: " + messageFor(0);
  }
  if (MatchesFound != nullptr) *MatchesFound = matches;
  return result;
}

}  // namespace tagwright
