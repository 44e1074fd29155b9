#include "locate/transforms/strip_markup.h"

namespace tagwright {

// Placeholder until the inner-text extraction lands.
Text stripMarkup(TextView text) { return Text(text); }

}  // namespace tagwright
