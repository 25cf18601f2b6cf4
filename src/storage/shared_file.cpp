#include "storage/shared_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <thread>

#include "storage/left_overs.h"
#include "storage/safe_file.h"
#include "storage/whole_file.h"
#include "util/log/system_error.h"

namespace skarnel {
namespace {

constexpr mode_t kPrivateFileMode = 0600;
constexpr int kMaxCopies = 1000;
constexpr std::chrono::milliseconds kLockPause{2};

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

}  // namespace

FileLock::~FileLock() {
    if (descriptor_ >= 0) fileSystem_.close(descriptor_);
}

Result<void> FileLock::take(const std::string& path, std::chrono::milliseconds patience) {
    descriptor_ = uninterrupted(
        [&] { return fileSystem_.open(path.c_str(), O_RDWR | O_CREAT, kPrivateFileMode); });
    if (descriptor_ < 0) return {ErrorCode::CannotWrite, describeError(-descriptor_)};
    const auto end = std::chrono::steady_clock::now() + patience;
    for (;;) {
        const int locked =
            uninterrupted([&] { return fileSystem_.flock(descriptor_, LOCK_EX | LOCK_NB); });
        // Without locks in the file system the merge alone has to do.
        if (locked == 0 || locked == -ENOLCK || locked == -EOPNOTSUPP) return {};
        if (locked != -EWOULDBLOCK) return {ErrorCode::CannotWrite, describeError(-locked)};
        if (std::chrono::steady_clock::now() >= end) {
            return {ErrorCode::CannotWrite, "Another program keeps the settings locked"};
        }
        std::this_thread::sleep_for(kLockPause);
    }
}

Result<std::vector<std::uint8_t>> readSharedFile(const std::string& path, std::uint64_t maxBytes,
                                                 FileSystem& fileSystem) {
    struct stat status = {};
    if (fileSystem.stat(path.c_str(), status) == 0 && S_ISFIFO(status.st_mode)) {
        return {ErrorCode::CannotRead, "It is not an ordinary file"};
    }
    return readWholeFile(path, maxBytes, fileSystem);
}

/// A second name for what lies there costs no space and cannot be half done. Where that is not
/// possible (a folder, a loop of links, a file system without hard links) the thing itself moves
/// aside.
Result<void> keepDamagedCopy(const std::string& path, FileSystem& fileSystem) {
    struct stat status = {};
    const int found = fileSystem.lstat(path.c_str(), status);
    if (found == -ENOENT) return {};  // gone meanwhile: nothing to keep
    if (found < 0) return {ErrorCode::CannotWrite, describeError(-found)};
    const bool ordinary = S_ISREG(status.st_mode);
    for (int number = 1; number <= kMaxCopies; ++number) {
        const std::string copy = copyName(path, number);
        int kept = ordinary ? fileSystem.link(path.c_str(), copy.c_str()) : -EPERM;
        if (kept < 0 && kept != -EEXIST) {
            kept = fileSystem.renameNoReplace(path.c_str(), copy.c_str());
        }
        if (kept == -EEXIST) {
            if (!ordinary || !isSameFile(copy, status, fileSystem)) continue;
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

}  // namespace skarnel
