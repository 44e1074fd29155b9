#include "locate/matchers/match_doctype.h"

namespace tagwright {

bool matchDoctype(const Query& query, const ChunkView& chunk, Int16& contentStart,
                  Text& closeMarker) {
  const Int16 declarationStart = contentStart;
  const Int16 bracket = chunk.search(U"[", declarationStart);
  const Int16 declarationEnd = chunk.search(U">", declarationStart);
  bool isInstance = true;
  if (bracket > 0 && declarationEnd > 0 && bracket < declarationEnd) {
    closeMarker = U"]>";
  } else {
    closeMarker = U">";
    if (declarationEnd > 0) {
      const TextView declaration =
          mid(chunk.lower, declarationStart, declarationEnd - declarationStart);
      isInstance = searchFrom(declaration, U" public ", 1) > 0 ||
                   searchFrom(declaration, U" system ", 1) > 0;
    } else {
      // Without a ">" the declaration runs on past the chunk; the whole chunk
      // then stands for it, also what lies ahead of the "<".
      isInstance = chunk.search(U" public ", 1) > 0 || chunk.search(U" system ", 1) > 0;
    }
  }
  if (!isOuterMarkup(query)) contentStart += 2;
  return isInstance;
}

}  // namespace tagwright
