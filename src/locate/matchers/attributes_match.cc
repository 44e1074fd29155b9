#include "locate/matchers/attributes_match.h"

namespace tagwright {
namespace {

bool isAny(TextView parameter) { return parameter == U"*"; }

// Drops the blank behind the element name and everything before it, then
// the blanks around "=" and inside values alike.
void prepareAttributeText(Text& attributeText) {
  const Int16 firstBlank = searchFrom(attributeText, U" ", 1);
  if (firstBlank > 0) attributeText.erase(0, firstBlank.index() + 1);
  std::erase(attributeText, kBlank);
}

bool contains(TextView text, TextView what) { return searchFrom(text, what, 1) > 0; }

// `name="value"` or `name='value'`; the name is empty for a value alone.
bool containsQuotedValue(TextView text, TextView name, TextView value) {
  for (char32_t quote : {U'"', U'\''}) {
    Text form(name);
    form.push_back(U'=');
    form.push_back(quote);
    form.append(value);
    form.push_back(quote);
    if (contains(text, form)) return true;
  }
  return false;
}

}  // namespace

bool attributesMatch(TextView AttributeName, TextView AttributeValue, Text& attributeText) {
  if (attributeText.empty()) return false;
  if (isAny(AttributeName) && isAny(AttributeValue)) return true;
  prepareAttributeText(attributeText);
  if (isAny(AttributeValue)) return contains(attributeText, Text(AttributeName) + U"=");
  return containsQuotedValue(attributeText, isAny(AttributeName) ? TextView() : AttributeName,
                             AttributeValue);
}

bool attributesMatch(const Query& query, TextView attributeText) {
  if (attributeText.empty()) return false;
  if (isAny(query.AttributeName) && isAny(query.AttributeValue)) return true;
  Text prepared(attributeText);
  return attributesMatch(query.AttributeName, query.AttributeValue, prepared);
}

}  // namespace tagwright
