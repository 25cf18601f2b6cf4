#include "storage/shared_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <thread>

#include "storage/left_overs.h"
#include "storage/safe_file.h"
#include "storage/whole_file.h"
#include "util/log/system_error.h"
#include "util/log/system_log.h"

namespace skarnel {
namespace {

constexpr mode_t kPrivateFileMode = 0600;
constexpr int kMaxCopies = 1000;
constexpr std::chrono::milliseconds kLockPause{2};
constexpr int kMaxOpenings = 8;  // of a lock that others make and move at the same time
constexpr int kMaxReads = 4;     // of a file that cannot be read at the moment
constexpr std::chrono::milliseconds kReadPause{20};

bool isSameFile(const std::string& path, const struct stat& status, FileSystem& fileSystem) {
    struct stat other = {};
    return fileSystem.lstat(path.c_str(), other) == 0 && other.st_dev == status.st_dev &&
           other.st_ino == status.st_ino;
}

/// Of the copy of a given number, from 1.
std::string copyName(const std::string& target, int number) {
    std::string name = target + ".damaged";
    if (number > 1) name += "-" + std::to_string(number);
    return name;
}

/// What an opening gives for things that never become usable by waiting. All else (no descriptors
/// left, a disk that fails) is no fault of what lies there.
bool cannotBeALock(int opened) {
    return opened == -EACCES || opened == -EISDIR || opened == -ELOOP || opened == -ENXIO;
}

/// The same of a reading. What is not named here counts as passing, since a file is never replaced
/// for that.
bool cannotBeReadAtAll(int opened) {
    return cannotBeALock(opened) || opened == -EPERM || opened == -ENOTDIR ||
           opened == -ENAMETOOLONG;
}

Result<std::vector<std::uint8_t>> readOnce(const std::string& path, std::uint64_t maxBytes,
                                           FileSystem& fileSystem) {
    struct stat status = {};
    if (fileSystem.stat(path.c_str(), status) == 0 && !S_ISREG(status.st_mode)) {
        return {ErrorCode::CannotRead, "It is not an ordinary file"};
    }
    const int opened = uninterrupted(
        [&] { return fileSystem.open(path.c_str(), O_RDONLY | O_NOCTTY | O_NONBLOCK, 0); });
    if (opened == -ENOENT) return {ErrorCode::NotFound, describeError(ENOENT)};
    if (opened < 0) {
        return {cannotBeReadAtAll(opened) ? ErrorCode::CannotRead : ErrorCode::Failed,
                describeError(-opened)};
    }
    auto bytes = readDescriptor(opened, maxBytes, fileSystem);
    fileSystem.close(opened);
    if (bytes || bytes.error().code != ErrorCode::CannotRead) return bytes;
    return {ErrorCode::Failed, bytes.error().message};
}

enum class Keep {
    SecondName,  // costs no space and cannot be half done; the thing stays where it is
    Moved,
};

Result<void> keepBeside(const std::string& path, const struct stat& status, Keep how,
                        FileSystem& fileSystem) {
    for (int number = 1; number <= kMaxCopies; ++number) {
        const std::string copy = copyName(path, number);
        int kept = how == Keep::SecondName ? fileSystem.link(path.c_str(), copy.c_str()) : -EPERM;
        if (kept < 0 && kept != -EEXIST) {
            kept = fileSystem.renameNoReplace(path.c_str(), copy.c_str());
            // A network's disk has no such call. Whoever is here has the lock, or the turn.
            if (isNotOffered(kept)) kept = renameAfterALook(path.c_str(), copy.c_str(), fileSystem);
        }
        if (kept == -EEXIST) {
            if (how == Keep::Moved || !isSameFile(copy, status, fileSystem)) continue;
            kept = 0;  // by an earlier try, whose write failed
        }
        if (kept < 0) return {ErrorCode::CannotWrite, describeError(-kept)};
        // The copy's name must be on disk before the new file can take the old one's place.
        return flushFolder(folderOfPath(path), fileSystem);
    }
    // No program may be kept from saving for ever: the youngest copy gives way.
    const int moved = fileSystem.rename(path.c_str(), copyName(path, kMaxCopies).c_str());
    if (moved < 0) return {ErrorCode::CannotWrite, describeError(-moved)};
    return flushFolder(folderOfPath(path), fileSystem);
}

}  // namespace

FileLock::~FileLock() {
    if (descriptor_ >= 0) fileSystem_.close(descriptor_);
}

Result<void> FileLock::take(const std::string& path, LockPatience& patience) {
    descriptor_ = openOrdinary(path);
    if (cannotBeALock(descriptor_)) return takeAfterMoving(path, descriptor_, patience);
    return takeOpened(patience);
}

Result<void> FileLock::takeOpened(LockPatience& patience) {
    if (descriptor_ < 0) return {ErrorCode::CannotWrite, describeError(-descriptor_)};
    const int locked = lockWithin(patience.ofNextTry());
    patience.noteTry(locked == -EWOULDBLOCK);
    // Without locks in the file system the merge alone has to do.
    if (locked == 0 || isNotOffered(locked)) return {};
    if (locked == -EWOULDBLOCK) {
        return {ErrorCode::CannotWrite, "Another program keeps the settings locked"};
    }
    return {ErrorCode::CannotWrite, describeError(-locked)};
}

/// 0, or the negative error number; -EWOULDBLOCK when somebody has the lock all that time.
int FileLock::lockWithin(std::chrono::milliseconds time) {
    const auto end = std::chrono::steady_clock::now() + time;
    for (;;) {
        const int locked =
            uninterrupted([&] { return fileSystem_.flock(descriptor_, LOCK_EX | LOCK_NB); });
        if (locked != -EWOULDBLOCK || std::chrono::steady_clock::now() >= end) return locked;
        std::this_thread::sleep_for(kLockPause);
    }
}

/// The descriptor of an ordinary file, or the negative error number; -EISDIR stands for all that
/// can be opened and is none.
int FileLock::openOrdinary(const std::string& path) {
    const int opened = openOrMake(path);
    if (opened < 0) return opened;
    struct stat status = {};
    const int found = fileSystem_.fstat(opened, status);
    if (found == 0 && S_ISREG(status.st_mode)) return opened;
    fileSystem_.close(opened);
    return found < 0 ? found : -EISDIR;
}

/// A new lock is made by a call that follows no link and takes nothing that is there already: only
/// then may root give it away.
int FileLock::openOrMake(const std::string& path) {
    const std::string folder = folderOfPath(path);
    for (int attempt = 0; attempt < kMaxOpenings; ++attempt) {
        const int opened = uninterrupted(
            [&] { return fileSystem_.open(path.c_str(), O_RDWR | O_NONBLOCK | O_NOCTTY, 0); });
        if (opened != -ENOENT) return opened;
        const int made = uninterrupted([&] {
            return fileSystem_.open(path.c_str(), O_RDWR | O_CREAT | O_EXCL, kPrivateFileMode);
        });
        if (made >= 0) giveToOwnerOf(folder, made, fileSystem_);
        if (made != -EEXIST) return made;
    }
    return -ELOOP;  // a link to nothing
}

/// Programs that find the same thing in the way take turns by a lock on the folder, or the later
/// one would move the earlier one's new lock. A folder that cannot be locked has to do without.
Result<void> FileLock::takeAfterMoving(const std::string& path, int refusal,
                                       LockPatience& patience) {
    const std::string folder = folderOfPath(path);
    FileLock turn(fileSystem_);
    turn.descriptor_ =
        uninterrupted([&] { return fileSystem_.open(folder.c_str(), O_RDONLY | O_DIRECTORY, 0); });
    if (turn.descriptor_ >= 0 && turn.lockWithin(patience.ofNextTry()) == -EWOULDBLOCK) {
        patience.noteTry(true);
        return {ErrorCode::CannotWrite, "Another program keeps the settings locked"};
    }
    descriptor_ = openOrdinary(path);
    if (cannotBeALock(descriptor_)) {
        descriptor_ = refusal;
        if (moveAside(path, fileSystem_)) {
            systemLog(path + ": It cannot be used as a lock, and is kept beside the new one");
            descriptor_ = openOrdinary(path);
        }
    }
    return takeOpened(patience);
}

Result<std::vector<std::uint8_t>> readSharedFile(const std::string& path, std::uint64_t maxBytes,
                                                 FileSystem& fileSystem) {
    auto bytes = readOnce(path, maxBytes, fileSystem);
    for (int reads = 1; reads < kMaxReads && !bytes && mayBeReadLater(bytes.error()); ++reads) {
        // Memory is there at once or not for long.
        if (bytes.error().code == ErrorCode::Failed) fileSystem.pause(kReadPause);
        bytes = readOnce(path, maxBytes, fileSystem);
    }
    return bytes;
}

bool mayBeReadLater(const Error& error) {
    return error.code == ErrorCode::Failed || error.code == ErrorCode::OutOfMemory;
}

/// Where a second name is not possible (a folder, a loop of links, a file system without hard
/// links) the thing itself moves aside.
Result<void> keepDamagedCopy(const std::string& path, FileSystem& fileSystem) {
    struct stat status = {};
    const int found = fileSystem.lstat(path.c_str(), status);
    if (found == -ENOENT) return {};  // gone meanwhile: nothing to keep
    if (found < 0) return {ErrorCode::CannotWrite, describeError(-found)};
    const Keep how = S_ISREG(status.st_mode) ? Keep::SecondName : Keep::Moved;
    return keepBeside(path, status, how, fileSystem);
}

Result<void> moveAside(const std::string& path, FileSystem& fileSystem) {
    return keepBeside(path, {}, Keep::Moved, fileSystem);
}

}  // namespace skarnel
