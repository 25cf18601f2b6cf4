// A folder whose pictures are rendered as they appear.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "util/log/result.h"

namespace skarnel::cli {

/// Gets the path of a result as soon as it is written, before anybody is told of it: from then on
/// another may replace it.
using Written = std::function<void(const std::string& result)>;

/// Gets the paths of pictures that came together, in their order.
using Appeared =
    std::function<void(const std::vector<std::string>& pictures, const Written& written)>;

/// Calls `appeared` with the pictures that are put into the folder (written and closed, moved in,
/// or linked) from now on, by the endings of names that can be read. A result that lies in the
/// folder is no picture until somebody else changes or replaces it. Where more happens than the
/// system's queue holds, the folder is looked through instead. Hidden files are passed over. Ends
/// only with an error, such as the folder's removal or unmounting.
Result<void> watchFolder(const std::string& folder, const Appeared& appeared);

}  // namespace skarnel::cli
