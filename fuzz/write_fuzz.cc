// writeXPointer on any document and parameters, with any one platform call
// failing, checked against the rewrite's promises.
#include <string_view>
#include <vector>

#include "fuzz_input.h"
#include "support/fake_platform.h"
#include "support/tagwright_test_access.h"
#include "tagwright/tagwright.h"

namespace {

// The document as the chunk model writes it back: CR and CR LF end a line
// and become CR LF, a lone LF stays, and a last line gets CR LF too.
std::string withCrLf(const std::string& bytes) {
  std::string out;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (bytes[i] != '\r') {
      out += bytes[i];
      continue;
    }
    out += "\r\n";
    if (i + 1 < bytes.size() && bytes[i + 1] == '\n') ++i;
  }
  if (!bytes.empty() && bytes.back() != '\r' && !bytes.ends_with("\r\n")) out += "\r\n";
  return out;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tagwright;
  FuzzInput input(data, size);
  const std::int16_t bufferLength = input.number(2048);
  // A platform call to fail, counted from the first, as the last three
  // digits; the thousands choose the cause. 0 or less fails none.
  const std::int16_t failure = input.number(0);
  const int failingCall = failure > 0 ? failure % 1000 : 0;
  constexpr Failure::Kind kCauses[] = {
      Failure::Kind::kDiskFull,       Failure::Kind::kPermissionDenied,
      Failure::Kind::kFileNotFound,   Failure::Kind::kPathNotFound,
      Failure::Kind::kFileExists,     Failure::Kind::kDeviceIo,
      Failure::Kind::kTooManyFiles,   Failure::Kind::kFileAccess,
      Failure::Kind::kOverflow,       Failure::Kind::kInvalidArgument,
      Failure::Kind::kOutsideSiteRoot};
  const Failure::Kind cause = kCauses[failure > 0 ? failure / 1000 % 11 : 0];
  const bool hardLinks = input.number(1) != 0;
  const std::string element = input.text(), attributeName = input.text(),
                    attributeValue = input.text();
  const std::int16_t start = input.number(1), count = input.number(1);
  const std::string contentType = input.text(), span = input.text(), separator = input.text(),
                    newContent = input.text(), document = input.rest();

  const std::string kPrevious = "backup of the rewrite before";
  FakePlatform platform;
  platform.hardLinks = hardLinks;
  platform.files = {{"/doc.htm", document}, {"/doc.bak", kPrevious}};
  if (failingCall > 0) platform.failCall(failingCall, cause);
  Tagwright instance(platform);
  if (bufferLength >= 1) TagwrightTestAccess::setBufferLength(instance, bufferLength);
  std::string errorResult;
  const int matches =
      instance.writeXPointer(newContent, "C:\\doc.htm", element, attributeName, attributeValue,
                             start, count, contentType, span, separator, &errorResult);

  FUZZ_CHECK(platform.openFileCount() == 0);
  // No temporary file is left, unless the call that failed was one of its
  // deletion: asking whether it is there, or deleting it.
  const std::string failedCall =
      failingCall > 0 && static_cast<std::size_t>(failingCall) <= platform.calls.size()
          ? platform.calls[static_cast<std::size_t>(failingCall) - 1]
          : "";
  const bool deleteFailed = failedCall == "deleteFile" || failedCall == "firstMatchingFile";
  for (const auto& [path, bytes] : platform.files) {
    FUZZ_CHECK(path == "/doc.htm" || path == "/doc.bak" || deleteFailed);
  }
  const auto file = [&](const char* path) {
    return platform.files.contains(path) ? platform.files[path] : std::string("(none)");
  };
  if (matches == -1) {
    FUZZ_CHECK(errorResult.starts_with("ERROR: "));
    // The document stays, or, when the new one could not take its name
    // after the former moved aside, the former one is the backup.
    FUZZ_CHECK(file("/doc.htm") == document ||
               (!platform.files.contains("/doc.htm") && file("/doc.bak") == document));
    return 0;
  }
  FUZZ_CHECK(matches >= 0);
  FUZZ_CHECK(file("/doc.bak") == document);
  const std::string before = withCrLf(document), after = file("/doc.htm");
  if (matches == 0) {
    FUZZ_CHECK(after == before);
    return 0;
  }
  // Outside the replaced stretches nothing changes. When the new content
  // begins with a byte the document lacks, each copy of it in the new
  // document is one replacement, and the stretches between the copies are,
  // in order, pieces of the former document: its head, its tail, and
  // stretches between them.
  if (!span.empty() || newContent.empty() || before.find(newContent[0]) != std::string::npos) {
    return 0;
  }
  std::vector<std::string_view> kept;
  int replaced = 0;
  std::size_t from = 0;
  for (std::size_t at = after.find(newContent); at != std::string::npos;
       at = after.find(newContent, from)) {
    kept.push_back(std::string_view(after).substr(from, at - from));
    from = at + newContent.size();
    ++replaced;
  }
  kept.push_back(std::string_view(after).substr(from));
  FUZZ_CHECK(replaced <= matches);
  FUZZ_CHECK(std::string_view(before).starts_with(kept.front()));
  FUZZ_CHECK(std::string_view(before).ends_with(kept.back()));
  std::size_t inBefore = kept.front().size();
  for (std::size_t i = 1; i < kept.size(); ++i) {
    const std::size_t at =
        i + 1 == kept.size() ? before.size() - kept.back().size() : before.find(kept[i], inBefore);
    FUZZ_CHECK(at != std::string::npos && at >= inBefore);
    inBefore = at + kept[i].size();
  }
  return 0;
}
