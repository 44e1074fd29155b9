#ifndef TAGWRIGHT_TESTS_SUPPORT_HOST_RUN_H_
#define TAGWRIGHT_TESTS_SUPPORT_HOST_RUN_H_

#include <sstream>
#include <string>
#include <vector>

#include "host.h"

namespace tagwright {

struct HostRun {
  int status;
  std::string out;
  std::string err;
};

// Runs a `tagwright` command line in-process on the system platform.
inline HostRun runTagwright(const std::vector<std::string>& arguments,
                            const std::string& input = "") {
  std::istringstream in(input);
  std::ostringstream out, err;
  int status = runHost(arguments, in, out, err);
  return {status, out.str(), err.str()};
}

}  // namespace tagwright

#endif  // TAGWRIGHT_TESTS_SUPPORT_HOST_RUN_H_
