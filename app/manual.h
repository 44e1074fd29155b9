#ifndef TAGWRIGHT_APP_MANUAL_H_
#define TAGWRIGHT_APP_MANUAL_H_

#include <CLI/CLI.hpp>
#include <string>

namespace tagwright {

// The manual page tagwright(1) in roff, made of the program's own --help
// texts, the program's and each command's, so that the two cannot differ.
std::string manPage(CLI::App& app);

// A bash completion script for the program: its commands, each command's
// options, and the values of --content-type, --element-name and
// --line-ends; file names elsewhere.
std::string bashCompletion(CLI::App& app);

}  // namespace tagwright

#endif  // TAGWRIGHT_APP_MANUAL_H_
