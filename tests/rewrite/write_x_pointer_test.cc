// writeXPointer on the fake platform: what goes into the new document, what
// ErrorResult and the result say, the backup rotation, the file names, and
// what a power cut at any moment of a rewrite leaves.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "rewrite/rewrite_names.h"
#include "rewrite/write_request.h"

namespace tagwright {
namespace {

struct RewriteCase {
  const char* name;
  std::string document;
  WriteRequest request;
  std::string want;
  std::string errorResult;
  int result;
  int bufferLength = 2048;
};

WriteRequest with(std::string newContent, std::int16_t start = 1, std::int16_t count = 1,
                  std::string contentType = "innermarkup", std::string separator = "") {
  WriteRequest r;
  r.newContent = std::move(newContent);
  r.start = start;
  r.count = count;
  r.contentType = std::move(contentType);
  r.separator = std::move(separator);
  return r;
}

void expectRewrite(const RewriteCase& c) {
  FakePlatform platform;
  platform.files[kDocument] = c.document;
  WriteOutcome got = writeDocument(platform, c.request, c.bufferLength);
  EXPECT_EQ(got.errorResult, c.errorResult);
  EXPECT_EQ(got.result, c.result);
  EXPECT_EQ(platform.files[kDocument], c.want);
  EXPECT_EQ(platform.files[kBackup], c.document);
  EXPECT_TRUE(tempFiles(platform).empty());
  EXPECT_EQ(platform.openFileCount(), 0);
}

TEST(WriteXPointer, NewDocument) {
  WriteRequest pi = with("NEW");
  pi.element = "#pi";
  const RewriteCase cases[] = {
      {"Example", "<%old%>\r\ntail", with("NEW"), "<%NEW%>\r\ntail\r\n", "old", 1},
      {"SecondInstanceOnly", "x<%a%>y<%b%>z", with("N", 2, 1), "x<%a%>y<%N%>z\r\n", "b", 1},
      {"BothInstances", "x<%a%>y<%b%>z", with("N", 1, 2, "innermarkup", ";"), "x<%N%>y<%N%>z\r\n",
       "a;b", 2},
      {"CountZeroReplacesEvery", "<%1%>\r\n<%2%>\r\n<%3%>", with("N", 1, 0, "innermarkup", ","),
       "<%N%>\r\n<%N%>\r\n<%N%>\r\n", "1,2,3", 3, 1},
      {"EmptyNewContentEmptiesStretch", "a<%b%>c", with(""), "a<%%>c\r\n", "b", 1},
      {"EmptyNewContentTakesOuterAway", "a<%b%>c", with("", 1, 1, "outermarkup"), "ac\r\n", "<%b%>",
       1},
      {"OuterMarkup", "a<%b%>c", with("NEW", 1, 1, "outerMarkup"), "aNEWc\r\n", "<%b%>", 1},
      {"InnerText", "a<%b%>c", with("NEW", 1, 1, "innertext"), "a<%NEW%>c\r\n", "b", 1},
      {"BlankTextIsReplacedToo", "a<% %>c", with("NEW"), "a<%NEW%>c\r\n", "", 1},
      {"NoContentStaysAsItIs", "<%%>", with("NEW"), "<%%>\r\n", "", 1},
      {"CloseMarkerStartsAChunk", "a<%x>\r\n<y>\r\n%>b\r\nc", with("NEW"), "a<%NEW%>b\r\nc\r\n",
       "x>\r\n<y>\r\n", 1, 1},
      {"OverSeveralChunks", "a<%x>\r\n<y>\r\nz%>b", with("NEW"), "a<%NEW%>b\r\n", "x>\r\n<y>\r\nz",
       1, 1},
      {"GoesOnInTheLastChunk", "a<%x>\r\n%>b<%c%>", with("N", 1, 2, "innermarkup", ";"),
       "a<%N%>b<%N%>\r\n", "x>\r\n;c", 2, 1},
      {"NewContentIsNotSearched", "<%a%><%b%>", with("<%x%>", 1, 0, "innermarkup", ";"),
       "<%<%x%>%><%<%x%>%>\r\n", "a;b", 2},
      {"NewContentKeepsItsLineEnds", "<%a%>", with("1\n2\r\n3\r"), "<%1\n2\r\n3\r%>\r\n", "a", 1},
      {"AfterTheCountTheRestIsCopied", "<%a%>\r\n<%b%>\r\n<%c%>", with("N"),
       "<%N%>\r\n<%b%>\r\n<%c%>\r\n", "a", 1, 1},
      {"NothingFound", "plain\ntext", with("N"), "plain\ntext\r\n", "", 0},
      {"EveryLineEndsInCrLf", "a\rb\r\nc\r\n\r\nd", with("N"), "a\r\nb\r\nc\r\n\r\nd\r\n", "", 0},
      {"EmptyDocument", "", with("N"), "", "", 0},
      {"ProcessingInstruction", "<?xml v?>\r\n", pi, "<?NEW?>\r\n", "xml v", 1},
      {"InvalidBytesOutsideKept", "\xff\xfe<%\xc3\x28%>\xe9t\x80\r\n\xed\xa0\x80", with("NEW"),
       "\xff\xfe<%NEW%>\xe9t\x80\r\n\xed\xa0\x80\r\n", "\xc3\x28", 1},
      {"InvalidBytesInNewContent", "<%a%>", with("\xc0\x80\xff"), "<%\xc0\x80\xff%>\r\n", "a", 1},
  };
  for (const RewriteCase& c : cases) {
    SCOPED_TRACE(c.name);
    expectRewrite(c);
  }
}

// The element cases need the element matchers.
TEST(WriteXPointer, NewDocumentOfElements) {
  WriteRequest p = with("NEW");
  p.element = "p";
  WriteRequest br = p;
  br.element = "br";
  WriteRequest brOuter = br;
  brOuter.contentType = "outermarkup";
  WriteRequest second = p;
  second.newContent = "N";
  second.start = 2;
  WriteRequest both = second;
  both.start = 1;
  both.count = 2;
  both.separator = ";";
  const RewriteCase cases[] = {
      {"Example", "<p>old</p>\r\ntail", p, "<p>NEW</p>\r\ntail\r\n", "old", 1},
      {"SecondInstanceOnly", "x<p>a</p>y<p>b</p>z", second, "x<p>a</p>y<p>N</p>z\r\n", "b", 1},
      {"BothInstances", "x<p>a</p>y<p>b</p>z", both, "x<p>N</p>y<p>N</p>z\r\n", "a;b", 2},
      {"SelfClosingOuter", "a<br/>b", brOuter, "aNEWb\r\n", "<br/>", 1},
      {"SelfClosingInner", "a<br/>b", br, "a<br/>b\r\n", "", 1},
      {"EmptyElementStays", "<p></p>", p, "<p></p>\r\n", "", 1},
      {"OverSeveralChunks", "<p>a<b>\r\n<i>x</i>\r\nc</p>d", p, "<p>NEW</p>d\r\n",
       "a<b>\r\n<i>x</i>\r\nc", 1, 1},
      {"CloseMarkerStartsAChunk", "<p>a<b>\r\n</p>d", p, "<p>NEW</p>d\r\n", "a<b>\r\n", 1, 1},
  };
  for (const RewriteCase& c : cases) {
    SCOPED_TRACE(c.name);
    expectRewrite(c);
  }
}

// Records which files exist while the temporary file is synced.
class WatchingPlatform : public FakePlatform {
 public:
  std::vector<std::string> seenAtSync;
  void syncFile(Int16 fileNumber) override {
    FakePlatform::syncFile(fileNumber);
    for (const auto& [path, bytes] : files) seenAtSync.push_back(path);
  }
};

TEST(WriteXPointer, FilesBesideTheDocument) {
  WatchingPlatform platform;
  platform.files[kDocument] = "<%old%>\r\ntail";
  platform.files[kBackup] = "backup of the rewrite before";
  platform.files["/web/~1117235959123.tmp"] = "stale, two days ago";
  platform.files["/web/~11171.tmp"] = "stale, two days ago";
  platform.files["/web/~1116000000.tmp"] = "three days ago";
  platform.files["/web/~1117000000.txt"] = "no temporary file";
  platform.files["/other/~1117000000.tmp"] = "another folder";
  WriteOutcome got = writeDocument(platform, with("NEW"));
  EXPECT_EQ(got.result, 1);
  EXPECT_EQ(platform.files[kDocument], "<%NEW%>\r\ntail\r\n");
  EXPECT_EQ(platform.files[kBackup], "<%old%>\r\ntail");
  EXPECT_NE(std::find(platform.seenAtSync.begin(), platform.seenAtSync.end(), kTemp),
            platform.seenAtSync.end());
  std::vector<std::string> left;
  for (const auto& [path, bytes] : platform.files) left.push_back(path);
  EXPECT_EQ(left, (std::vector<std::string>{"/other/~1117000000.tmp", kBackup, kDocument,
                                            "/web/~1116000000.tmp", "/web/~1117000000.txt"}));
}

TEST(WriteXPointer, DocumentNamedLikeAStaleFileSurvives) {
  FakePlatform platform;
  platform.files["/web/~1117page.tmp"] = "<%a%>";
  WriteOutcome got = writeDocument(platform, with("b"), 2048, "C:\\web\\~1117page.tmp");
  EXPECT_EQ(got.result, 1) << got.errorResult;
  EXPECT_EQ(platform.files["/web/~1117page.tmp"], "<%b%>\r\n");
  EXPECT_EQ(platform.files["/web/~1117page.bak"], "<%a%>");
}

TEST(WriteXPointer, BackupNames) {
  struct Case {
    const char* name;
    const char* documentName;
    const char* hostDocument;
    const char* backup;
  };
  const Case cases[] = {
      {"ExtensionGivesWay", "C:\\web\\page.htm", "/web/page.htm", "/web/page.bak"},
      {"NoExtension", "C:\\web\\page", "/web/page", "/web/page.bak"},
      {"HiddenName", "C:\\web\\.x.htm", "/web/.x.htm", "/web/.x.bak"},
      // Its own backup name would be the document itself.
      {"BakDocument", "C:\\web\\old.bak", "/web/old.bak", "/web/old.bak.bak"},
      {"ForwardSlashesKeepTheFolderInTheBase", "c:/web/page.htm", "/web/page.htm", "/web/page.bak"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    for (int round = 1; round <= 2; ++round) {
      FakePlatform platform;
      platform.files[c.hostDocument] = "<%a%>";
      if (round == 2) platform.files[c.backup] = "old backup";
      WriteOutcome got = writeDocument(platform, with("b"), 2048, c.documentName);
      EXPECT_EQ(got.result, 1) << got.errorResult;
      EXPECT_EQ(platform.files[c.hostDocument], "<%b%>\r\n");
      EXPECT_EQ(platform.files[c.backup], "<%a%>");
      EXPECT_EQ(platform.files.size(), 2u);
    }
  }
}

TEST(WriteXPointer, RewriteOfItsOwnResultIsTheSame) {
  FakePlatform platform;
  platform.files[kDocument] = "a\rb\nc\r\n%>x";
  ASSERT_EQ(writeDocument(platform, with("N", 1, 1, "innermarkup")).result, 0);
  std::string once = platform.files[kDocument];
  EXPECT_EQ(once, "a\r\nb\nc\r\n%>x\r\n");
  ASSERT_EQ(writeDocument(platform, with("N")).result, 0);
  EXPECT_EQ(platform.files[kDocument], once);
  EXPECT_EQ(platform.files[kBackup], once);
}

TEST(StampText, Table) {
  struct Case {
    const char* name;
    LocalTime now;
    double random;
    std::u32string want;
  };
  const Case cases[] = {
      {"FakeDefaults", {11, 19, 0, 43, 51}, 0.4375, U"11190043514375"},
      {"TwoDigitsEach", {1, 2, 3, 4, 5}, 0.5, U"01020304055000"},
      {"NoLeadingZeros", {12, 31, 23, 59, 59}, 0.00125, U"123123595912"},
      {"Zero", {12, 31, 23, 59, 59}, 0.0, U"12312359590"},
      {"Largest", {12, 31, 23, 59, 59}, 0.99999999, U"12312359599999"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(toUtf8(stampText(c.now, c.random)), toUtf8(c.want));
  }
}

// A power cut at the start of any platform call of a rewrite leaves the
// former or the new document whole under its name, or the former one as the
// backup; never a document that lost writes.
TEST(WriteXPointer, PowerCutAtAnyCall) {
  const std::string before = "<%old%>\r\n<a>\r\n<b>\r\ntail\r\n";
  const std::string after = "<%NEW%>\r\n<a>\r\n<b>\r\ntail\r\n";
  for (bool hardLinks : {true, false}) {
    SCOPED_TRACE(hardLinks ? "HardLinks" : "TwoRenames");
    FakePlatform counting;
    counting.hardLinks = hardLinks;
    counting.files[kDocument] = before;
    ASSERT_EQ(writeDocument(counting, with("NEW"), 1).result, 1);
    const int callCount = static_cast<int>(counting.calls.size());
    for (int n = 1; n <= callCount; ++n) {
      SCOPED_TRACE("power cut at call " + std::to_string(n) + ", " +
                   counting.calls[static_cast<std::size_t>(n - 1)]);
      FakePlatform platform;
      platform.hardLinks = hardLinks;
      platform.files[kDocument] = before;
      platform.crashAtCall = n;
      writeDocument(platform, with("NEW"), 1);
      ASSERT_TRUE(platform.crashImage.has_value());
      auto& image = *platform.crashImage;
      if (image.contains(kDocument)) {
        EXPECT_TRUE(image[kDocument] == before || image[kDocument] == after) << image[kDocument];
      } else {
        EXPECT_EQ(image[kBackup], before);
      }
    }
  }
}

}  // namespace
}  // namespace tagwright
