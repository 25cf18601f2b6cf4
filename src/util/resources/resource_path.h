/// Where the files lie that a program reads at run time: the logo, the sound, the icons.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace skarnel {

/// The folders that may hold the resources, in the order in which they are
/// asked, each without a slash at its end:
/// - the folder named by the environment variable SKARNEL_RESOURCES, if it is
///   set and not empty;
/// - ../share/skarnel beside the folder of the running program, which finds
///   them in the build tree, in an installation and in one that was moved;
/// - the folder that was configured for the installation.
std::vector<std::string> resourceFolders();

/// The full path of the first regular file `name` (a relative path, for example
/// "icons/open.svg") in `folders`; none if no folder has it, or if `name` is
/// empty, absolute or leads out of the folder with "..".
std::optional<std::string> findResource(std::string_view name,
                                        const std::vector<std::string>& folders);

/// The same over `resourceFolders()`.
std::optional<std::string> findResource(std::string_view name);

}  // namespace skarnel
