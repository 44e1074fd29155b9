// The constructor's use of the settings: which texts change the chunk length
// and the three flags, what fails the construction, and that each flag acts
// on its own operation and a larger chunk length on chunking alone.
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "support/fake_platform.h"
#include "support/tagwright_test_access.h"
#include "tagwright/tagwright.h"

namespace tagwright {
namespace {

const std::string kDenied = "ERROR: The use of physical file paths is denied by the administrator.";

struct LengthCase {
  const char* name;
  std::optional<std::string> store;
  std::int32_t want;
};

TEST(TagwrightSettings, BufferLength) {
  const LengthCase cases[] = {
      {"NoSettings", std::nullopt, 2048},
      {"Empty", "BufferLengthCharacters=\n", 2048},
      {"256IsBelowTheRange", "BufferLengthCharacters=256\n", 2048},
      {"257IsTaken", "BufferLengthCharacters=257\n", 257},
      {"65534IsTaken", "BufferLengthCharacters=65534\n", 65534},
      {"65535IsAboveTheRange", "BufferLengthCharacters=65535\n", 2048},
      {"Zero", "BufferLengthCharacters=0\n", 2048},
      {"Negative", "BufferLengthCharacters=-4096\n", 2048},
      {"Letters", "BufferLengthCharacters=lots\n", 2048},
      {"Hexadecimal", "BufferLengthCharacters=0x1000\n", 2048},
      {"BlanksAroundANumber", "BufferLengthCharacters= 4096 \n", 4096},
      {"NameInLowerCase", "bufferlengthcharacters=4096\n", 4096},
      {"HalfRoundsToEvenBelowRange", "BufferLengthCharacters=256.5\n", 2048},
      {"FractionRoundsUpIntoRange", "BufferLengthCharacters=256.6\n", 257},
      {"HalfRoundsToEvenInsideRange", "BufferLengthCharacters=65534.5\n", 65534},
      {"Int32MaxFitsButIsOutOfRange", "BufferLengthCharacters=2147483647\n", 2048},
      {"Int32MinFitsButIsOutOfRange", "BufferLengthCharacters=-2147483648\n", 2048},
  };
  for (const LengthCase& c : cases) {
    SCOPED_TRACE(c.name);
    FakePlatform platform;
    platform.settings = c.store;
    Tagwright instance(platform);
    EXPECT_EQ(TagwrightTestAccess::bufferLength(instance), c.want);
  }
}

TEST(TagwrightSettings, NumberBeyond32BitsFailsTheConstruction) {
  for (const char* text : {"2147483648", "-2147483649", "2147483647.5", "99999999999999"}) {
    SCOPED_TRACE(text);
    FakePlatform platform;
    platform.settings = std::string("BufferLengthCharacters=") + text + "\n";
    try {
      Tagwright instance(platform);
      ADD_FAILURE() << "constructed";
    } catch (const std::runtime_error& error) {
      EXPECT_NE(std::string(error.what()).find("BufferLengthCharacters"), std::string::npos);
    }
  }
}

struct Flags {
  bool read;
  bool write;
  bool list;
};

struct FlagCase {
  const char* name;
  std::optional<std::string> store;
  Flags want;
};

TEST(TagwrightSettings, Flags) {
  const FlagCase cases[] = {
      {"NoSettings", std::nullopt, {true, true, true}},
      {"ReadOnly", "AllowVirtualDocReadOnly=1\n", {false, true, true}},
      {"WriteOnly", "AllowVirtualDocWriteOnly=1\n", {true, false, true}},
      {"ListOnly", "AllowVirtualFileListOnly=1\n", {true, true, false}},
      {"All",
       "AllowVirtualDocReadOnly=1\nAllowVirtualDocWriteOnly=1\nAllowVirtualFileListOnly=1\n",
       {false, false, false}},
      {"NameInOtherCase", "ALLOWVIRTUALDOCWRITEONLY=1\r\n", {true, false, true}},
  };
  for (const FlagCase& c : cases) {
    SCOPED_TRACE(c.name);
    FakePlatform platform;
    platform.settings = c.store;
    Tagwright instance(platform);
    EXPECT_EQ(TagwrightTestAccess::allowPhysicalDocRead(instance), c.want.read);
    EXPECT_EQ(TagwrightTestAccess::allowPhysicalDocWrite(instance), c.want.write);
    EXPECT_EQ(TagwrightTestAccess::allowPhysicalFileList(instance), c.want.list);
    EXPECT_EQ(TagwrightTestAccess::bufferLength(instance), 2048);
  }
}

TEST(TagwrightSettings, OnlyExactlyOneChangesAFlag) {
  for (const char* name :
       {"AllowVirtualDocReadOnly", "AllowVirtualDocWriteOnly", "AllowVirtualFileListOnly"}) {
    for (const char* text : {"0", "", "1 ", " 1", "01", "1.0", "+1", "true", "yes"}) {
      SCOPED_TRACE(std::string(name) + "=[" + text + "]");
      FakePlatform platform;
      platform.settings = std::string(name) + "=" + text + "\n";
      Tagwright instance(platform);
      EXPECT_TRUE(TagwrightTestAccess::allowPhysicalDocRead(instance));
      EXPECT_TRUE(TagwrightTestAccess::allowPhysicalDocWrite(instance));
      EXPECT_TRUE(TagwrightTestAccess::allowPhysicalFileList(instance));
    }
  }
}

// Maps every virtual path onto the one test document.
class DocumentContext : public ScriptingContext, public PageServer {
 public:
  PageServer& Server() override { return *this; }
  std::string MapPath(const std::string&) override { return "C:\\doc.htm"; }
};

struct Outcome {
  std::string readPhysical;
  int readMatches = 0;
  std::string readVirtual;
  std::string writePhysical;
  int writeCount = 0;
};

Outcome runOperations(const std::string& store) {
  FakePlatform platform;
  platform.settings = store;
  platform.files["/doc.htm"] = "<%a%>\r\n";
  Tagwright instance(platform);
  instance.OnStartPage(std::make_shared<DocumentContext>());
  Outcome outcome;
  outcome.readPhysical = instance.readXPointer("C:\\doc.htm", "#aspcode", "*", "*", 1, 0,
                                               "innerMarkup", "", "", ";", &outcome.readMatches);
  outcome.readVirtual = instance.readXPointer("doc.htm", "#aspcode");
  outcome.writeCount = instance.writeXPointer("b", "C:\\doc.htm", "#aspcode", "*", "*", 1, 1,
                                              "innermarkup", "", ";", &outcome.writePhysical);
  return outcome;
}

TEST(TagwrightSettings, EachFlagActsOnItsOwnOperation) {
  Outcome readOnly = runOperations("AllowVirtualDocReadOnly=1\n");
  EXPECT_EQ(readOnly.readPhysical, kDenied);
  EXPECT_EQ(readOnly.readMatches, -1);
  EXPECT_EQ(readOnly.readVirtual, "a");
  EXPECT_NE(readOnly.writePhysical, kDenied);

  Outcome writeOnly = runOperations("AllowVirtualDocWriteOnly=1\n");
  EXPECT_EQ(writeOnly.readPhysical, "a");
  EXPECT_EQ(writeOnly.readMatches, 1);
  EXPECT_EQ(writeOnly.writePhysical, kDenied);
  EXPECT_EQ(writeOnly.writeCount, -1);

  Outcome listOnly = runOperations("AllowVirtualFileListOnly=1\n");
  EXPECT_EQ(listOnly.readPhysical, "a");
  EXPECT_NE(listOnly.writePhysical, kDenied);
}

}  // namespace
}  // namespace tagwright
