#include "locate/matchers/match_processing_instruction.h"

namespace tagwright {
namespace {

bool matchTwoCharacterOpener(const Query& query, Int16& contentStart, Text& closeMarker,
                             TextView marker) {
  closeMarker = marker;
  if (!isOuterMarkup(query)) contentStart += 2;
  return true;
}

}  // namespace

bool matchProcessingInstruction(const Query& query, const ChunkView&, Int16& contentStart,
                                Text& closeMarker) {
  return matchTwoCharacterOpener(query, contentStart, closeMarker, U"?>");
}

bool matchServerCode(const Query& query, const ChunkView&, Int16& contentStart, Text& closeMarker) {
  return matchTwoCharacterOpener(query, contentStart, closeMarker, U"%>");
}

}  // namespace tagwright
