// What a failing rewrite reports and leaves on disk: each failure of the
// rewrite by fault injection, then every platform call of a rewrite failing
// in turn.
#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <string>

#include "rewrite/write_request.h"

namespace tagwright {
namespace {

const std::string kBefore = "<%old%>\r\n<a>\r\n<b>\r\ntail\r\n";
const std::string kAfter = "<%NEW%>\r\n<a>\r\n<b>\r\ntail\r\n";
const std::string kPreviousBackup = "backup of the rewrite before";

const std::string kCannotOpenOutput = "Cannot open output file to write new content.";
const std::string kCannotDeleteBackup = "Cannot delete old backup file' C:\\web\\page.bak'.";
const std::string kCannotMoveDocument = "Cannot rename existing file 'C:\\web\\page.htm'.";
const std::string kCannotPlaceOutput = "Cannot rename output file 'C:\\web\\~11190043514375.tmp'.";

// What a failure leaves under the document's name and the backup's.
enum class Disk {
  kAsBefore,           // document and old backup unchanged
  kBackupGone,         // document unchanged, old backup deleted
  kFormerInBoth,       // document unchanged, and the backup holds it too
  kFormerAsBackupOnly  // no document under its name; the backup holds it
};

void expectDisk(FakePlatform& platform, Disk disk) {
  auto file = [&](const char* path) -> std::string {
    return platform.files.contains(path) ? platform.files[path] : "(none)";
  };
  switch (disk) {
    case Disk::kAsBefore:
      EXPECT_EQ(file(kDocument), kBefore);
      EXPECT_EQ(file(kBackup), kPreviousBackup);
      break;
    case Disk::kBackupGone:
      EXPECT_EQ(file(kDocument), kBefore);
      EXPECT_EQ(file(kBackup), "(none)");
      break;
    case Disk::kFormerInBoth:
      EXPECT_EQ(file(kDocument), kBefore);
      EXPECT_EQ(file(kBackup), kBefore);
      break;
    case Disk::kFormerAsBackupOnly:
      EXPECT_EQ(file(kDocument), "(none)");
      EXPECT_EQ(file(kBackup), kBefore);
      break;
  }
}

void prepare(FakePlatform& platform) {
  platform.files[kDocument] = kBefore;
  platform.files[kBackup] = kPreviousBackup;
}

struct FailureCase {
  const char* name;
  std::function<void(FakePlatform&)> fault;
  std::string message;
  Disk disk;
};

std::function<void(FakePlatform&)> failing(const char* call, Failure::Kind kind, int occurrence = 1,
                                           bool hardLinks = true) {
  return [=](FakePlatform& platform) {
    platform.hardLinks = hardLinks;
    platform.failNamedCall(call, kind, occurrence);
  };
}

TEST(RewriteFailure, EachFailure) {
  using Kind = Failure::Kind;
  const FailureCase cases[] = {
      {"OutputFileCannotBeMade", failing("openForOutput", Kind::kPermissionDenied),
       kCannotOpenOutput, Disk::kAsBefore},
      {"NoFileNumberForOutput", failing("nextFreeFileNumber", Kind::kTooManyFiles, 2),
       kCannotOpenOutput, Disk::kAsBefore},
      {"ReadFailsMidDocument", failing("read", Kind::kDeviceIo, 3), "Device I/O error.",
       Disk::kAsBefore},
      {"WriteFailsOnAFullDisk", failing("writeText", Kind::kDiskFull, 2), "Disk full.",
       Disk::kAsBefore},
      {"SyncFailsOnAFullDisk", failing("syncFile", Kind::kDiskFull), "Disk full.", Disk::kAsBefore},
      {"CloseOfOutputFails", failing("closeFile", Kind::kDiskFull, 2), "Disk full.",
       Disk::kAsBefore},
      {"AttributesCannotBeCopied", failing("copyAttributes", Kind::kPermissionDenied),
       "Permission denied.", Disk::kAsBefore},
      // Open, locked or read-only: the backup stays.
      {"OldBackupCannotBeDeleted", failing("deleteFile", Kind::kPermissionDenied),
       kCannotDeleteBackup, Disk::kAsBefore},
      {"OldBackupCannotBeSearched", failing("firstMatchingFile", Kind::kPermissionDenied, 2),
       kCannotDeleteBackup, Disk::kAsBefore},
      {"LinkFails", failing("linkFile", Kind::kPermissionDenied), kCannotMoveDocument,
       Disk::kBackupGone},
      {"ReplaceFails", failing("replaceFile", Kind::kPermissionDenied), kCannotPlaceOutput,
       Disk::kFormerInBoth},
      {"RenameOfDocumentFails", failing("renameFile", Kind::kPermissionDenied, 1, false),
       kCannotMoveDocument, Disk::kBackupGone},
      {"RenameOfOutputFails", failing("renameFile", Kind::kPermissionDenied, 2, false),
       kCannotPlaceOutput, Disk::kFormerAsBackupOnly},
  };
  for (const FailureCase& c : cases) {
    SCOPED_TRACE(c.name);
    FakePlatform platform;
    prepare(platform);
    c.fault(platform);
    WriteOutcome got = writeDocument(platform, WriteRequest(), 1);
    EXPECT_EQ(got.result, -1);
    EXPECT_EQ(got.errorResult, "ERROR: " + c.message);
    expectDisk(platform, c.disk);
    EXPECT_TRUE(tempFiles(platform).empty());
    EXPECT_EQ(platform.openFileCount(), 0);
  }
}

TEST(RewriteFailure, MissingCloseMarker) {
  FakePlatform platform;
  platform.files[kDocument] = "<%a%>\r\n<%old\r\ntail";
  WriteRequest request;
  request.count = 0;
  request.separator = ",";
  WriteOutcome got = writeDocument(platform, request, 1);
  EXPECT_EQ(got.result, -1);
  EXPECT_EQ(got.errorResult, "ERROR: Found 'a,'--> Missing element end tag '%>'.");
  EXPECT_EQ(platform.files[kDocument], "<%a%>\r\n<%old\r\ntail");
  EXPECT_EQ(platform.files.size(), 1u);
}

// Another rewrite of the same second may own a file of the temporary name:
// it is neither emptied nor deleted.
TEST(RewriteFailure, TemporaryNameTaken) {
  FakePlatform platform;
  prepare(platform);
  platform.files[kTemp] = "another rewrite's text";
  WriteOutcome got = writeDocument(platform, WriteRequest());
  EXPECT_EQ(got.errorResult, "ERROR: " + kCannotOpenOutput);
  EXPECT_EQ(got.result, -1);
  expectDisk(platform, Disk::kAsBefore);
  EXPECT_EQ(platform.files[kTemp], "another rewrite's text");
}

// Counts the calls of a rewrite, then fails each in turn: the message is one
// of the rewrite's, and the disk is as that message's row says, or the
// rewrite succeeded where the failing call came after the document was in
// place.
TEST(RewriteFailure, EveryPlatformCallFailing) {
  for (bool hardLinks : {true, false}) {
    SCOPED_TRACE(hardLinks ? "HardLinks" : "TwoRenames");
    const std::map<std::string, Disk> rows = {
        {"Cannot open document file: 'C:\\web\\page.htm'.", Disk::kAsBefore},
        {kCannotOpenOutput, Disk::kAsBefore},
        {"Disk full.", Disk::kAsBefore},
        {kCannotDeleteBackup, Disk::kAsBefore},
        {kCannotMoveDocument, Disk::kBackupGone},
        {kCannotPlaceOutput, hardLinks ? Disk::kFormerInBoth : Disk::kFormerAsBackupOnly},
    };
    FakePlatform counting;
    counting.hardLinks = hardLinks;
    prepare(counting);
    counting.files["/web/~1117000000.tmp"] = "stale";
    ASSERT_EQ(writeDocument(counting, WriteRequest(), 1).result, 1);
    const std::vector<std::string> calls = counting.calls;
    std::map<std::string, int> seen;
    for (std::size_t n = 1; n <= calls.size(); ++n) {
      SCOPED_TRACE("failing call " + std::to_string(n) + ", " + calls[n - 1]);
      FakePlatform platform;
      platform.hardLinks = hardLinks;
      prepare(platform);
      platform.files["/web/~1117000000.tmp"] = "stale";
      platform.failCall(static_cast<int>(n), Failure::Kind::kDiskFull);
      WriteOutcome got = writeDocument(platform, WriteRequest(), 1);
      std::string message = got.result == -1 ? got.errorResult.substr(7) : "success";
      ++seen[message];
      if (got.result == -1) {
        EXPECT_EQ(got.errorResult.substr(0, 7), "ERROR: ");
        ASSERT_TRUE(rows.contains(message)) << message;
        expectDisk(platform, rows.at(message));
        EXPECT_EQ(platform.files.count(kTemp), 0u);
      } else {
        EXPECT_EQ(got.result, 1);
        EXPECT_EQ(platform.files[kDocument], kAfter);
        EXPECT_EQ(platform.files[kBackup], kBefore);
      }
      EXPECT_EQ(platform.openFileCount(), 0);
    }
    // Every row of the table was met on the way.
    for (const auto& [message, disk] : rows) EXPECT_GT(seen[message], 0) << message;
    EXPECT_GT(seen["success"], 0);
  }
}

}  // namespace
}  // namespace tagwright
