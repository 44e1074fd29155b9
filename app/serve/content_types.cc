#include "serve/content_types.h"

#include <algorithm>
#include <string>
#include <utility>

namespace tagwright {

std::string_view contentTypeOf(std::string_view fileName) {
  static constexpr std::pair<std::string_view, std::string_view> kTypes[] = {
      {"htm", "text/html; charset=utf-8"},
      {"html", "text/html; charset=utf-8"},
      {"asp", "text/plain; charset=utf-8"},
      {"css", "text/css; charset=utf-8"},
      {"js", "text/javascript; charset=utf-8"},
      {"json", "application/json"},
      {"xml", "application/xml"},
      {"txt", "text/plain; charset=utf-8"},
      {"png", "image/png"},
      {"jpg", "image/jpeg"},
      {"jpeg", "image/jpeg"},
      {"gif", "image/gif"},
      {"svg", "image/svg+xml"},
      {"webp", "image/webp"},
      {"ico", "image/x-icon"},
      {"pdf", "application/pdf"},
  };
  std::size_t dot = fileName.rfind('.');
  std::size_t slash = fileName.rfind('/');
  if (dot != std::string_view::npos && (slash == std::string_view::npos || dot > slash)) {
    std::string extension(fileName.substr(dot + 1));
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    for (const auto& [known, type] : kTypes) {
      if (extension == known) return type;
    }
  }
  return "application/octet-stream";
}

}  // namespace tagwright
