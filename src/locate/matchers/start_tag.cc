#include "locate/matchers/start_tag.h"

#include "locate/matchers/matcher.h"

namespace tagwright {

void setStartTagStretch(const Query& query, TextView tagText, TextView elementName, Int16 tagEnd,
                        Int16& contentStart, Text& closeMarker) {
  // Only the last two characters decide: `<a href=x/>` closes itself, while
  // `<a href="x/">` and `<p / >` do not.
  if (right(tagText, 2) == U"/>") {
    closeMarker.assign(U"<").append(tagText);
    return;
  }
  closeMarker.assign(U"</").append(elementName).append(U">");
  if (!isOuterMarkup(query)) contentStart = tagEnd + 1;
}

}  // namespace tagwright
