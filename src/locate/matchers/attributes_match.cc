#include "locate/matchers/attributes_match.h"

#include <array>
#include <initializer_list>

namespace tagwright {
namespace {

bool isAny(TextView parameter) { return parameter == U"*"; }

// Writes the attribute text less the blank behind the element name and
// everything before it, and less the blanks around "=" and inside values
// alike; returns its length. `out` may be the text's own storage.
std::size_t prepareAttributeText(TextView attributeText, char32_t* out) {
  std::size_t from = 0;
  const Int16 firstBlank = searchFrom(attributeText, U" ", 1);
  if (firstBlank > 0) from = firstBlank.index() + 1;
  std::size_t length = 0;
  for (std::size_t i = from; i < attributeText.size(); ++i) {
    if (attributeText[i] != kBlank) out[length++] = attributeText[i];
  }
  return length;
}

// Whether `text` holds the pieces one right behind the other, found as
// searchFrom finds their joined text; the pieces are not joined, since a
// tag is tested for each candidate of a chunk.
bool containsJoined(TextView text, std::initializer_list<TextView> pieces) {
  std::size_t total = 0;
  for (TextView piece : pieces) total += piece.size();
  if (total > text.size()) return false;
  // Most places fail on their first character, so that is looked for first.
  const char32_t* first = nullptr;
  for (TextView piece : pieces) {
    if (!piece.empty()) {
      first = piece.data();
      break;
    }
  }
  for (std::size_t at = 0; at + total <= text.size(); ++at) {
    if (first != nullptr && text[at] != *first) continue;
    std::size_t k = at;
    bool equal = true;
    for (TextView piece : pieces) {
      if (text.compare(k, piece.size(), piece) != 0) {
        equal = false;
        break;
      }
      k += piece.size();
    }
    // A hit beyond 32767 is the overflow, as for every search.
    if (equal) return Int16::fromSize(at + 1) > 0;
  }
  return false;
}

bool preparedTextMatches(TextView AttributeName, TextView AttributeValue, TextView prepared) {
  if (isAny(AttributeValue)) return containsJoined(prepared, {AttributeName, U"="});
  // `name="value"` or `name='value'`; a value alone when any name will do.
  const TextView name = isAny(AttributeName) ? TextView() : AttributeName;
  return containsJoined(prepared, {name, U"=\"", AttributeValue, U"\""}) ||
         containsJoined(prepared, {name, U"='", AttributeValue, U"'"});
}

}  // namespace

bool attributesMatch(TextView AttributeName, TextView AttributeValue, Text& attributeText) {
  if (attributeText.empty()) return false;
  if (isAny(AttributeName) && isAny(AttributeValue)) return true;
  attributeText.resize(prepareAttributeText(attributeText, attributeText.data()));
  return preparedTextMatches(AttributeName, AttributeValue, attributeText);
}

bool attributesMatch(const Query& query, TextView attributeText) {
  if (attributeText.empty()) return false;
  if (isAny(query.AttributeName) && isAny(query.AttributeValue)) return true;
  // Most tags are short: they are prepared on the stack.
  std::array<char32_t, 256> local;
  Text large;
  char32_t* out = local.data();
  if (attributeText.size() > local.size()) {
    large.resize(attributeText.size());
    out = large.data();
  }
  const std::size_t length = prepareAttributeText(attributeText, out);
  return preparedTextMatches(query.AttributeName, query.AttributeValue, TextView(out, length));
}

std::vector<Text> attributePatterns(const Query& query) {
  if (isAny(query.AttributeName) && isAny(query.AttributeValue)) return {};
  if (isAny(query.AttributeValue)) return {Text(query.AttributeName) + U"="};
  const Text name = isAny(query.AttributeName) ? Text() : Text(query.AttributeName);
  return {name + U"=\"" + Text(query.AttributeValue) + U"\"",
          name + U"='" + Text(query.AttributeValue) + U"'"};
}

}  // namespace tagwright
