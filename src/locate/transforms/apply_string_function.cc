#include "locate/transforms/apply_string_function.h"

namespace tagwright {

// Placeholder until the string function lands.
Text applyStringFunction(TextView, TextView) {
  return U"ERROR: Unexpected error while executing String function.";
}

}  // namespace tagwright
