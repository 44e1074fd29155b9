// Plain types of the public interface that every layer of the component may
// use: they depend on nothing.
#ifndef TAGWRIGHT_PLAIN_TYPES_H_
#define TAGWRIGHT_PLAIN_TYPES_H_

#include <cstdint>
#include <string>

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

// Where a located part begins or ends in its document: the byte offset from
// 0, the line and the column from 1. Columns count characters; lines end as
// the instance's LineEnds mode says (in kCrLf a lone CR counts as CR LF).
struct TextPosition {
  std::uint64_t byte = 0;
  std::uint64_t line = 1;
  std::uint64_t column = 1;
};

// One part that readXPointer returns (or writeXPointer replaces): its text as
// it stands in the result, and the stretch of the document it was made from,
// `start` at its first character and `end` behind its last. For inner and
// outer markup the document's bytes from start.byte up to end.byte are the
// text; for inner text and the functions they are what the text was made
// from.
struct FoundPart {
  std::string text;
  TextPosition start;
  TextPosition end;
};

}  // namespace tagwright

#endif  // TAGWRIGHT_PLAIN_TYPES_H_
