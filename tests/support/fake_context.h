#ifndef TAGWRIGHT_TESTS_SUPPORT_FAKE_CONTEXT_H_
#define TAGWRIGHT_TESTS_SUPPORT_FAKE_CONTEXT_H_

#include <functional>
#include <stdexcept>
#include <string>
#include <utility>

#include "tagwright/tagwright.h"

namespace tagwright {

// A page context whose MapPath is a function of the test's choosing.
class FakeContext : public ScriptingContext, private PageServer {
 public:
  explicit FakeContext(std::function<std::string(const std::string&)> map) : map_(std::move(map)) {}
  // Maps "/x" to "C:\site\x" (a physical path the fake platform serves).
  static std::shared_ptr<FakeContext> underSite() {
    return std::make_shared<FakeContext>([](const std::string& path) {
      std::string physical = "C:\\site";
      for (char c : path) physical += c == '/' ? '\\' : c;
      return physical;
    });
  }
  PageServer& Server() override { return *this; }

 private:
  std::string MapPath(const std::string& path) override { return map_(path); }
  std::function<std::string(const std::string&)> map_;
};

}  // namespace tagwright

#endif  // TAGWRIGHT_TESTS_SUPPORT_FAKE_CONTEXT_H_
