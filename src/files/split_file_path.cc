#include "files/split_file_path.h"

namespace tagwright {
namespace {

// The position of the last `c` in `text`, or 0.
Int16 lastPositionOf(TextView text, char32_t c) {
  std::size_t at = text.rfind(c);
  return at == TextView::npos ? Int16(0) : Int16::fromSize(at + 1);
}

// True when `position` lies before the last character of `text`. Lengths are
// not positions: a long path with its dot early on is no overflow.
bool beforeEnd(Int16 position, TextView text) {
  return static_cast<std::size_t>(position.value()) < text.size();
}

}  // namespace

Text splitFilePath(TextView path, Text& baseName, Text& extensionPart) {
  baseName.clear();
  extensionPart.clear();
  Text folderPart;

  Int16 dot = lastPositionOf(path, U'.');
  if (dot >= 1 && beforeEnd(dot, path)) extensionPart = mid(path, dot + 1);
  // A dot in first place belongs to the name: ".cfg" keeps it.
  baseName = dot > 1 ? left(path, dot - 1) : path;

  Int16 slash = lastPositionOf(baseName, U'\\');
  if (slash > 1) folderPart = left(baseName, slash);
  if (slash >= 1 && beforeEnd(slash, baseName)) baseName = Text(mid(baseName, slash + 1));
  return folderPart;
}

}  // namespace tagwright
