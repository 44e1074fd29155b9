#ifndef TAGWRIGHT_APP_TEMPORARY_FILE_H_
#define TAGWRIGHT_APP_TEMPORARY_FILE_H_

#include <iosfwd>
#include <string>
#include <string_view>

namespace tagwright {

// A private file (mode 0600) in $TMPDIR, else /tmp, removed with this
// object. It holds what a host keeps aside, such as a new document that
// must not go to disk under its own name, so that memory need not.
class TemporaryFile {
 public:
  TemporaryFile();
  ~TemporaryFile();
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  // False when the file could not be made.
  bool ready() const { return fd_ >= 0; }
  // Empties the file.
  bool clear();
  // Appends `bytes`; false when that failed (errno tells why).
  bool append(std::string_view bytes);
  // Copies the whole file to `out`; false when it could not be read.
  bool copyTo(std::ostream& out) const;
  const std::string& path() const { return path_; }

 private:
  std::string path_;
  int fd_ = -1;
};

}  // namespace tagwright

#endif  // TAGWRIGHT_APP_TEMPORARY_FILE_H_
