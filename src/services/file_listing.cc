#include "tagwright/tagwright.h"

namespace tagwright {

// Placeholder until the file listing lands.
std::string Tagwright::fileListing(const std::string&, const std::string&, const std::string&,
                                   int* MatchesFound) {
  if (MatchesFound != nullptr) *MatchesFound = -1;
  return "ERROR: Unexpected error in fileListing.";
}

}  // namespace tagwright
