// The command line as a function: arguments in, exit code out.
#pragma once

#include <string>
#include <vector>

namespace skarnel::cli {

/// 0 all well, 1 something failed, 2 wrong usage. An interruption ends the process with 128 + the
/// signal's number (130 for Ctrl-C) and does not return.
int runCommandLine(const std::vector<std::string>& arguments);

}  // namespace skarnel::cli
