#include "tagwright/tagwright.h"

namespace tagwright {

// Placeholder until the meta tag reader lands.
std::string Tagwright::readMetaContent(const std::string&, const std::string&, std::int16_t,
                                       std::int16_t, const std::string&, const std::string&,
                                       int* MatchesFound) {
  if (MatchesFound != nullptr) *MatchesFound = -1;
  return "ERROR: Unexpected error in readMetaContent.";
}

}  // namespace tagwright
