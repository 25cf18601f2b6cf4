// A folder whose pictures are rendered as they appear.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "util/log/result.h"

namespace skarnel::cli {

/// Gets the paths of pictures that came together, in their order, and gives the paths of what it
/// wrote.
using Appeared = std::function<std::vector<std::string>(const std::vector<std::string>& pictures)>;

/// Calls `appeared` with the pictures that are put into the folder (written and closed, moved in,
/// or linked) from now on, by the endings of names that can be read. A result that lies in the
/// folder is no picture until somebody else changes or replaces it. Where more happens than the
/// system's queue holds, the folder is looked through instead. Hidden files are passed over. Ends
/// only with an error, such as the folder's removal or unmounting.
Result<void> watchFolder(const std::string& folder, const Appeared& appeared);

}  // namespace skarnel::cli
