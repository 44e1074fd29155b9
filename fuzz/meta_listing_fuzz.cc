// readMetaContent and fileListing on any document, names, patterns and
// separators.
#include <memory>

#include "fuzz_input.h"
#include "support/fake_platform.h"
#include "support/tagwright_test_access.h"
#include "tagwright/site_context.h"
#include "tagwright/tagwright.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tagwright;
  FuzzInput input(data, size);
  const std::int16_t bufferLength = input.number(2048);
  const std::string metaName = input.text();
  const std::int16_t start = input.number(1), count = input.number(0);
  const std::string equals = input.text(), separator = input.text();
  const std::string folder = input.text(), pattern = input.text(), names = input.text();
  const std::string document = input.rest();

  FakePlatform platform;
  platform.files["/doc.htm"] = document;
  std::size_t nameStart = 0;
  for (std::size_t end = names.find('\n'); nameStart <= names.size();
       end = names.find('\n', nameStart)) {
    const std::string name = names.substr(nameStart, end - nameStart);
    // A file's name is never empty, also in a folder below.
    const bool named = !name.empty() && !name.starts_with('/') && !name.ends_with('/') &&
                       name.find("//") == std::string::npos;
    if (named) platform.files["/dir/" + name] = name;
    if (end == std::string::npos) break;
    nameStart = end + 1;
  }
  const auto filesBefore = platform.files;

  Tagwright instance(platform);
  instance.OnStartPage(std::make_shared<SiteContext>("/", "/"));
  if (bufferLength >= 1) TagwrightTestAccess::setBufferLength(instance, bufferLength);
  int matches = -2;
  std::string result =
      instance.readMetaContent("C:\\doc.htm", metaName, start, count, equals, separator, &matches);
  FUZZ_CHECK(matches >= -1);
  FUZZ_CHECK(matches != -1 || result.starts_with("ERROR: "));
  FUZZ_CHECK(matches != 0 || result.empty());
  // The same document by its virtual path gives the same.
  int virtualMatches = -2;
  FUZZ_CHECK(instance.readMetaContent("/doc.htm", metaName, start, count, equals, separator,
                                      &virtualMatches) == result);
  FUZZ_CHECK(virtualMatches == matches);

  // Physical paths denied and no page context: every path is refused.
  FakePlatform denying;
  denying.files = platform.files;
  denying.settings = "AllowVirtualDocReadOnly=1\nAllowVirtualFileListOnly=1\n";
  Tagwright refusing(denying);
  int refused = 0;
  refusing.readMetaContent("C:\\doc.htm", metaName, start, count, equals, separator, &refused);
  FUZZ_CHECK(refused == -1);
  refusing.fileListing(folder, pattern, separator, &refused);
  FUZZ_CHECK(refused == -1);

  matches = -2;
  result = instance.fileListing(folder, pattern, separator, &matches);
  FUZZ_CHECK(matches >= -1);
  FUZZ_CHECK(matches != -1 || result.starts_with("ERROR: "));
  // With a separator of one byte that no file's name holds (doc.htm's
  // included), the result is the listed names, as many as counted, each of
  // them a plain file's.
  bool separatorInAName = false;
  for (const auto& [path, bytes] : platform.files) {
    separatorInAName |= separator.size() == 1 && path.find(separator[0]) != std::string::npos;
  }
  if (matches > 0 && separator.size() == 1 && static_cast<unsigned char>(separator[0]) < 0x80 &&
      !separatorInAName) {
    int listed = 0;
    std::size_t from = 0;
    for (std::size_t end = 0; end != std::string::npos; from = end + 1) {
      end = result.find(separator[0], from);
      const std::string name = result.substr(from, end - from);
      FUZZ_CHECK(!name.empty() && name[0] != '.');
      bool exists = false;
      for (const auto& [path, bytes] : platform.files) exists |= path.ends_with("/" + name);
      FUZZ_CHECK(exists);
      ++listed;
    }
    FUZZ_CHECK(listed == matches);
  }
  FUZZ_CHECK(platform.openFileCount() == 0);
  FUZZ_CHECK(platform.files == filesBefore);
  return 0;
}
