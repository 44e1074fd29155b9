#include "locate/transforms/strip_markup.h"

#include <cstring>

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

// The bytes of `text` as cleanedText leaves its characters, into `out`.
void cleanBytes(std::string_view text, std::string& out) {
  auto isTrimmed = [](char c) { return c == ' ' || c == '\r'; };
  std::size_t first = 0;
  std::size_t end = text.size();
  while (first < end && isTrimmed(text[first])) ++first;
  while (end > first && isTrimmed(text[end - 1])) --end;
  out.resize(end - first);
  char* to = out.data();
  for (char c : text.substr(first, end - first)) {
    *to = c;
    to += c != '\r' && c != '\n' && c != '\t';
  }
  out.resize(static_cast<std::size_t>(to - out.data()));
}

std::string_view trimBytes(std::string_view text) {
  const std::size_t first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(' ') + 1 - first);
}

void addPiece(std::string_view piece, std::string& result) {
  const std::string_view kept = trimBytes(piece);
  if (kept.empty()) return;
  result.append(kept);
  result.push_back(' ');
}

void keepTrimmed(std::string& result) {
  const std::string_view kept = trimBytes(result);
  if (kept.size() == result.size()) return;
  const std::size_t first = static_cast<std::size_t>(kept.data() - result.data());
  result.erase(0, first).resize(kept.size());
}

// The rule in one pass, for a text whose first "<" has a ">" behind it:
// line ends and tabs skipped, each piece written without its leading blanks
// and cut back to its last non-blank at the next tag, one blank between
// pieces. Throws Failure(kInvalidArgument) for a later "<" with no ">".
void stripInOnePass(std::string_view text, std::string& out) {
  out.resize(text.size());  // a piece's blank takes the place of the "<" behind it
  char* const begin = out.data();
  char* to = begin;
  char* piece = begin;
  const char* at = text.data();
  const char* const end = at + text.size();
  while (at < end) {
    const char c = *at++;
    switch (c) {
      case '\r':
      case '\n':
      case '\t':
        break;
      case ' ':
        if (to != piece) *to++ = ' ';
        break;
      case '<': {
        while (to != piece && to[-1] == ' ') --to;
        if (to != piece) *to++ = ' ';
        piece = to;
        const void* tagEnd = std::memchr(at, '>', static_cast<std::size_t>(end - at));
        if (tagEnd == nullptr) throw Failure::invalidArgument();
        at = static_cast<const char*>(tagEnd) + 1;
        break;
      }
      default:
        *to++ = c;
    }
  }
  while (to != begin && to[-1] == ' ') --to;
  out.resize(static_cast<std::size_t>(to - begin));
}

}  // namespace

bool stripMarkupBytes(std::string_view text, std::string& cleaned, std::string& out) {
  // A position counts characters, and no character is shorter than a byte.
  constexpr std::size_t kLongestSafe = 32767;
  if (text.size() <= kLongestSafe) {
    const std::size_t first = text.find('<');
    if (first != std::string_view::npos && text.find('>', first) != std::string_view::npos) {
      stripInOnePass(text, out);
      return true;
    }
  }
  cleanBytes(text, cleaned);
  if (cleaned.size() > kLongestSafe) return false;
  const std::string_view c = cleaned;
  out.clear();
  std::size_t tagStart = c.find('<');
  if (tagStart == std::string_view::npos) {
    out.assign(c);
    return true;
  }
  if (tagStart > 0) addPiece(c.substr(0, tagStart), out);
  std::size_t tagEnd = c.find('>', tagStart);
  if (tagEnd == std::string_view::npos) {
    if (!out.empty()) out.pop_back();
    out.append(c.substr(tagStart));
    keepTrimmed(out);
    return true;
  }
  for (tagStart = c.find('<', tagEnd); tagStart != std::string_view::npos;
       tagStart = c.find('<', tagEnd)) {
    addPiece(c.substr(tagEnd + 1, tagStart - tagEnd - 1), out);
    tagEnd = c.find('>', tagStart);
    if (tagEnd == std::string_view::npos) throw Failure::invalidArgument();
  }
  if (tagEnd + 1 < c.size()) addPiece(c.substr(tagEnd + 1), out);
  keepTrimmed(out);
  return true;
}

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
