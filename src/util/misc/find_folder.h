// Standard folders of the user and names for people.
#pragma once

#include <cstdint>
#include <optional>

#include "util/string/fs_ref.h"
#include "util/string/nsstring.h"

namespace skarnel {

inline constexpr std::int16_t kUserDomain = -32763;
inline constexpr std::uint32_t kApplicationSupportFolderType = 0x61737570;  // 'asup'

/// Finds a standard folder. The only one that is known is the user domain's application-support
/// folder: $XDG_DATA_HOME where that is an absolute path, else ".local/share" in the home folder
/// (freedesktop.org base directory specification). With `createFolder` a missing one is made, its
/// parents too, for the user alone (mode 0700). kFileNotFoundErr otherwise; the reference is then
/// unchanged.
OSStatus FSFindFolder(std::int16_t domain, std::uint32_t folderType, bool createFolder,
                      FSRef* reference);

/// The item's name as people see it: the last part of its path, with U+FFFD for what is not UTF-8;
/// none when the item is gone.
std::optional<NSString> GetObjectDisplayName(const FSRef& reference);

/// Whether the current user's application-support folder was found or made and its path could be
/// read. Only this answer carries information: the caller's reference is left as it was, on
/// purpose.
bool GetOurApplicationSupportFolder(FSRef& reference);

}  // namespace skarnel
