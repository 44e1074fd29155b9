#ifndef TAGWRIGHT_APP_SERVE_CONTENT_TYPES_H_
#define TAGWRIGHT_APP_SERVE_CONTENT_TYPES_H_

#include <string_view>

namespace tagwright {

// The Content-Type a static server gives a file by its extension, compared
// without regard to ASCII case; application/octet-stream for any other.
//   contentTypeOf("/news.HTM") == "text/html; charset=utf-8"
std::string_view contentTypeOf(std::string_view fileName);

}  // namespace tagwright

#endif  // TAGWRIGHT_APP_SERVE_CONTENT_TYPES_H_
