// A folder whose pictures are rendered as they appear.
#pragma once

#include <functional>
#include <string>

#include "util/log/result.h"

namespace skarnel::cli {

/// Calls `appeared` with the path of each picture that is put into the folder (written and closed,
/// or moved in) from now on, by the endings of names that can be read. `appeared` gives the path
/// of what it wrote, or an empty one; a result that lies in the folder is no picture until somebody
/// else changes or replaces it. Where more happens than the system's queue holds, the folder is
/// looked through instead. Hidden files are passed over. Ends only with an error, such as the
/// folder's removal or unmounting.
Result<void> watchFolder(const std::string& folder,
                         const std::function<std::string(const std::string& path)>& appeared);

}  // namespace skarnel::cli
