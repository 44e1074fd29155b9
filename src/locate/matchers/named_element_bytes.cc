#include "locate/matchers/named_element_bytes.h"

#include <cstring>

#include "locate/matchers/attributes_match.h"
#include "locate/matchers/matcher.h"
#include "platform/utf8.h"

namespace tagwright {
namespace {

bool isAscii(std::string_view bytes) {
  unsigned char any = 0;
  for (char c : bytes) any |= static_cast<unsigned char>(c);
  return any < 0x80;
}

// "İ" and the Kelvin sign, the characters beyond ASCII whose lower case is
// ASCII ("i" and "k").
bool holdsAsciiLowerCase(std::string_view bytes) {
  return bytes.find("\xC4\xB0") != std::string_view::npos ||
         bytes.find("\xE2\x84\xAA") != std::string_view::npos;
}

}  // namespace

std::size_t charactersFrom(std::string_view bytes, std::size_t at, std::size_t count) {
  for (; count > 0 && at < bytes.size(); --count) {
    if (static_cast<unsigned char>(bytes[at]) < 0x80) {
      ++at;
    } else {
      char32_t ignored;
      at += decodeCharacter(bytes, at, ignored);
    }
  }
  return at + count;
}

NamedElementOnBytes::NamedElementOnBytes(const Query& query)
    : query_(query), nameLength_(query.ElementName.size()), outerMarkup_(isOuterMarkup(query)) {
  for (const Text& pattern : attributePatterns(query)) {
    patterns_.push_back(toUtf8(pattern));
    patternsAscii_ = patternsAscii_ && isAscii(patterns_.back());
  }
}

bool NamedElementOnBytes::serves(const Query& query) {
  if (query.ElementName.empty() || query.ElementName[0] == U'#') return false;
  for (char32_t c : query.ElementName) {
    if (c <= U' ' || c >= 0x7F || c == U'>') return false;
  }
  return true;
}

bool NamedElementOnBytes::match(std::string_view bytes, std::size_t tagStart,
                                std::size_t& contentStart, std::size_t& tagEnd, bool& selfClosing) {
  // The name found may hold a character beyond ASCII that lower-cases to
  // one of its letters. A chunk ends in CR LF, so a byte follows the name.
  const std::size_t nameEnd = charactersFrom(bytes, tagStart + 1, nameLength_);
  const char behindName = bytes[nameEnd];
  if (behindName != '/' && behindName != '>' && behindName != ' ') return false;
  const void* end = std::memchr(bytes.data() + tagStart, '>', bytes.size() - tagStart);
  if (end == nullptr) return false;
  tagEnd = static_cast<std::size_t>(static_cast<const char*>(end) - bytes.data());
  // The tag text is its bytes from behind the "<" through the ">", and it
  // holds the name and the byte behind it, so it ends in "/>" when the byte
  // in front of the ">" is a "/".
  selfClosing = bytes[tagEnd - 1] == '/';
  if (!selfClosing && !outerMarkup_) contentStart = tagEnd + 1;
  return attributesPass(bytes.substr(nameEnd, tagEnd + 1 - nameEnd));
}

bool NamedElementOnBytes::attributesPass(std::string_view attributeText) {
  if (patterns_.empty()) return true;  // the text holds at least the ">"
  const bool ascii = isAscii(attributeText);
  if (!ascii && (!patternsAscii_ || holdsAsciiLowerCase(attributeText))) {
    decodeLoweredInto(attributeText, lowered_);
    return attributesMatch(query_, lowered_);
  }
  // Prepared as attributesMatch prepares the lower-cased characters: an
  // ASCII pattern is found in the bytes where it is found in them.
  std::size_t from = attributeText.find(' ');
  from = from == std::string_view::npos ? 0 : from + 1;
  prepared_.resize(attributeText.size() - from);
  char* to = prepared_.data();
  for (char c : attributeText.substr(from)) {
    const auto b = static_cast<unsigned char>(c);
    *to = static_cast<char>(b - unsigned{'A'} < 26u ? b + 32 : b);
    to += c != ' ';
  }
  const std::string_view text(prepared_.data(), static_cast<std::size_t>(to - prepared_.data()));
  for (const std::string& pattern : patterns_) {
    if (text.find(pattern) != std::string_view::npos) return true;
  }
  return false;
}

}  // namespace tagwright
