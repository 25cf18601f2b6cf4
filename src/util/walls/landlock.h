// Landlock rule sets: which files this process, and all that it starts, may still touch.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "util/log/result.h"

namespace skarnel {

/// The kernel's Landlock version; 0 where it has none or it is switched off. Asked of the kernel
/// by its system call, since no file tells it reliably.
int landlockVersion();

/// Kinds of access that a rule set takes away everywhere and gives back below named places.
enum class FileAccess : std::uint32_t {
    Execute = 1,  // starting a program, its interpreter and loader included
    Read = 2,     // reading files and listing folders
    Change = 4,   // writing, truncating, making, removing, renaming
};
constexpr FileAccess operator|(FileAccess a, FileAccess b) {
    return static_cast<FileAccess>(static_cast<std::uint32_t>(a) | static_cast<std::uint32_t>(b));
}
constexpr bool includes(FileAccess set, FileAccess one) {
    return (static_cast<std::uint32_t>(set) & static_cast<std::uint32_t>(one)) != 0;
}

/// A place that keeps a kind of access; a folder stands for all that is or will be below it, other
/// file systems mounted there included. A path that does not exist is passed over.
struct FileGrant {
    std::string path;
    FileAccess access;
};

/// Takes the kinds in `removed` away from the calling thread and all that it starts from now on,
/// but for the grants. Cannot be undone. Also sets "no new privileges". Call it while the process
/// has one thread. Fails with Unsupported where the kernel lacks Landlock, and then changes nothing
/// but "no new privileges".
Result<void> restrictFileAccess(FileAccess removed, const std::vector<FileGrant>& grants);

}  // namespace skarnel
