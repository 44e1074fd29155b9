// The constructor's use of the settings: which texts change the chunk length
// and the three flags, what fails the construction, and that each flag acts
// on its own operation and a larger chunk length on chunking alone.
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "support/fake_context.h"
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

struct Call {
  std::string text;
  int count = 0;
};

// Each operation on a physical and on a virtual path to one document, whose
// folder is also listed.
struct Outcome {
  Call read, readVirtual, meta, metaVirtual, list, listVirtual, write;
};

Outcome runOperations(const std::string& store) {
  FakePlatform platform;
  platform.settings = store;
  platform.files["/site/doc.htm"] = "<meta name=\"a\" content=\"b\"><%c%>\r\n";
  Tagwright instance(platform);
  instance.OnStartPage(FakeContext::underSite());
  const std::string physical = "C:\\site\\doc.htm";
  Outcome o;
  o.read.text = instance.readXPointer(physical, "#aspcode", "*", "*", 1, 0, "innerMarkup", "", "",
                                      "", &o.read.count);
  o.readVirtual.text = instance.readXPointer("/doc.htm", "#aspcode", "*", "*", 1, 0, "innerMarkup",
                                             "", "", "", &o.readVirtual.count);
  o.meta.text = instance.readMetaContent(physical, "*", 1, 0, "=", ";", &o.meta.count);
  o.metaVirtual.text =
      instance.readMetaContent("/doc.htm", "*", 1, 0, "=", ";", &o.metaVirtual.count);
  o.list.text = instance.fileListing("C:\\site", "*.*", ";", &o.list.count);
  o.listVirtual.text = instance.fileListing("/", "*.*", ";", &o.listVirtual.count);
  o.write.count = instance.writeXPointer("d", physical, "#aspcode", "*", "*", 1, 1, "innermarkup",
                                         "", ";", &o.write.text);
  return o;
}

void expectServed(const Call& call, const std::string& text) {
  EXPECT_EQ(call.text, text);
  EXPECT_EQ(call.count, 1);
}

void expectDenied(const Call& call) {
  EXPECT_EQ(call.text, kDenied);
  EXPECT_EQ(call.count, -1);
}

TEST(TagwrightSettings, EachFlagActsOnItsOwnOperation) {
  {
    SCOPED_TRACE("AllowVirtualDocReadOnly");
    Outcome o = runOperations("AllowVirtualDocReadOnly=1\n");
    expectDenied(o.read);
    expectDenied(o.meta);
    expectServed(o.readVirtual, "c");
    expectServed(o.metaVirtual, "a=b");
    expectServed(o.list, "doc.htm");
    EXPECT_NE(o.write.text, kDenied);
  }
  {
    SCOPED_TRACE("AllowVirtualDocWriteOnly");
    Outcome o = runOperations("AllowVirtualDocWriteOnly=1\n");
    expectServed(o.read, "c");
    expectServed(o.meta, "a=b");
    expectServed(o.list, "doc.htm");
    expectDenied(o.write);
  }
  {
    SCOPED_TRACE("AllowVirtualFileListOnly");
    Outcome o = runOperations("AllowVirtualFileListOnly=1\n");
    expectServed(o.read, "c");
    expectServed(o.meta, "a=b");
    expectDenied(o.list);
    expectServed(o.listVirtual, "doc.htm");
    EXPECT_NE(o.write.text, kDenied);
  }
}

}  // namespace
}  // namespace tagwright
