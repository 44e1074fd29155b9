#ifndef TAGWRIGHT_APP_BATCH_DOCUMENT_LIST_H_
#define TAGWRIGHT_APP_BATCH_DOCUMENT_LIST_H_

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

namespace tagwright {

class Tagwright;

// Where the documents of a batch are named: on the command line, in a list
// file, and by a walk of a folder, in this order.
struct DocumentSources {
  std::vector<std::string> arguments;
  std::optional<std::string> filesFrom;  // a file of names, or "-" for standard input
  bool nulSeparated = false;             // names in filesFrom end with NUL, not a line end
  std::optional<std::string> recursiveFolder;
  std::string pattern = "*";  // the names that the walk takes, as the shell matches them
};

// The documents named, each as a single call would be given it: the walk
// yields FOLDER/sub/name, with FOLDER as written. The walk finds FOLDER where
// `instance` would (through its page context), takes folders in ascending
// byte order, passes over hidden names and does not follow links to folders;
// links to files are documents. A folder inside the walk that cannot be read
// is named on `err` and counted in `unreadableFolders`. Returns nothing, having
// said why on `err`, when the list file or FOLDER cannot be read.
std::optional<std::vector<std::string>> listDocuments(const DocumentSources& sources,
                                                      const Tagwright& instance, std::istream& in,
                                                      std::ostream& err, int& unreadableFolders);

}  // namespace tagwright

#endif  // TAGWRIGHT_APP_BATCH_DOCUMENT_LIST_H_
