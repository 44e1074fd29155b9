#include "locate/matchers/match_doctype.h"

namespace tagwright {

bool matchDoctype(const Query& query, TextView chunkLower, Int16& contentStart, Text& closeMarker) {
  const Int16 declarationStart = contentStart;
  const Int16 bracket = searchFrom(chunkLower, U"[", declarationStart);
  const Int16 declarationEnd = searchFrom(chunkLower, U">", declarationStart);
  bool isInstance = true;
  if (bracket > 0 && declarationEnd > 0 && bracket < declarationEnd) {
    closeMarker = U"]>";
  } else {
    closeMarker = U">";
    // Without a ">" the declaration runs on past the chunk; the whole chunk
    // then stands for it, also what lies ahead of the "<".
    const TextView declaration =
        declarationEnd > 0 ? mid(chunkLower, declarationStart, declarationEnd - declarationStart)
                           : chunkLower;
    isInstance =
        searchFrom(declaration, U" public ", 1) > 0 || searchFrom(declaration, U" system ", 1) > 0;
  }
  if (!isOuterMarkup(query)) contentStart += 2;
  return isInstance;
}

}  // namespace tagwright
