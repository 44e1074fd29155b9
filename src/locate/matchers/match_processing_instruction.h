#ifndef TAGWRIGHT_LOCATE_MATCHERS_MATCH_PROCESSING_INSTRUCTION_H_
#define TAGWRIGHT_LOCATE_MATCHERS_MATCH_PROCESSING_INSTRUCTION_H_

#include "locate/matchers/matcher.h"

namespace tagwright {

// Every "<?" is an instance ending in "?>"; its content starts behind the "<?".
bool matchProcessingInstruction(const Query& query, const ChunkView& chunk, Int16& contentStart,
                                Text& closeMarker);

// Every "<%" is an instance ending in "%>"; `<%=a%>` has the content `=a`.
bool matchServerCode(const Query& query, const ChunkView& chunk, Int16& contentStart,
                     Text& closeMarker);

}  // namespace tagwright

#endif  // TAGWRIGHT_LOCATE_MATCHERS_MATCH_PROCESSING_INSTRUCTION_H_
