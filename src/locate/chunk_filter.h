#ifndef TAGWRIGHT_LOCATE_CHUNK_FILTER_H_
#define TAGWRIGHT_LOCATE_CHUNK_FILTER_H_

#include <string>
#include <string_view>
#include <vector>

#include "files/read_next_chunk.h"
#include "locate/element_types.h"
#include "locate/query.h"
#include "platform/text.h"

namespace tagwright {

// Tells, on the bytes of a chunk, the chunks that a scan would pass over:
// those in which it would find no instance and would fail nowhere. Such a
// chunk need not be decoded, and a rewrite copies it out as it came.
class ChunkFilter {
 public:
  ChunkFilter(const Query& query, const ElementType& type);

  // False only when scanning `chunk` finds no instance and cannot fail.
  bool mayHoldInstance(const Chunk& chunk);

 private:
  bool startTagIsInstance(std::string_view tag);
  bool mayPassAttributes(std::string_view tag) const;

  const Query& query_;
  const ElementType& type_;
  // What the attribute test looks for, as UTF-8; empty when it passes any
  // tag that has attributes.
  std::vector<std::string> attributePatterns_;
  Text tagLower_;
  Text closeMarker_;
};

}  // namespace tagwright

#endif  // TAGWRIGHT_LOCATE_CHUNK_FILTER_H_
