// The administrator's settings: readSetting on the settings file, the
// constructor's use of each setting, each flag acting on its own operations,
// and a chunk length that changes results only where the rules depend on the
// chunk.
#include <gtest/gtest.h>

#include "support/requests.h"

namespace tagwright {
namespace {

// The settings file read line by line (readSetting), and the chunk length
// the constructor takes from it.
TEST(TagwrightSettings, BufferLength) {
  const std::string b = "BufferLengthCharacters=";
  // The settings file and the chunk length taken; 0 where the construction
  // fails.
  const std::tuple<std::optional<std::string>, std::int32_t> cases[] = {
      {std::nullopt, 2048},
      {b, 2048},
      {b + "256", 2048},
      {b + "257", 257},
      {b + "65534", 65534},
      {b + "65535", 2048},
      {b + "-4096", 2048},
      {b + "lots", 2048},
      {b + " 4096 \r\n", 4096},
      {b + "256.6", 257},
      {b + "2147483647", 2048},
      {b + "2147483648", 0},
      {b + "-2147483649", 0},
      {"bufferlengthcharacters=300\n" + b + "400", 400},
      {b + "300\n#" + b + "400\nBufferLengthCharacters =500\n", 300},
      {b + std::string(1018, ' ') + "4096\n", 4096},
      {b + std::string(1019, ' ') + "4096\n", 2048},
  };
  for (const auto& [file, want] : cases) {
    SCOPED_TRACE(file.value_or("(none)").substr(0, 40));
    FakePlatform platform;
    platform.settings = file;
    try {
      Tagwright instance(platform);
      EXPECT_EQ(TagwrightTestAccess::bufferLength(instance), want);
    } catch (const std::runtime_error& error) {
      EXPECT_EQ(want, 0);
      EXPECT_NE(std::string(error.what()).find("BufferLengthCharacters"), std::string::npos);
    }
  }
}

// Which operations the settings refuse, by the letters of read, meta, list
// and write ("-" where served), on a physical path and then a virtual one.
std::string refusals(const std::string& settings) {
  FakePlatform platform;
  platform.settings = settings;
  platform.files["/site/doc.htm"] = "<meta name=\"a\" content=\"b\"><%c%>\r\n";
  Tagwright instance(platform);
  instance.OnStartPage(mappedContext(underSite));
  const std::string denied =
      "ERROR: The use of physical file paths is denied by the administrator.";
  std::string out;
  for (const char* folder : {"C:\\site", "/"}) {
    const std::string document = folder + std::string(*folder == '/' ? "" : "\\") + "doc.htm";
    int matches = 0;
    std::string texts[4];
    texts[0] =
        instance.readXPointer(document, "#aspcode", "*", "*", 1, 0, "", "", "", "", &matches);
    texts[1] = instance.readMetaContent(document, "*", 1, 0, "=", ";", &matches);
    texts[2] = instance.fileListing(folder, "*.*", ";", &matches);
    instance.writeXPointer("d", document, "#aspcode", "*", "*", 1, 1, "", "", "", &texts[3]);
    for (int i = 0; i < 4; ++i) out += texts[i] == denied ? "rmlw"[i] : '-';
  }
  return out;
}

TEST(TagwrightSettings, EachFlagActsOnItsOwnOperations) {
  const std::tuple<std::string, const char*> cases[] = {
      {"", "--------"},
      {"AllowVirtualDocReadOnly=1\n", "rm------"},
      {"# for writing\nAllowVirtualDocWriteOnly=1\n", "---w----"},
      {"allowvirtualfilelistonly=1\r\n", "--l-----"},
  };
  for (const auto& [settings, want] : cases) {
    SCOPED_TRACE(settings);
    EXPECT_EQ(refusals(settings), want);
  }
  for (const char* flag :
       {"AllowVirtualDocReadOnly", "AllowVirtualDocWriteOnly", "AllowVirtualFileListOnly"}) {
    for (const char* text : {"0", "", "1 ", " 1", "01"}) {
      SCOPED_TRACE(std::string(flag) + "=[" + text + "]");
      EXPECT_EQ(refusals(std::string(flag) + "=" + text + "\n"), "--------");
    }
  }
}

// Runs the request with the chunk length of the settings; an element of
// "meta" reads the meta tags instead.
Outcome readWithChunkLength(const std::string& document, const Request& r, int chunkLength) {
  FakePlatform platform;
  platform.settings = "BufferLengthCharacters=" + std::to_string(chunkLength) + "\n";
  platform.files["/doc.htm"] = document;
  return r.element == "meta" ? read(platform, MetaRequest{.equals = "="}, 0) : read(platform, r, 0);
}

TEST(TagwrightSettings, ChunkLengthChangesOnlyWhatDependsOnTheChunk) {
  // About 9000 characters of short lines, instances on one line and over
  // two: at 257 many lie across chunk borders, at 30000 none do.
  std::string lines;
  for (int i = 1; i <= 300; ++i) {
    const std::string n = std::to_string(i);
    lines += i % 7 ? "<?pi" + n + "?> line " + n + " <%c" + n + "%>\r\n"
                   : "text <%first" + n + "\r\nsecond" + n + "%> more\r\n";
  }
  for (const Request& r : {Request{}, Request{.element = "#pi", .contentType = "outerMarkup"},
                           Request{.start = 40, .count = 90}}) {
    SCOPED_TRACE(r.element);
    Outcome small = readWithChunkLength(lines, r, 257);
    EXPECT_EQ(small, readWithChunkLength(lines, r, 30000));
    EXPECT_GE(small.matches, 90);
  }
  // 40 lines of 1000 characters, line `marked` beginning with "<%x%>". At
  // 30000 the first chunk takes 30 lines and five more: line 35 begins at
  // 34069. At 257 a chunk is six lines.
  auto longLines = [](int marked) {
    std::string document;
    for (int i = 1; i <= 40; ++i) {
      document += (i == marked ? "<%x%>" + std::string(995, 'a') : std::string(1000, 'a')) + "\r\n";
    }
    return document;
  };
  // Five short lines behind a long one end the chunk at 257.
  const std::string head = std::string(300, 'a') + "\r\nb\r\nb\r\nb\r\nb\r\n";
  const std::tuple<const char*, std::string, Request, std::string, int, std::string, int> cases[] =
      {
          {"MarkerBeyond32767OfOneChunk", longLines(35), Request{}, "x", 1, "ERROR: Overflow.", -1},
          {"BigChunkWithMarkerNearItsStart", longLines(2), Request{}, "x", 1, "x", 1},
          {"TagEndInTheNextChunk", head + "<p class=\"x\"\r\n>text</p>", Request{.element = "p"},
           "", 0, "text", 1},
          {"DoctypeWithoutTagEndInItsChunk", "x public " + head + "<!doctype html\r\n>",
           Request{.element = "#dtd"}, "doctype html\r\n", 1, "", 0},
          {"DoctypeBracketInTheNextChunk",
           head + "<!DOCTYPE n SYSTEM \"n\"\r\n[<!ENTITY a \"b\">]>", Request{.element = "#dtd"},
           "DOCTYPE n SYSTEM \"n\"\r\n[<!ENTITY a \"b\"", 1,
           "DOCTYPE n SYSTEM \"n\"\r\n[<!ENTITY a \"b\">", 1},
          {"MetaTagCutByTheChunkEnd", head + "<meta name=\"a\" content=\"1\r\n2\">",
           Request{.element = "meta"}, "", 0, "a=1\r\n2", 1},
      };
  for (const auto& [name, document, request, text257, matches257, text30000, matches30000] :
       cases) {
    SCOPED_TRACE(name);
    EXPECT_EQ(readWithChunkLength(document, request, 257), (Outcome{text257, matches257}));
    EXPECT_EQ(readWithChunkLength(document, request, 30000), (Outcome{text30000, matches30000}));
  }
}

}  // namespace
}  // namespace tagwright
