#include "storage/file_system.h"

#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <memory>
#include <new>

namespace skarnel {
namespace {

constexpr unsigned kRenameNoReplace = 1;  // RENAME_NOREPLACE of linux/fs.h

template <typename Number>
Number orError(Number result) {
    return result < 0 ? static_cast<Number>(-errno) : result;
}

struct CloseFolder {
    void operator()(DIR* folder) const { ::closedir(folder); }
};

class SystemFileSystem final : public FileSystem {
  public:
    int open(const char* path, int flags, mode_t mode) override {
        return orError(::open(path, flags | O_CLOEXEC, mode));
    }
    int close(int descriptor) override { return orError(::close(descriptor)); }
    ssize_t read(int descriptor, void* bytes, std::size_t count) override {
        return orError(::read(descriptor, bytes, count));
    }
    ssize_t write(int descriptor, const void* bytes, std::size_t count) override {
        return orError(::write(descriptor, bytes, count));
    }
    int fsync(int descriptor) override { return orError(::fsync(descriptor)); }
    void beginFlush(int descriptor, std::uint64_t offset, std::uint64_t count) override {
        static_cast<void>(::sync_file_range(descriptor, static_cast<off64_t>(offset),
                                            static_cast<off64_t>(count), SYNC_FILE_RANGE_WRITE));
    }
    int fstat(int descriptor, struct stat& status) override {
        return orError(::fstat(descriptor, &status));
    }
    int fchmod(int descriptor, mode_t mode) override { return orError(::fchmod(descriptor, mode)); }
    int fchown(int descriptor, uid_t user, gid_t group) override {
        return orError(::fchown(descriptor, user, group));
    }
    int flock(int descriptor, int operation) override {
        return orError(::flock(descriptor, operation));
    }
    int setBlocking(int descriptor) override {
        const int flags = ::fcntl(descriptor, F_GETFL);
        return orError(flags < 0 ? flags : ::fcntl(descriptor, F_SETFL, flags & ~O_NONBLOCK));
    }
    void pause(std::chrono::milliseconds time) override {
        ::poll(nullptr, 0, static_cast<int>(time.count()));
    }

    int stat(const char* path, struct stat& status) override {
        return orError(::stat(path, &status));
    }
    int lstat(const char* path, struct stat& status) override {
        return orError(::lstat(path, &status));
    }
    int canWrite(const char* path) override {
        return orError(::faccessat(AT_FDCWD, path, W_OK, AT_EACCESS));
    }
    int readlink(const char* path, std::string& target) override {
        std::array<char, PATH_MAX> buffer;
        const ssize_t length = ::readlink(path, buffer.data(), buffer.size());
        if (length < 0) return -errno;
        target.assign(buffer.data(), static_cast<std::size_t>(length));
        return 0;
    }
    int list(const char* folder, std::vector<std::string>& names) override {
        const std::unique_ptr<DIR, CloseFolder> open(::opendir(folder));
        if (!open) return -errno;
        errno = 0;
        while (const dirent* entry = ::readdir(open.get())) names.emplace_back(entry->d_name);
        return -errno;
    }

    int mkdir(const char* path, mode_t mode) override { return orError(::mkdir(path, mode)); }
    int link(const char* from, const char* to) override { return orError(::link(from, to)); }
    int unlink(const char* path) override { return orError(::unlink(path)); }
    int rename(const char* from, const char* to) override { return orError(::rename(from, to)); }
    int renameNoReplace(const char* from, const char* to) override {
        return static_cast<int>(
            orError(::syscall(SYS_renameat2, AT_FDCWD, from, AT_FDCWD, to, kRenameNoReplace)));
    }
};

}  // namespace

FileSystem& systemFileSystem() {
    // Never destroyed, since a thread that nobody waits for may be at work while the process ends;
    // and made without a request for memory, which a caller's default argument could not catch.
    alignas(SystemFileSystem) static std::byte place[sizeof(SystemFileSystem)];
    static FileSystem& system = *::new (place) SystemFileSystem;
    return system;
}

int renameAfterALook(const char* from, const char* to, FileSystem& fileSystem) {
    struct stat status = {};
    const int found = fileSystem.lstat(to, status);
    if (found != -ENOENT) return found == 0 ? -EEXIST : found;
    return fileSystem.rename(from, to);
}

}  // namespace skarnel
