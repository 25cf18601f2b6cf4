// Which options go together.
#pragma once

#include <string>

#include "cli/options.h"

namespace skarnel::cli {

/// What single options cannot see: the first thing that does not go with another, as a phrase in
/// English; empty when all is well.
std::string contradiction(const Options& options);

}  // namespace skarnel::cli
