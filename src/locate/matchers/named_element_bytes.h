#ifndef TAGWRIGHT_LOCATE_MATCHERS_NAMED_ELEMENT_BYTES_H_
#define TAGWRIGHT_LOCATE_MATCHERS_NAMED_ELEMENT_BYTES_H_

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "locate/query.h"
#include "platform/text.h"

namespace tagwright {

// The byte `count` characters on from the byte `at`, which begins one.
std::size_t charactersFrom(std::string_view bytes, std::size_t at, std::size_t count);

// matchNamedElement on the bytes of a chunk, for an ElementName of printable
// ASCII without ">" (see `serves`). Its tests look at ASCII characters, which
// are their own bytes, and a byte beyond ASCII never stands for one: the
// name's end, the tag's ">" and the "/>" of a self-closing tag are found at
// the same places on the bytes. Only the attribute test lower-cases: on
// bytes when that gives the same answer, else on the tag's characters.
class NamedElementOnBytes {
 public:
  explicit NamedElementOnBytes(const Query& query);

  static bool serves(const Query& query);

  // The matcher's verdict on the candidate whose "<" is the byte `tagStart`
  // of `bytes`, a chunk: on true `contentStart` is the byte where the
  // stretch starts, and `tagEnd` that of the tag's ">"; `selfClosing` says
  // whether the tag is its own close marker. `contentStart` moves as the
  // matcher's position would, also on false.
  bool match(std::string_view bytes, std::size_t tagStart, std::size_t& contentStart,
             std::size_t& tagEnd, bool& selfClosing);

 private:
  bool attributesPass(std::string_view attributeText);

  const Query& query_;
  const std::size_t nameLength_;
  const bool outerMarkup_;
  // What the attribute test looks for, as UTF-8; empty when any tag passes.
  std::vector<std::string> patterns_;
  bool patternsAscii_ = true;
  std::string prepared_;
  Text lowered_;
};

}  // namespace tagwright

#endif  // TAGWRIGHT_LOCATE_MATCHERS_NAMED_ELEMENT_BYTES_H_
