// readXPointer on any document and any parameters, chunk length included, in
// both line-end modes; the byte path of a read, and the scan that decodes a
// long chunk only as far as positions reach, must give the answer of the scan
// on all the characters of every chunk to the byte. A negative chunk length
// puts the document behind a line of 32,700 to 32,827 characters of one to
// three bytes, so that its markup lies about position 32,767 of a long chunk.
#include <string>

#include "fuzz_input.h"
#include "support/fake_platform.h"
#include "support/tagwright_test_access.h"
#include "tagwright/tagwright.h"

namespace {

std::string longLineOf(int characters) {
  static const char* const kCharacters[] = {"a", "\xC3\xA9", "\xE6\x9D\xB1", " "};
  std::string out;
  for (int k = 0; k < characters; ++k) out += kCharacters[k % 4];
  return out;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tagwright;
  FuzzInput input(data, size);
  const std::int16_t bufferLength = input.number(2048);
  const std::string element = input.text(), attributeName = input.text(),
                    attributeValue = input.text();
  const std::int16_t start = input.number(1), count = input.number(0);
  const std::string contentType = input.text(), span = input.text(), string = input.text(),
                    separator = input.text();
  std::string document = input.rest();
  if (bufferLength < 0) document = longLineOf(32700 + (-int{bufferLength}) % 128) + document;

  FakePlatform platform;
  platform.files["/doc.htm"] = document;
  for (LineEnds lineEnds : {LineEnds::kCrLf, LineEnds::kAny}) {
    Tagwright instance(platform), characters(platform);
    TagwrightTestAccess::keepToCharacters(characters);
    for (Tagwright* each : {&instance, &characters}) {
      if (bufferLength >= 1) TagwrightTestAccess::setBufferLength(*each, bufferLength);
      each->setLineEnds(lineEnds);
    }
    int matches = -2, characterMatches = -2;
    const std::string result =
        instance.readXPointer("C:\\doc.htm", element, attributeName, attributeValue, start, count,
                              contentType, span, string, separator, &matches);
    FUZZ_CHECK(characters.readXPointer("C:\\doc.htm", element, attributeName, attributeValue, start,
                                       count, contentType, span, string, separator,
                                       &characterMatches) == result);
    FUZZ_CHECK(characterMatches == matches);
    FUZZ_CHECK(matches >= -1);
    FUZZ_CHECK(matches != -1 || result.starts_with("ERROR: "));
    FUZZ_CHECK(matches != 0 || result.empty());
    FUZZ_CHECK(platform.openFileCount() == 0);
    FUZZ_CHECK(platform.files.size() == 1 && platform.files["/doc.htm"] == document);
  }
  return 0;
}
