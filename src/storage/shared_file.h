// Small files that several programs of one user read, merge and write again.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "storage/file_system.h"
#include "util/log/result.h"

namespace skarnel {

/// How long a program waits for the locks of a file. One that somebody holds for longer than that
/// (a stopped program, a disk that hangs) will hardly be free soon, and a window must not stand
/// still for it again and again: until a lock is had once more, the later tries are short.
class LockPatience {
  public:
    static constexpr std::chrono::milliseconds kAfterRefusal{100};

    explicit LockPatience(std::chrono::milliseconds first) : first_(first) {}
    std::chrono::milliseconds ofNextTry() const {
        return refused_ ? std::min(first_, kAfterRefusal) : first_;
    }
    void noteTry(bool refused) { refused_ = refused; }

  private:
    std::chrono::milliseconds first_;
    bool refused_ = false;
};

/// Holds the lock of a lock file while it lives. The file itself stays: removing it would let two
/// programs hold locks on two files of one name.
class FileLock {
  public:
    explicit FileLock(FileSystem& fileSystem = systemFileSystem()) : fileSystem_(fileSystem) {}
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;
    ~FileLock();

    /// Makes the lock file at `path` where it is missing, and takes its lock. CannotWrite when
    /// another program keeps it for longer than the patience, which learns of it. A file system
    /// without locks counts as taken.
    ///
    /// A lock that root makes in somebody's folder is given to them. What cannot be a lock (a
    /// folder, a loop of links, another user's file) is moved aside as "path.damaged" where the
    /// folder allows it, and the log says so.
    Result<void> take(const std::string& path, LockPatience& patience);

  private:
    int openOrMake(const std::string& path);
    int openOrdinary(const std::string& path);
    int lockWithin(std::chrono::milliseconds time);
    Result<void> takeOpened(LockPatience& patience);
    Result<void> takeAfterMoving(const std::string& path, int refusal, LockPatience& patience);

    FileSystem& fileSystem_;
    int descriptor_ = -1;
};

/// All bytes of an ordinary file. NotFound; CannotRead for what is none or may not be read,
/// TooLarge for more bytes than the limit; Failed or OutOfMemory, after a few tries within a tenth
/// of a second, when it cannot be read at the moment (a disk that fails, no descriptors left), for
/// which the file itself is not to blame.
Result<std::vector<std::uint8_t>> readSharedFile(const std::string& path, std::uint64_t maxBytes,
                                                 FileSystem& fileSystem = systemFileSystem());

/// Whether that is such a moment: the file must not be replaced then.
bool mayBeReadLater(const Error& error);

/// Keeps what lies at `path` beside it, as "path.damaged", ".damaged-2" and so on, before a new
/// file takes its place. Nothing there is nothing to keep.
Result<void> keepDamagedCopy(const std::string& path, FileSystem& fileSystem = systemFileSystem());

/// Gives what lies at `path` such a name too, and leaves nothing there.
Result<void> moveAside(const std::string& path, FileSystem& fileSystem = systemFileSystem());

}  // namespace skarnel
