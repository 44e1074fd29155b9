#include "locate/transforms/apply_span_function.h"

namespace tagwright {

// Placeholder until the span function lands: no spans.
Text applySpanFunction(Int16&, TextView, TextView foundText, TextView, TextView,
                       Text& replacementText, bool, TextView) {
  replacementText = foundText;
  return {};
}

}  // namespace tagwright
