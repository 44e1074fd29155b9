#include "locate/element_types.h"

#include "locate/matchers/match_processing_instruction.h"

namespace tagwright {

ElementType elementTypeFor(TextView ElementName) {
  // The order of the table is the order of the tests.
  if (ElementName == U"#element") return {U"<", nullptr};
  if (ElementName == U"#dtd") return {U"<!doctype ", nullptr};
  if (ElementName == U"#comment") return {U"<!", nullptr};
  if (ElementName == U"#pi") return {U"<?", matchProcessingInstruction};
  if (ElementName == U"#aspcode") return {U"<%", matchServerCode};
  return {U"<" + Text(ElementName), nullptr};
}

}  // namespace tagwright
