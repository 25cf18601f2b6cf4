// The system calls that reading and writing files stand on, behind one interface, so that tests
// can make each of them fail, record them, and replay them.
#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace skarnel {

/// Each operation is the system call of its name: what it returns is >= 0 on success and the
/// negative error number on failure (-ENOSPC), never -1 with errno.
class FileSystem {
  public:
    virtual ~FileSystem() = default;

    virtual int open(const char* path, int flags, mode_t mode) = 0;  // adds O_CLOEXEC
    virtual int close(int descriptor) = 0;
    virtual ssize_t read(int descriptor, void* bytes, std::size_t count) = 0;
    virtual ssize_t write(int descriptor, const void* bytes, std::size_t count) = 0;
    virtual int fsync(int descriptor) = 0;
    /// Lets the disk begin with bytes that fsync will ask for anyway. A hint, which has no result.
    virtual void beginFlush(int descriptor, std::uint64_t offset, std::uint64_t count) {
        static_cast<void>(descriptor);
        static_cast<void>(offset);
        static_cast<void>(count);
    }
    virtual int fstat(int descriptor, struct stat& status) = 0;
    virtual int fchmod(int descriptor, mode_t mode) = 0;
    virtual int fchown(int descriptor, uid_t user, gid_t group) = 0;
    virtual int flock(int descriptor, int operation) = 0;
    virtual int setBlocking(int descriptor) = 0;  // takes O_NONBLOCK away

    virtual int stat(const char* path, struct stat& status) = 0;   // follows links
    virtual int lstat(const char* path, struct stat& status) = 0;  // does not
    virtual int canWrite(const char* path) = 0;  // access(W_OK) for the effective user
    virtual int readlink(const char* path, std::string& target) = 0;
    virtual int list(const char* folder, std::vector<std::string>& names) = 0;  // unsorted

    virtual int mkdir(const char* path, mode_t mode) = 0;
    virtual int link(const char* from, const char* to) = 0;
    virtual int unlink(const char* path) = 0;
    virtual int rename(const char* from, const char* to) = 0;
    virtual int renameNoReplace(const char* from, const char* to) = 0;  // RENAME_NOREPLACE

    virtual void pause(std::chrono::milliseconds time) = 0;  // perhaps shorter, for a signal
};

/// The operating system itself. Safe to use from any thread, until the process is gone.
FileSystem& systemFileSystem();

/// Repeats a call that a signal interrupted. Gives -EINTR back after a hundred tries, so that a
/// file system that answers nothing else cannot hang the program.
template <typename Call>
auto uninterrupted(Call call) {
    auto result = call();
    for (int tries = 1; result == -EINTR && tries < 100; ++tries) result = call();
    return result;
}

/// Whether that is what a file system gives that lacks the call (locks, the flush of a folder, a
/// rename that never replaces); nothing has failed then.
inline bool isNotOffered(int result) {
    return result == -EINVAL || result == -ENOSYS || result == -EOPNOTSUPP || result == -ENOLCK;
}

/// A rename without replacing for file systems that have no call for it: -EEXIST when something is
/// at `to`. What comes there between the look and the rename is replaced.
int renameAfterALook(const char* from, const char* to, FileSystem& fileSystem);

}  // namespace skarnel
