#include "locate/transforms/strip_markup.h"

#include "platform/failure.h"

namespace tagwright {
namespace {

// The text with every CR gone, then trimmed, then with every LF and TAB
// gone. Line ends and tabs are removed, not replaced by a blank; as the trim
// comes before LF and TAB go, blanks inside a leading or trailing line end
// stay.
Text cleanedText(TextView text) {
  auto isTrimmed = [](char32_t c) { return c == kBlank || c == U'\r'; };
  std::size_t first = 0;
  std::size_t end = text.size();
  while (first < end && isTrimmed(text[first])) ++first;
  while (end > first && isTrimmed(text[end - 1])) --end;
  Text cleaned;
  cleaned.reserve(end - first);
  for (char32_t c : text.substr(first, end - first)) {
    if (c != U'\r' && c != U'\n' && c != U'\t') cleaned.push_back(c);
  }
  return cleaned;
}

// Appends the trimmed piece and one blank, unless the piece is all blanks.
void addPiece(TextView piece, Text& result) {
  const TextView kept = trim(piece);
  if (kept.empty()) return;
  result.append(kept);
  result.push_back(kBlank);
}

}  // namespace

Text stripMarkup(TextView text) {
  const Text cleaned = cleanedText(text);
  Int16 tagStart = searchFrom(cleaned, U"<", 1);
  if (tagStart == 0) return cleaned;
  Text result;
  if (tagStart > 1) addPiece(left(cleaned, tagStart - 1), result);
  Int16 tagEnd = searchFrom(cleaned, U">", tagStart);
  if (tagEnd == 0) {
    // No tag at all, as in script text like `if (a<b) {x}`: the rest stands
    // as written, right behind the piece before it.
    if (!result.empty()) result.pop_back();
    result.append(mid(cleaned, tagStart));
    return Text(trim(result));
  }
  tagStart = searchFrom(cleaned, U"<", tagEnd);
  while (tagStart > 0) {
    addPiece(mid(cleaned, tagEnd + 1, tagStart - tagEnd - 1), result);
    tagEnd = searchFrom(cleaned, U">", tagStart);
    // `<a>b<c`: a "<" behind a complete tag must open one too.
    if (tagEnd == 0) throw Failure::invalidArgument();
    tagStart = searchFrom(cleaned, U"<", tagEnd);
  }
  // The piece behind the last tag is not limited to 16-bit positions.
  if (tagEnd.index() + 1 < cleaned.size()) addPiece(mid(cleaned, tagEnd + 1), result);
  return Text(trim(result));
}

}  // namespace tagwright
