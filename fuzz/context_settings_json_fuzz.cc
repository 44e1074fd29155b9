// The settings file, the page context's path mapping and the JSON writer.
#include <nlohmann/json.hpp>
#include <sstream>
#include <stdexcept>
#include <vector>

#include "fuzz_input.h"
#include "host.h"
#include "platform/failure.h"
#include "platform/host_path.h"
#include "platform/well_formed_utf8.h"
#include "shell/settings/read_setting.h"
#include "support/fake_platform.h"
#include "tagwright/site_context.h"
#include "tagwright/tagwright.h"

namespace {

// The segments of a host path, with "." and ".." resolved by their names.
std::vector<std::string> segmentsOf(const std::string& path) {
  std::vector<std::string> segments;
  std::size_t from = 0;
  for (std::size_t end = 0; end != std::string::npos; from = end + 1) {
    end = path.find('/', from);
    const std::string segment = path.substr(from, end - from);
    if (segment.empty() || segment == ".") continue;
    if (segment != "..") {
      segments.push_back(segment);
    } else if (!segments.empty()) {
      segments.pop_back();
    }
  }
  return segments;
}

void checkSettings(const std::string& settingsFile) {
  using namespace tagwright;
  FakePlatform platform;
  platform.settings = settingsFile;
  for (const char32_t* name : {U"BufferLengthCharacters", U"AllowVirtualDocReadOnly",
                               U"AllowVirtualDocWriteOnly", U"AllowVirtualFileListOnly"}) {
    FUZZ_CHECK(readSetting(platform, name).size() < 1023);
  }
  try {
    Tagwright instance(platform);
  } catch (const std::runtime_error& error) {
    FUZZ_CHECK(std::string(error.what()).starts_with("BufferLengthCharacters: "));
  }
}

void checkMapping(const std::string& root, const std::string& workingFolder,
                  const std::string& path) {
  using namespace tagwright;
  SiteContext context("/" + root, "/" + workingFolder);
  std::string mapped;
  try {
    mapped = context.Server().MapPath(path);
  } catch (const Failure& failure) {
    FUZZ_CHECK(failure.kind() == Failure::Kind::kOutsideSiteRoot);
    return;
  }
  // What the platform opens for the mapped path lies inside the root, both
  // read as the platform reads a path.
  const std::vector<std::string> rootSegments = segmentsOf(hostPath(fromUtf8("\\" + root)));
  const std::vector<std::string> served = segmentsOf(hostPath(fromUtf8(mapped)));
  FUZZ_CHECK(served.size() >= rootSegments.size());
  FUZZ_CHECK(std::equal(rootSegments.begin(), rootSegments.end(), served.begin()));
  for (const std::string& segment : served) FUZZ_CHECK(segment != "." && segment != "..");
}

// The host's JSON output of a read: well-formed, and its result has as many
// characters as the component's result.
void checkJson(const std::string& element, const std::string& separator,
               const std::string& document) {
  using namespace tagwright;
  FakePlatform platform;
  platform.files["/doc.htm"] = document;
  std::istringstream in;
  std::ostringstream out, err;
  const int status = runHost(
      {"read", "C:\\doc.htm", "--json", "--element-name=" + element, "--separator=" + separator},
      in, out, err, &platform);
  FUZZ_CHECK(status == 0 || status == 1);
  const auto json = nlohmann::json::parse(out.str());
  const std::string result = json.at("result").get<std::string>();
  Tagwright instance(platform);
  const std::string direct = instance.readXPointer("C:\\doc.htm", element, "*", "*", 1, 0,
                                                   "innerMarkup", "", "", separator);
  FUZZ_CHECK(decodedLength(result) == decodedLength(direct));
  FUZZ_CHECK(Tagwright::replaceRawBytes(direct) == result);

  const std::string replaced = Tagwright::replaceRawBytes(document);
  std::size_t characters = 0;
  FUZZ_CHECK(countWellFormed(replaced, characters));
  FUZZ_CHECK(characters == decodedLength(document));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  tagwright::FuzzInput input(data, size);
  const std::string settingsFile = input.text();
  const std::string root = input.text(), workingFolder = input.text(), path = input.text();
  const std::string element = input.text(), separator = input.text(), document = input.rest();
  checkSettings(settingsFile);
  checkMapping(root, workingFolder, path);
  checkJson(element, separator, document);
  return 0;
}
