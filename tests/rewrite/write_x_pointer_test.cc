// writeXPointer on the fake platform: the new document, ErrorResult and the
// result, the backup and the stale temporary files.
#include <gtest/gtest.h>

#include "rewrite/rewrite_names.h"
#include "support/requests.h"

namespace tagwright {
namespace {

TEST(WriteXPointer, Example) {
  FakePlatform platform;
  platform.files = {{"/doc.htm", "<p>old</p>\r\ntail"},
                    {"/doc.bak", "backup of the rewrite before"},
                    {"/~1117235959123.tmp", "stale, two days ago"},
                    {"/~11171.tmp", "stale, two days ago"},
                    {"/~1116000000.tmp", "three days ago"},
                    {"/~1117000000.txt", "no temporary file"},
                    {"/web/~1117000000.tmp", "another folder"}};
  EXPECT_EQ(write(platform, Request{.element = "p"}), (Outcome{"old", 1}));
  EXPECT_EQ(platform.files,
            (std::map<std::string, std::string>{{"/doc.htm", "<p>NEW</p>\r\ntail\r\n"},
                                                {"/doc.bak", "<p>old</p>\r\ntail"},
                                                {"/~1116000000.tmp", "three days ago"},
                                                {"/~1117000000.txt", "no temporary file"},
                                                {"/web/~1117000000.tmp", "another folder"}}));
  EXPECT_EQ(toUtf8(stampText({1, 2, 3, 4, 5}, 0.00125)), "010203040512");
}

TEST(WriteXPointer, NewDocument) {
  // Chunks without an instance go out as they were read, the others encoded
  // again; both must keep every byte and end every line in CR LF.
  const std::string filler = repeat("<div class=\"\xC3\xA9\">y</div>\r", 40);
  const std::string hidden = filler + "<div class=\"a\"><div id=\"t\">x</div>\r\n" + filler +
                             "<DIV Id='T'>\xC3\xA9z\xFF</div>\n" + filler;
  const std::string fillerAfter = repeat("<div class=\"\xC3\xA9\">y</div>\r\n", 40);
  const std::string after = fillerAfter + "<div class=\"a\"><div id=\"t\">x</div>\r\n" +
                            fillerAfter + "<DIV Id='T'>NEW</div>\n" + fillerAfter;
  const Request t{.element = "div", .attributeName = "id", .attributeValue = "t"};
  const std::string raw =
      "a\rb\nc\xFF\r\n<p>x</p>\r\xC3\r\nd\n\n<P>\xE9y</P>\r\n" + filler + "tail\xF0\x9F";
  const std::string rawAfter = "a\r\nb\nc\xFF\r\n<p>NEW</p>\r\n\xC3\r\nd\n\n<P>NEW</P>\r\n";
  const std::string span = "<div><H2>One</h2> text <h3>Two</h3><p>x</p></div>\r\n";
  const std::string overlapping = "<div><p>1</p><p>2</p><p>3</p></div>\r\n";
  const struct {
    const char* name;
    std::string document;
    Request request;
    std::string want;
    std::string errorResult;
    int result;
    std::int32_t bufferLength = 2048;
    std::string path = "/doc.htm", backup = "/doc.bak";
  } cases[] = {
      {"SecondInstanceOnly", "x<p>a</p>y<p>b</p>z", Request{.element = "p", .start = 2, .count = 1},
       "x<p>a</p>y<p>NEW</p>z\r\n", "b", 1},
      {"SecondAndLater", "x<p>a</p>y<p>b</p>z", Request{.element = "p", .start = 2, .count = 2},
       "x<p>a</p>y<p>NEW</p>z\r\n", "b", 1},
      {"BothInstances", "x<p>a</p>y<p>b</p>z", Request{.element = "p", .count = 2},
       "x<p>NEW</p>y<p>NEW</p>z\r\n", "a;b", 2},
      {"EmptyNewContent", "a<%b%>c", Request{.newContent = ""}, "a<%%>c\r\n", "b", 1},
      {"SelfClosingOuter", "a<br/>b", Request{.element = "br", .contentType = "outerMarkup"},
       "aNEWb\r\n", "<br/>", 1},
      {"EmptyElementStays", "<p></p>", Request{.element = "p"}, "<p></p>\r\n", "", 1},
      {"OverSeveralChunks", "<p>a<b>\r\n<i>x</i>\r\nc</p>d", Request{.element = "p"},
       "<p>NEW</p>d\r\n", "a<b>\r\n<i>x</i>\r\nc", 1, 1},
      {"CloseMarkerStartsAChunk", "<p>a<b>\r\n</p>d", Request{.element = "p"}, "<p>NEW</p>d\r\n",
       "a<b>\r\n", 1, 1},
      {"AfterTheCountTheRestIsCopied", "<%a%>\r\n<%b%>\r\n<%c%>", Request{.count = 1},
       "<%NEW%>\r\n<%b%>\r\n<%c%>\r\n", "a", 1, 1},
      {"NewContentIsNotSearched", "<%a%><%b%>", Request{.newContent = "<%x%>"},
       "<%<%x%>%><%<%x%>%>\r\n", "a;b", 2},
      {"NothingFoundEveryLineEndsInCrLf", "a\rb\r\nc\nd\r\n%>\r\ne", Request{},
       "a\r\nb\r\nc\nd\r\n%>\r\ne\r\n", "", 0},
      {"EmptyDocument", "", Request{}, "", "", 0},
      {"InvalidBytesKept", "\xff\xfe<%\xc3\x28%>\xe9t\x80\r\n\xed\xa0\x80",
       Request{.newContent = "\xc0\x80\xff"},
       "\xff\xfe<%\xc0\x80\xff%>\xe9t\x80\r\n\xed\xa0\x80\r\n", "\xc3\x28", 1},
      {"RefusedTagHidesTheNext", hidden, t, after, "\xC3\xA9z\xFF", 1, 1},
      {"RefusedTagHidesTheNext257", hidden, t, after, "\xC3\xA9z\xFF", 1, 257},
      {"RefusedTagHidesTheNext30000", hidden, t, after, "\xC3\xA9z\xFF", 1, 30000},
      {"RawLineEndsAndBytes", raw, Request{.element = "p"},
       rawAfter + fillerAfter + "tail\xF0\x9F\r\n", "x;\xE9y", 2, 1},
      {"RawLineEndsAndBytes257", raw, Request{.element = "p"},
       rawAfter + fillerAfter + "tail\xF0\x9F\r\n", "x;\xE9y", 2, 257},
      // Each span gives way to the new content; an overlap, like a missing
      // close marker, fails the rewrite and leaves the document as it was.
      {"SpansInner", span, Request{.element = "div", .span = "h2,h3"},
       "<div><H2>One</h2>NEW<h3>Two</h3><p>x</p></div>\r\n", " text ", 1},
      {"SpansOuter", span, Request{.element = "div", .contentType = "outerMarkup", .span = "h2,h3"},
       "<div>NEW<p>x</p></div>\r\n", "<H2>One</h2> text <h3>Two</h3>", 1},
      {"MissingCloseMarker", "<%a%>\r\n<%old\r\ntail", Request{.separator = ","},
       "<%a%>\r\n<%old\r\ntail", "ERROR: Found 'a,'--> Missing element end tag '%>'.", -1, 1},
      {"SpansOverlapping", overlapping,
       Request{.element = "div", .contentType = "outerMarkup", .span = "p,p"}, overlapping,
       "ERROR: Invalid procedure call or argument.", -1},
      {"RawRestAfterTheCount", raw, Request{.element = "p", .count = 1},
       "a\r\nb\nc\xFF\r\n<p>NEW</p>\r\n\xC3\r\nd\n\n<P>\xE9y</P>\r\n" + fillerAfter +
           "tail\xF0\x9F\r\n",
       "x", 1, 1},
      // The backup takes the document's name with ".bak" for its extension,
      // even where the name looks like a stale temporary file.
      {"BackupOfNameWithoutExtension", "<%a%>", Request{.document = "C:\\web\\page"}, "<%NEW%>\r\n",
       "a", 1, 2048, "/web/page", "/web/page.bak"},
      {"BackupBesideForwardSlashPath", "<%a%>", Request{.document = "c:/web/page.htm"},
       "<%NEW%>\r\n", "a", 1, 2048, "/web/page.htm", "/web/page.bak"},
      {"BackupOfStaleLookingName", "<%a%>", Request{.document = "C:\\web\\~1117page.tmp"},
       "<%NEW%>\r\n", "a", 1, 2048, "/web/~1117page.tmp", "/web/~1117page.bak"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    FakePlatform platform;
    platform.files[c.path] = c.document;
    EXPECT_EQ(write(platform, c.request, c.bufferLength), (Outcome{c.errorResult, c.result}));
    std::map<std::string, std::string> files = {{c.path, c.want}, {c.backup, c.document}};
    if (c.result < 0) files.erase(c.backup);
    EXPECT_EQ(platform.files, files);
    EXPECT_EQ(platform.openFileCount(), 0);
    if (c.result == 0) {  // run again on its own result, it gives the same bytes
      ASSERT_EQ(write(platform, c.request, c.bufferLength), (Outcome{"", 0}));
      EXPECT_EQ(platform.files[c.path], c.want);
    }
  }
}

}  // namespace
}  // namespace tagwright
