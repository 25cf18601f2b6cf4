// Writing files so that none is ever lost: after success, failure, kill
// or power cut the path holds the old file or the new one, never a mixture.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "storage/file_system.h"
#include "util/log/result.h"

namespace skarnel {

enum class Overwrite {
    Refuse,  // AlreadyExists when anything of that name is there
    Allow,   // the old file is replaced in one step
};

enum class NewOwner {
    Process,       // as the system has it
    FoldersOwner,  // where the process may: what root makes in a user's home is the user's
};

/// Writes all bytes to a temporary file in the same folder, flushes it to disk, gives it its name
/// in one step and flushes the folder. On failure nothing is left behind and an old file stays;
/// the message is the cause alone ("No space left on device").
///
/// A replaced file keeps its permissions and, where allowed, its owner and group; a new one gets
/// what the process's mask leaves of 0666, or what the folder's access list says of new files. A
/// symbolic link is followed, and its target replaced; other hard links to the old file keep the
/// old bytes. An old file that may not be written is refused (CannotWrite), as an ordinary write
/// would be. Character devices and named pipes are written through under either policy, since
/// replacing one would lose it; a pipe that nothing reads is waited for as long as `kPipePatience`
/// says.
///
/// One failure leaves the new file in place: when only the folder could not be flushed. The
/// message then says so.
Result<void> writeFileSafely(const std::string& path, std::span<const std::uint8_t> bytes,
                             Overwrite overwrite, FileSystem& fileSystem = systemFileSystem(),
                             NewOwner newOwner = NewOwner::Process);

/// Gives what is open, and was made by a call that follows no link, to the owner of its folder.
/// Where the process may not give files away it keeps them.
void giveToOwnerOf(const std::string& folder, int descriptor, FileSystem& fileSystem);

/// Writes all bytes to an open descriptor, with checked counts; for standard output and pipes.
Result<void> writeDescriptor(int descriptor, std::span<const std::uint8_t> bytes,
                             FileSystem& fileSystem = systemFileSystem());

/// The folder of a path: what stands before its last slash, "/" for "/x", "." when there is none.
std::string folderOfPath(const std::string& path);

/// Follows symbolic links of the last component until something else or nothing stands there; a
/// dangling link gives the path that it names. CannotWrite with the cause for a loop.
Result<std::string> followLinks(const std::string& path,
                                FileSystem& fileSystem = systemFileSystem());

/// Makes names given or removed in the folder survive a power cut. A folder that may not be opened
/// or whose file system has no such flush counts as flushed.
Result<void> flushFolder(const std::string& folder, FileSystem& fileSystem = systemFileSystem());

/// Makes the folder and its missing parents, with mode 0700 as configuration folders have it.
Result<void> makeFolders(const std::string& folder, FileSystem& fileSystem = systemFileSystem(),
                         NewOwner newOwner = NewOwner::Process);

}  // namespace skarnel
