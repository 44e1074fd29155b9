#ifndef TAGWRIGHT_TESTS_SUPPORT_TAGWRIGHT_TEST_ACCESS_H_
#define TAGWRIGHT_TESTS_SUPPORT_TAGWRIGHT_TEST_ACCESS_H_

#include <cstdint>

#include "tagwright/tagwright.h"

namespace tagwright {

// The test seam into an instance's fields.
class TagwrightTestAccess {
 public:
  // Any chunk length, also below the 257 that the settings allow, so that
  // tests can make documents span many chunks with a few lines.
  static void setBufferLength(Tagwright& instance, std::int32_t length) {
    instance.bufferLength = length;
  }
  // Reads and rewrites that search and cut on all the characters of every chunk.
  static void keepToCharacters(Tagwright& instance) { instance.bytePaths = false; }
  static std::int32_t bufferLength(const Tagwright& instance) { return instance.bufferLength; }
};

}  // namespace tagwright

#endif  // TAGWRIGHT_TESTS_SUPPORT_TAGWRIGHT_TEST_ACCESS_H_
