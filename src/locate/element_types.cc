#include "locate/element_types.h"

#include "locate/matchers/match_any_element.h"
#include "locate/matchers/match_comment.h"
#include "locate/matchers/match_doctype.h"
#include "locate/matchers/match_named_element.h"
#include "locate/matchers/match_processing_instruction.h"

namespace tagwright {

ElementType elementTypeFor(TextView ElementName) {
  // The order of the table is the order of the tests.
  if (ElementName == U"#element") return {U"<", matchAnyElement, true};
  // The blank belongs to the marker: "<!doctype" before a TAB or a line end
  // is no candidate.
  if (ElementName == U"#dtd") return {U"<!doctype ", matchDoctype};
  if (ElementName == U"#comment") return {U"<!", matchComment};
  if (ElementName == U"#pi") return {U"<?", matchProcessingInstruction};
  if (ElementName == U"#aspcode") return {U"<%", matchServerCode};
  return {U"<" + Text(ElementName), matchNamedElement, true};
}

}  // namespace tagwright
