#ifndef TAGWRIGHT_TESTS_SERVICES_META_EXAMPLE_H_
#define TAGWRIGHT_TESTS_SERVICES_META_EXAMPLE_H_

#include <string>

namespace tagwright {

// Five tags, one to a line: capitals, two plain tags, one of another form
// (content first) and a name that ends in "author".
inline const std::string kMetaExample =
    "<META NAME=\"Robots\" CONTENT=\"none\">\r\n"
    "<meta name=\"author\" content=\"The Editors\">\r\n"
    "<meta name=\"description\" content=\"A page\">\r\n"
    "<meta content=\"x\" name=\"y\">\r\n"
    "<meta name=\"page-author\" content=\"Staff\">\r\n";

}  // namespace tagwright

#endif  // TAGWRIGHT_TESTS_SERVICES_META_EXAMPLE_H_
