#ifndef TAGWRIGHT_LOCATE_MATCHERS_ATTRIBUTES_MATCH_H_
#define TAGWRIGHT_LOCATE_MATCHERS_ATTRIBUTES_MATCH_H_

#include <vector>

#include "locate/query.h"
#include "platform/text.h"

namespace tagwright {

// Tests the attribute text of a start tag (the lower-cased tag behind its
// element name, through its ">") against AttributeName and AttributeValue,
// "*" meaning any. False for an empty text, also when both are "*"; true for
// any other text when both are "*", which leaves it untouched. Otherwise
// prepares `attributeText` in place (everything through its first blank
// goes, then every other blank) and looks for `name=` when only the name is
// given, or for `="value"` or `='value'`, behind the name when one is given.
// A value is compared whole, quotes included, so an unquoted value never
// passes; a name is a substring test, so `ref` passes for `href="x"`.
//   text = U" href = \"x.htm\">";  attributesMatch(U"href", U"x.htm", text) == true
//   and text is now U"href=\"x.htm\">".
bool attributesMatch(TextView AttributeName, TextView AttributeValue, Text& attributeText);

// The same test on a view of the tag, as the matchers have it: the attribute
// text is copied only when there is a test to prepare it for.
bool attributesMatch(const Query& query, TextView attributeText);

// The texts of which a prepared attribute text that passes holds one, as
// above: `name=`, or `name="value"` and `name='value'` with the name left out
// when it is "*". Empty when both are "*", where no text need be looked for.
std::vector<Text> attributePatterns(const Query& query);

}  // namespace tagwright

#endif  // TAGWRIGHT_LOCATE_MATCHERS_ATTRIBUTES_MATCH_H_
