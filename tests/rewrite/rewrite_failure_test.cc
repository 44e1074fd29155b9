// What a failing rewrite reports and leaves on disk: a temporary name already
// taken, then every platform call of a rewrite failing in turn, and a power
// cut at each of them.
#include <gtest/gtest.h>

#include "support/requests.h"

namespace tagwright {
namespace {

const std::string kBefore = "<%old%>\r\n<a>\r\n<b>\r\ntail\r\n";
const std::string kAfter = "<%NEW%>\r\n<a>\r\n<b>\r\ntail\r\n";
const std::string kPrevious = "backup of the rewrite before";
const std::string kNone = "(none)";

const std::string kOpenDocument = "ERROR: Cannot open document file: 'C:\\doc.htm'.";
const std::string kOpenOutput = "ERROR: Cannot open output file to write new content.";
const std::string kDeleteBackup = "ERROR: Cannot delete old backup file' C:\\doc.bak'.";
const std::string kMoveDocument = "ERROR: Cannot rename existing file 'C:\\doc.htm'.";
const std::string kPlaceOutput = "ERROR: Cannot rename output file 'C:\\~11190043514375.tmp'.";

// The document and the backup after the rewrite, and no temporary file.
std::pair<std::string, std::string> onDisk(FakePlatform& platform) {
  EXPECT_FALSE(platform.files.contains("/~11190043514375.tmp"));
  EXPECT_EQ(platform.openFileCount(), 0);
  auto file = [&](const char* path) {
    return platform.files.contains(path) ? platform.files[path] : kNone;
  };
  return {file("/doc.htm"), file("/doc.bak")};
}

FakePlatform prepared(bool hardLinks = true) {
  FakePlatform platform;
  platform.hardLinks = hardLinks;
  platform.files = {{"/doc.htm", kBefore}, {"/doc.bak", kPrevious}, {"/~1117000000.tmp", "stale"}};
  return platform;
}

// Another rewrite of the same second may own a file of the temporary name,
// made before the name was checked or between the check and the creation:
// either way it is neither emptied nor deleted, and the rewrite fails alike.
TEST(RewriteFailure, TemporaryNameTaken) {
  for (const char* takenBefore : {"firstMatchingFile", "openForOutput"}) {
    SCOPED_TRACE(takenBefore);
    FakePlatform platform = prepared();
    platform.beforeCall = [&](const std::string& call) {
      if (call == takenBefore) platform.files.try_emplace("/~11190043514375.tmp", "theirs");
    };
    EXPECT_EQ(write(platform, {}), (Outcome{kOpenOutput, -1}));
    EXPECT_EQ(platform.files["/~11190043514375.tmp"], "theirs");
    platform.files.erase("/~11190043514375.tmp");
    EXPECT_EQ(onDisk(platform), std::pair(kBefore, kPrevious));
  }
}

// Counts the calls of a rewrite, then fails each in turn, with either kind of
// failure: the message is one of the rewrite's (the failure's own where no
// step of the rewrite names it), with the disk as its row says, or the
// rewrite succeeded where the failing call came after the document was in
// place. The same run takes the image a power cut at the start of that call
// would leave.
TEST(RewriteFailure, EveryPlatformCallFailing) {
  for (bool hardLinks : {true, false}) {
    SCOPED_TRACE(hardLinks ? "HardLinks" : "TwoRenames");
    const std::map<std::string, std::pair<std::string, std::string>> rows = {
        {kOpenDocument, {kBefore, kPrevious}},
        {kOpenOutput, {kBefore, kPrevious}},
        {"ERROR: Disk full.", {kBefore, kPrevious}},
        {"ERROR: Permission denied.", {kBefore, kPrevious}},
        // Open, locked or read-only: the backup stays.
        {kDeleteBackup, {kBefore, kPrevious}},
        {kMoveDocument, {kBefore, kNone}},
        {kPlaceOutput, {hardLinks ? kBefore : kNone, kBefore}},
        {"success", {kAfter, kBefore}},
    };
    FakePlatform counting = prepared(hardLinks);
    ASSERT_EQ(write(counting, {}, 1).matches, 1);
    std::map<std::string, int> seen;
    for (std::size_t n = 1; n <= 2 * counting.calls.size(); ++n) {
      const std::size_t call = (n + 1) / 2;
      SCOPED_TRACE("failing call " + std::to_string(call) + ", " + counting.calls[call - 1]);
      FakePlatform platform = prepared(hardLinks);
      platform.failCall(static_cast<int>(call),
                        n % 2 ? Failure::Kind::kDiskFull : Failure::Kind::kPermissionDenied);
      platform.crashAtCall = static_cast<int>(call);
      Outcome got = write(platform, {}, 1);
      // A power cut as this call begins leaves the former or the new document
      // whole under its name, or the former one as the backup.
      ASSERT_TRUE(platform.crashImage.has_value());
      auto& image = *platform.crashImage;
      if (image.contains("/doc.htm")) {
        EXPECT_TRUE(image["/doc.htm"] == kBefore || image["/doc.htm"] == kAfter)
            << image["/doc.htm"];
      } else {
        EXPECT_EQ(image["/doc.bak"], kBefore);
      }
      const std::string message = got.matches == -1 ? got.text : "success";
      ++seen[message];
      ASSERT_TRUE(rows.contains(message)) << message;
      EXPECT_EQ(got.matches, message == "success" ? 1 : -1);
      EXPECT_EQ(onDisk(platform), rows.at(message));
    }
    for (const auto& [message, disk] : rows) EXPECT_GT(seen[message], 0) << message;
  }
}

}  // namespace
}  // namespace tagwright
