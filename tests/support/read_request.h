#ifndef TAGWRIGHT_TESTS_SUPPORT_READ_REQUEST_H_
#define TAGWRIGHT_TESTS_SUPPORT_READ_REQUEST_H_

#include <cstdint>
#include <string>

#include "support/fake_platform.h"
#include "support/tagwright_test_access.h"
#include "tagwright/tagwright.h"

namespace tagwright {

// A readXPointer request with the operation's defaults, for table tests.
struct ReadRequest {
  std::string element = "#element";
  std::string attributeName = "*";
  std::string attributeValue = "*";
  std::int16_t start = 1;
  std::int16_t count = 0;
  std::string contentType = "innerMarkup";
  std::string spanFunction;
  std::string stringFunction;
  std::string separator = ";";
};

struct ReadOutcome {
  std::string text;
  int matches = 0;
};

// Runs `request` on a document of the given bytes at C:\doc.htm, read in
// chunks of `bufferLength` characters.
inline ReadOutcome readDocument(const std::string& document, const ReadRequest& request,
                                std::int32_t bufferLength = 2048) {
  FakePlatform platform;
  platform.files["/doc.htm"] = document;
  Tagwright instance(platform);
  TagwrightTestAccess::setBufferLength(instance, bufferLength);
  ReadOutcome outcome;
  outcome.text = instance.readXPointer("C:\\doc.htm", request.element, request.attributeName,
                                       request.attributeValue, request.start, request.count,
                                       request.contentType, request.spanFunction,
                                       request.stringFunction, request.separator, &outcome.matches);
  return outcome;
}

}  // namespace tagwright

#endif  // TAGWRIGHT_TESTS_SUPPORT_READ_REQUEST_H_
