#include "locate/matchers/match_comment.h"

namespace tagwright {
namespace {

constexpr Int16 kHeadLength = 12;
constexpr TextView kDeclarationWords[] = {U"!element", U"!doctype",  U"!attlist",
                                          U"!entity",  U"!notation", U"!["};

}  // namespace

bool matchComment(const Query& query, const ChunkView& chunk, Int16& contentStart,
                  Text& closeMarker) {
  const Int16 commentStart = contentStart;
  // Only the head is looked at: a word further on, or a word that does not
  // fit whole into the head, leaves a comment a comment.
  const TextView head = mid(chunk.lower, commentStart, kHeadLength);
  for (TextView word : kDeclarationWords) {
    if (searchFrom(head, word, 1) > 0) return false;
  }
  closeMarker = left(head, 4) == U"<!--" ? U"-->" : U">";
  if (!isOuterMarkup(query)) contentStart = commentStart + lengthOf(closeMarker) + 1;
  return true;
}

}  // namespace tagwright
