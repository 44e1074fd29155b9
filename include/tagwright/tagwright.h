// Tagwright locates parts of HTML, XML and server-page documents on disk and
// returns or rewrites them.
//
//   tagwright::Tagwright tw;
//   int found = 0;
//   std::string text = tw.readXPointer("/srv/site/news.htm", "p", "class", "news",
//                                      2, 1, "innerText", "", "", "", &found);
//   // text: the plain text of the second <p class="news">; found: 1
//
// There is no parser and no tree: a document is pulled through in chunks of
// whole lines, and every decision is a substring search on a lower-cased copy
// of a chunk, with text cut from the chunk as read. Memory follows the chunk
// length and the returned text, not the size of the document.
//
// Texts are UTF-8. Positions, counts and the limits count characters, and are
// signed 16-bit values: a position beyond 32767 fails with "Overflow.".
//
// Failures never escape an operation: it returns a text that begins with
// "ERROR: ", and the count (`MatchesFound`, or the result of writeXPointer)
// is -1. A search that finds nothing is a success with the count 0.
//
// Thread contract: an instance is used by one thread, one call at a time.
// Files are numbered per thread, so instances on different threads never
// meet.
#ifndef TAGWRIGHT_TAGWRIGHT_H_
#define TAGWRIGHT_TAGWRIGHT_H_

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "tagwright/export.h"
#include "tagwright/plain_types.h"

namespace tagwright {

class Platform;

// The host's server object: maps a virtual path of the site to a physical
// path ("\srv\site\a.htm"), or throws when it cannot.
class TAGWRIGHT_EXPORT PageServer {
 public:
  virtual ~PageServer() = default;
  virtual std::string MapPath(const std::string& path) = 0;
};

// The page context that a host hands to an instance.
class TAGWRIGHT_EXPORT ScriptingContext {
 public:
  virtual ~ScriptingContext() = default;
  virtual PageServer& Server() = 0;
};

class TAGWRIGHT_EXPORT Tagwright {
 public:
  // Reads the administrator's settings (see --help of the host) through the
  // system's platform.
  Tagwright();
  // The same on a given platform, which must outlive the instance.
  explicit Tagwright(Platform& platform);

  // Keeps the host's page context for virtual paths, replacing an earlier
  // one. REQUIRES: objScriptingContext is not null (throws otherwise).
  void OnStartPage(std::shared_ptr<ScriptingContext> objScriptingContext);

  // What ends a line for the instance's later calls; the settings' LineEnds=any
  // gives kAny, any other text kCrLf.
  //   tagwright read page.htm --line-ends=any
  void setLineEnds(LineEnds lineEnds) { lineEndMode = lineEnds; }
  LineEnds lineEnds() const { return lineEndMode; }

  // The path on the host's file system that an operation would open for
  // DocumentName: trimmed, mapped through the page context when virtual.
  // Empty where it cannot be mapped (no context, or the context refused).
  // Opens nothing and checks no setting; hosts use it to lock a document or
  // explain a failure without repeating the component's path rules.
  //   tw.hostPathOf("/news.htm") == "/srv/site/news.htm"  (root /srv/site)
  std::string hostPathOf(const std::string& DocumentName) const;

  // For hosts: the lock that serialises rewrites of one document across
  // processes. The operations take none; a host holds this one around each
  // writeXPointer call, so that two rewrites of one document never overlap
  // and each one's backup is the document that it replaced. Waits for the
  // lock; returns null, having waited for nothing, when the name does not map
  // to a plain file (the operation then reports its own failure). No lock
  // file is made. Never throws.
  //   std::unique_ptr<FileLock> lock = tw.lockForRewrite("/news.htm");
  //   tw.writeXPointer("New", "/news.htm", "p");
  std::unique_ptr<FileLock> lockForRewrite(const std::string& DocumentName);

  // For hosts that show each part apart: every part that a later
  // readXPointer takes, or writeXPointer replaces, is also handed to
  // `observer`, in document order, as it is found; the positions of a write
  // are those of the former document. An empty observer stops it; positions
  // cost nothing then.
  //   tw.observeParts([](const FoundPart& p) { std::cout << p.start.line; });
  void observeParts(std::function<void(const FoundPart&)> observer) {
    partObserver_ = std::move(observer);
  }

  // For hosts that wrap it (the batch host defers its syncs, write --stdout
  // keeps the new document aside): the platform of this process.
  static Platform& systemPlatform();
  // The same, except that the document `documentPath` (a physical or host
  // path) is read once from the open `descriptor`, chunk by chunk as a file
  // is (standard input as a document).
  static std::unique_ptr<Platform> streamingPlatform(const std::string& documentPath,
                                                     int descriptor);

  // Whether the settings let virtual paths follow links out of the site root
  // (FollowLinksOut=1), for the host that makes the page context.
  bool followsLinksOut() const { return followLinksOut; }

  // Returns the parts of a document that a query locates, each followed by
  // the separator, less the last character; `*MatchesFound` gets the count.
  // ElementName is a name ("p") or "#element", "#comment", "#pi", "#aspcode"
  // or "#dtd"; ContentType is "outerMarkup", "innerMarkup" or "innerText".
  //   tagwright read page.htm --element-name p --separator ';'
  std::string readXPointer(
      const std::string& DocumentName, const std::string& ElementName = "#element",
      const std::string& AttributeName = "*", const std::string& AttributeValue = "*",
      std::int16_t StartInstance = 1, std::int16_t CountInstances = 0,
      const std::string& ContentType = "innerMarkup", const std::string& SpanFunction = "",
      const std::string& StringFunction = "", const std::string& ResultSeparatorChars = "",
      int* MatchesFound = nullptr);

  // Replaces the located parts with NewContent through a temporary file, and
  // keeps the former document as "<name>.bak". Returns the count, or -1;
  // `*ErrorResult` gets the former texts, or "ERROR: " and the message.
  //   tagwright write page.htm --element-name p --new-content 'New'
  int writeXPointer(const std::string& NewContent, const std::string& DocumentName,
                    const std::string& ElementName = "#element",
                    const std::string& AttributeName = "*", const std::string& AttributeValue = "*",
                    std::int16_t StartInstance = 1, std::int16_t CountInstances = 1,
                    const std::string& ContentType = "innermarkup",
                    const std::string& SpanFunction = "",
                    const std::string& ResultSeparatorChars = "",
                    std::string* ErrorResult = nullptr);

  // Returns the <meta name="..." content="..."> pairs as name, ResultEqualsChars, content.
  //   tagwright meta page.htm --meta-name author
  std::string readMetaContent(const std::string& DocumentName,
                              const std::string& MetaNameValue = "*",
                              std::int16_t StartInstance = 1, std::int16_t CountInstances = 0,
                              const std::string& ResultEqualsChars = "$eq$",
                              const std::string& ResultSeparatorChars = "",
                              int* MatchesFound = nullptr);

  // Returns the names of a folder's plain files that match FileSpecification.
  //   tagwright list /images --pattern '*.png'
  std::string fileListing(const std::string& FileListRoot,
                          const std::string& FileSpecification = "*.*",
                          const std::string& ListSeparator = "", int* MatchesFound = nullptr);

  // Returns `text` as well-formed UTF-8, for a transport that cannot carry
  // raw bytes (JSON): each byte that the text model keeps as a character of
  // its own becomes one U+FFFD, so the result has as many characters as the
  // component counted in `text`. Every other character stays as it is.
  //   replaceRawBytes("\xe4\xb8X") == "\uFFFD\uFFFDX"
  static std::string replaceRawBytes(std::string_view text);

 private:
  friend class TagwrightTestAccess;

  Platform& platform_;
  std::int32_t bufferLength = 2048;
  std::u32string resultSeparator;
  bool allowPhysicalDocRead = true;
  bool allowPhysicalDocWrite = true;
  bool allowPhysicalFileList = true;
  LineEnds lineEndMode = LineEnds::kCrLf;
  bool followLinksOut = false;
  bool bytePaths = true;  // false only in tests that hold the two paths of a scan together
  std::shared_ptr<ScriptingContext> ScriptingContext_;
  std::function<void(const FoundPart&)> partObserver_;
};

}  // namespace tagwright

#endif  // TAGWRIGHT_TAGWRIGHT_H_
