#include "json_answer.h"

#include <string_view>

#include "tagwright/tagwright.h"

namespace tagwright {
namespace {

// Appends `text`, well-formed UTF-8, as a JSON string: quotes, backslashes
// and control characters escaped as nlohmann's dump writes them, every
// other byte as it is. Runs of plain bytes go in one append: this is on the
// path of every answer of the page host.
void appendJsonString(std::string& out, std::string_view text) {
  out += '"';
  std::size_t plainFrom = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    auto c = static_cast<unsigned char>(text[i]);
    if (c >= 0x20 && c != '"' && c != '\\') continue;
    out.append(text, plainFrom, i - plainFrom);
    plainFrom = i + 1;
    switch (c) {
      case '"':
        out += "\\\"";
        break;
      case '\\':
        out += "\\\\";
        break;
      case '\b':
        out += "\\b";
        break;
      case '\f':
        out += "\\f";
        break;
      case '\n':
        out += "\\n";
        break;
      case '\r':
        out += "\\r";
        break;
      case '\t':
        out += "\\t";
        break;
      default: {
        static constexpr char kHex[] = "0123456789abcdef";
        out += "\\u00";
        out += kHex[c >> 4];
        out += kHex[c & 15];
      }
    }
  }
  out.append(text, plainFrom, text.size() - plainFrom);
  out += '"';
}

}  // namespace

std::string textAnswerJson(const std::string& result, int matchesFound) {
  std::string text = Tagwright::replaceRawBytes(result);
  std::string json;
  json.reserve(text.size() + text.size() / 8 + 40);
  json += "{\"result\":";
  appendJsonString(json, text);
  json += ",\"matchesFound\":";
  json += std::to_string(matchesFound);
  json += '}';
  return json;
}

std::string writeAnswerJson(int result, const std::string& errorResult) {
  std::string text = Tagwright::replaceRawBytes(errorResult);
  std::string json;
  json.reserve(text.size() + text.size() / 8 + 40);
  json += "{\"result\":";
  json += std::to_string(result);
  json += ",\"errorResult\":";
  appendJsonString(json, text);
  json += '}';
  return json;
}

}  // namespace tagwright
