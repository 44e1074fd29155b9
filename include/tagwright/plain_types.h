// Plain types of the public interface that every layer of the component may
// use: they depend on nothing.
#ifndef TAGWRIGHT_PLAIN_TYPES_H_
#define TAGWRIGHT_PLAIN_TYPES_H_

namespace tagwright {

// An advisory lock that is held until the handle is destroyed.
class FileLock {
 public:
  virtual ~FileLock() = default;
};

// What ends a line of a document. kCrLf, the default: CR or CR LF, a lone LF
// stays in its line, and a rewrite ends every line with CR LF. kAny: a lone LF
// ends a line too; matches, positions and the 16-bit limits are those of the
// document with every line end made CR LF, while results and rewrites keep
// each line's own end.
enum class LineEnds { kCrLf, kAny };

}  // namespace tagwright

#endif  // TAGWRIGHT_PLAIN_TYPES_H_
