#ifndef TAGWRIGHT_TESTS_REWRITE_WRITE_REQUEST_H_
#define TAGWRIGHT_TESTS_REWRITE_WRITE_REQUEST_H_

#include <cstdint>
#include <string>
#include <vector>

#include "support/fake_platform.h"
#include "support/tagwright_test_access.h"
#include "tagwright/tagwright.h"

namespace tagwright {

// The document of the rewrite tests on the fake platform, and the files
// beside it with the fake's clock (Nov 19 00:43:51) and random value 0.4375.
inline constexpr const char* kDocumentName = "C:\\web\\page.htm";
inline constexpr const char* kDocument = "/web/page.htm";
inline constexpr const char* kBackup = "/web/page.bak";
inline constexpr const char* kTemp = "/web/~11190043514375.tmp";

// A writeXPointer request; "#aspcode" with the operation's other defaults.
struct WriteRequest {
  std::string newContent = "NEW";
  std::string element = "#aspcode";
  std::string attributeName = "*";
  std::string attributeValue = "*";
  std::int16_t start = 1;
  std::int16_t count = 1;
  std::string contentType = "innermarkup";
  std::string spanFunction;
  std::string separator;
};

struct WriteOutcome {
  int result = 0;
  std::string errorResult;
};

// Runs `request` on the document `documentName` of `platform`, read in
// chunks of `bufferLength` characters.
inline WriteOutcome writeDocument(FakePlatform& platform, const WriteRequest& request,
                                  std::int32_t bufferLength = 2048,
                                  const std::string& documentName = kDocumentName) {
  Tagwright instance(platform);
  TagwrightTestAccess::setBufferLength(instance, bufferLength);
  WriteOutcome outcome;
  outcome.result = instance.writeXPointer(
      request.newContent, documentName, request.element, request.attributeName,
      request.attributeValue, request.start, request.count, request.contentType,
      request.spanFunction, request.separator, &outcome.errorResult);
  return outcome;
}

// The paths of the fake's files whose name begins with "~" and ends in ".tmp".
inline std::vector<std::string> tempFiles(const FakePlatform& platform) {
  std::vector<std::string> found;
  for (const auto& [path, bytes] : platform.files) {
    std::size_t slash = path.rfind('/');
    std::string name = path.substr(slash + 1);
    if (name.starts_with("~") && name.ends_with(".tmp")) found.push_back(path);
  }
  return found;
}

}  // namespace tagwright

#endif  // TAGWRIGHT_TESTS_REWRITE_WRITE_REQUEST_H_
