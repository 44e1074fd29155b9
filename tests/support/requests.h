#ifndef TAGWRIGHT_TESTS_SUPPORT_REQUESTS_H_
#define TAGWRIGHT_TESTS_SUPPORT_REQUESTS_H_

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "host.h"
#include "support/fake_platform.h"
#include "support/tagwright_test_access.h"
#include "tagwright/tagwright.h"

namespace tagwright {

// A readXPointer or writeXPointer request with the operations' defaults, in
// the order of their parameters, for rows like Request{.element = "p"}.
struct Request {
  std::string document = "C:\\doc.htm";
  std::string element = "#aspcode";
  std::string attributeName = "*";
  std::string attributeValue = "*";
  std::int16_t start = 1;
  std::int16_t count = 0;
  std::string contentType = "innerMarkup";
  std::string span = "";
  std::string string = "";
  std::string separator = ";";
  std::string newContent = "NEW";
  LineEnds lineEnds = LineEnds::kCrLf;
};

// `text` written `times` times over.
inline std::string repeat(const std::string& text, int times) {
  std::string out;
  for (int i = 0; i < times; ++i) out += text;
  return out;
}

// The text and MatchesFound of a read; ErrorResult and the result of a
// rewrite.
struct Outcome {
  std::string text;
  int matches = 0;
  bool operator==(const Outcome&) const = default;
  friend std::ostream& operator<<(std::ostream& out, const Outcome& o) {
    return out << '[' << o.text << "] " << o.matches;
  }
};

// A page context whose MapPath is `map`.
inline std::shared_ptr<ScriptingContext> mappedContext(
    std::function<std::string(const std::string&)> map) {
  struct Context : ScriptingContext, PageServer {
    std::function<std::string(const std::string&)> map;
    PageServer& Server() override { return *this; }
    std::string MapPath(const std::string& path) override { return map(path); }
  };
  auto context = std::make_shared<Context>();
  context->map = std::move(map);
  return context;
}

// Maps "/x" to "C:\site\x", a physical path the fake platform serves.
inline std::string underSite(const std::string& path) {
  std::string physical = "C:\\site";
  for (char c : path) physical += c == '/' ? '\\' : c;
  return physical;
}

// Runs the request on a new instance of `platform`, with the page context if
// one is given; a `bufferLength` above zero replaces the chunk length, and
// `characters` keeps the read to the characters of every chunk.
inline Outcome read(Platform& platform, const Request& r, std::int32_t bufferLength = 2048,
                    std::shared_ptr<ScriptingContext> context = nullptr, bool characters = false) {
  Tagwright instance(platform);
  if (bufferLength > 0) TagwrightTestAccess::setBufferLength(instance, bufferLength);
  if (characters) TagwrightTestAccess::keepToCharacters(instance);
  if (context) instance.OnStartPage(context);
  instance.setLineEnds(r.lineEnds);
  Outcome o;
  o.text = instance.readXPointer(r.document, r.element, r.attributeName, r.attributeValue, r.start,
                                 r.count, r.contentType, r.span, r.string, r.separator, &o.matches);
  return o;
}

inline Outcome write(Platform& platform, const Request& r, std::int32_t bufferLength = 2048,
                     bool characters = false) {
  Tagwright instance(platform);
  if (bufferLength > 0) TagwrightTestAccess::setBufferLength(instance, bufferLength);
  if (characters) TagwrightTestAccess::keepToCharacters(instance);
  instance.setLineEnds(r.lineEnds);
  Outcome o;
  o.matches =
      instance.writeXPointer(r.newContent, r.document, r.element, r.attributeName, r.attributeValue,
                             r.start, r.count, r.contentType, r.span, r.separator, &o.text);
  return o;
}

// A readMetaContent request with the operation's defaults.
struct MetaRequest {
  std::string document = "C:\\doc.htm";
  std::string name = "*";
  std::int16_t start = 1;
  std::int16_t count = 0;
  std::string equals = "$eq$";
  std::string separator = ";";
  LineEnds lineEnds = LineEnds::kCrLf;
};

inline Outcome read(Platform& platform, const MetaRequest& m, std::int32_t bufferLength = 2048) {
  Tagwright instance(platform);
  if (bufferLength > 0) TagwrightTestAccess::setBufferLength(instance, bufferLength);
  instance.setLineEnds(m.lineEnds);
  Outcome o;
  o.text = instance.readMetaContent(m.document, m.name, m.start, m.count, m.equals, m.separator,
                                    &o.matches);
  return o;
}

// Reads a document of the given bytes at C:\doc.htm, which is closed after.
template <class AnyRequest>
Outcome readDocument(const std::string& bytes, const AnyRequest& r,
                     std::int32_t bufferLength = 2048) {
  FakePlatform platform;
  platform.files["/doc.htm"] = bytes;
  Outcome o = read(platform, r, bufferLength);
  EXPECT_EQ(platform.openFileCount(), 0);
  return o;
}

// A row of a table of reads: a document, a request on it, and what it reads.
template <class AnyRequest>
struct ReadRow {
  const char* name;
  std::string document;
  AnyRequest request;
  std::string text;
  int matches;
  std::int32_t bufferLength = 2048;
};

template <class AnyRequest>
void expectReads(const std::vector<ReadRow<AnyRequest>>& rows) {
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(readDocument(row.document, row.request, row.bufferLength),
              (Outcome{row.text, row.matches}));
  }
}

struct HostRun {
  int status;
  std::string out;
  std::string err;
  bool operator==(const HostRun&) const = default;
  friend std::ostream& operator<<(std::ostream& out, const HostRun& r) {
    return out << r.status << " [" << r.out << "] [" << r.err << ']';
  }
};

// The words of a command line as typed, split at each blank: for rows whose
// arguments hold none.
inline std::vector<std::string> words(std::string_view line) {
  std::vector<std::string> out;
  for (std::size_t start = 0, end; start <= line.size(); start = end + 1) {
    end = std::min(line.find(' ', start), line.size());
    if (end > start) out.emplace_back(line.substr(start, end - start));
  }
  return out;
}

// Runs a `tagwright` command line in-process, on `platform` or the system's.
inline HostRun runTagwright(const std::vector<std::string>& arguments, Platform* platform = nullptr,
                            const std::string& input = "") {
  std::istringstream in(input);
  std::ostringstream out, err;
  int status = runHost(arguments, in, out, err, platform);
  return {status, out.str(), err.str()};
}

}  // namespace tagwright

#endif  // TAGWRIGHT_TESTS_SUPPORT_REQUESTS_H_
