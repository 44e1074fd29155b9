// The byte-level fast paths against the plain character path on the same
// input: the UTF-8 check and character count, the marker search, the
// decoding, and the chunk filter that passes over chunks on their bytes.
#include <optional>
#include <vector>

#include "files/read_next_chunk.h"
#include "fuzz_input.h"
#include "locate/chunk_filter.h"
#include "locate/element_types.h"
#include "locate/query.h"
#include "platform/failure.h"
#include "platform/well_formed_utf8.h"
#include "shell/validate_parameters.h"
#include "support/fake_platform.h"

namespace {

using namespace tagwright;

void checkText(std::string_view bytes) {
  const Text decoded = fromUtf8(bytes);
  FUZZ_CHECK(toUtf8(decoded) == bytes);
  FUZZ_CHECK(decodedLength(bytes) == decoded.size());
  bool hasRawByte = false;
  for (char32_t c : decoded) hasRawByte |= c >= kRawByteBase;
  std::size_t vectorCount = 0, portableCount = 0;
  const bool vectorWellFormed = countWellFormed(bytes, vectorCount);
  FUZZ_CHECK(vectorWellFormed == countWellFormedPortable(bytes, portableCount));
  FUZZ_CHECK(vectorWellFormed == !hasRawByte);
  if (vectorWellFormed) FUZZ_CHECK(vectorCount == decoded.size() && portableCount == vectorCount);

  Text lowered, loweredAlone;
  std::vector<std::uint32_t> offsets;
  decodeLoweredInto(bytes, lowered, offsets);
  decodeLoweredInto(bytes, loweredAlone);
  FUZZ_CHECK(lowered == lower(decoded) && loweredAlone == lowered);
  FUZZ_CHECK(offsets.size() == decoded.size() + 1 && offsets.back() == bytes.size());
  for (std::size_t i = 0; i < decoded.size(); ++i) {
    FUZZ_CHECK(toUtf8(TextView(decoded).substr(i, 1)).size() == offsets[i + 1] - offsets[i]);
  }
}

// findLowered against a search in the lowered characters.
void checkSearch(std::string_view bytes, const std::string& marker, std::size_t fromIndex) {
  Text what = lower(fromUtf8(marker));
  if (what.empty() || what[0] >= 0x80 || (what[0] >= U'a' && what[0] <= U'z')) {
    what.insert(what.begin(), U'<');
  }
  Text lowered;
  std::vector<std::uint32_t> offsets;
  decodeLoweredInto(bytes, lowered, offsets);
  const std::size_t from = fromIndex % (lowered.size() + 1);
  const std::size_t at = lowered.find(what, from);
  const std::size_t expected = at == Text::npos ? std::string_view::npos : offsets[at];
  FUZZ_CHECK(findLowered(bytes, what, offsets[from]) == expected);
}

// A chunk that the filter passes over holds no instance and no failure for
// the scan: every candidate, judged as the scan judges it, is refused.
void checkFilter(const std::string& element, const std::string& attributeName,
                 const std::string& attributeValue, std::int16_t bufferLength,
                 const std::string& document) {
  FakePlatform platform;
  platform.files["/doc.htm"] = document;
  Query query{.DocumentName = U"C:\\doc.htm",
              .ElementName = fromUtf8(element),
              .AttributeName = fromUtf8(attributeName),
              .AttributeValue = fromUtf8(attributeValue),
              .StartInstance = 1,
              .CountInstances = 0,
              .ContentType = U"innerMarkup",
              .SpanFunction = U"",
              .StringFunction = U""};
  Text separator;
  Int16 fileNumber;
  if (!validateParameters({platform, nullptr, true}, query, separator, fileNumber).empty()) return;
  const ElementType type = elementTypeFor(query.ElementName);
  ChunkFilter filter(query, type);
  Chunk chunk;
  Text lowered, closeMarker;
  for (readNextChunk(platform, fileNumber, bufferLength, LineEnds::kCrLf, chunk); !chunk.empty();
       readNextChunk(platform, fileNumber, bufferLength, LineEnds::kCrLf, chunk)) {
    if (filter.mayHoldInstance(chunk)) continue;
    decodeLoweredInto(chunk.bytes, lowered);
    try {
      // The scan's own loop: a refused candidate may move the position on.
      for (Int16 at = searchFrom(lowered, type.openMarker, 1); at > 0;
           at = searchFrom(lowered, type.openMarker, at + 2)) {
        FUZZ_CHECK(type.matcher == nullptr ||
                   !type.matcher(query, ChunkView(lowered), at, closeMarker));
      }
    } catch (const Failure&) {
      fuzzFailure("a chunk passed over fails in the scan", __FILE__, __LINE__);
    }
  }
  platform.closeFile(fileNumber);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzInput input(data, size);
  const std::int16_t bufferLength = input.number(64);
  const std::string element = input.text(), attributeName = input.text(),
                    attributeValue = input.text(), marker = input.text();
  const auto from = static_cast<std::uint16_t>(input.number(0));
  const std::string document = input.rest();
  checkText(document);
  checkSearch(document, marker, from);
  checkFilter(element, attributeName, attributeValue, bufferLength >= 1 ? bufferLength : 64,
              document);
  return 0;
}
