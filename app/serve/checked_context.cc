#include "serve/checked_context.h"

namespace tagwright {

const std::string& CheckedContext::check(const std::string& name) {
  checked_ = false;
  mapped_ = site_->Server().MapPath(name);
  checkedName_ = name;
  checked_ = true;
  return mapped_;
}

std::string CheckedContext::MapPath(const std::string& path) {
  if (checked_ && path == checkedName_) return mapped_;
  return site_->Server().MapPath(path);
}

}  // namespace tagwright
