#include "storage/safe_file.h"

#include <fcntl.h>
#include <sys/file.h>

#include <algorithm>
#include <new>
#include <utility>

#include "storage/left_overs.h"
#include "storage/pipe_patience.h"
#include "util/log/message.h"
#include "util/log/system_error.h"

namespace skarnel {
namespace {

constexpr mode_t kPermissionBits = 0777;
constexpr mode_t kNewFileMode = 0666;
constexpr mode_t kPrivateFileMode = 0600;
constexpr mode_t kPrivateFolderMode = 0700;
constexpr std::size_t kFlushedPiece = std::size_t{4} << 20;
constexpr int kMaxLinks = 40;        // as the kernel follows
constexpr int kMaxNameAttempts = 8;  // fresh temporary names until one is free

Error writeError(int result) {
    return {ErrorCode::CannotWrite, describeError(-result)};
}

/// The text is short enough to need no memory itself.
Error outOfMemory() {
    return {ErrorCode::OutOfMemory, "Out of memory"};
}

Error alreadyExists() {
    return {ErrorCode::AlreadyExists, "The file already exists"};
}

bool isStream(const struct stat& status) {
    return S_ISCHR(status.st_mode) || S_ISFIFO(status.st_mode);
}

/// A file that vanishes with this object unless it was published under its real name. While it
/// is open it carries the lock that tells `removeLeftOvers` that somebody is at work.
class TemporaryFile {
  public:
    explicit TemporaryFile(FileSystem& fileSystem) : fileSystem_(fileSystem) {}
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile() {
        if (named_) fileSystem_.unlink(path_.c_str());
        if (descriptor_ >= 0) fileSystem_.close(descriptor_);
    }

    Result<void> create(const std::string& folder, mode_t mode);
    void giveToOwnerOf(const std::string& folder) {
        skarnel::giveToOwnerOf(folder, descriptor_, fileSystem_);
    }
    Result<void> adopt(const struct stat& replaced);
    Result<void> fill(std::span<const std::uint8_t> bytes);
    Result<void> publish(const std::string& target, Overwrite overwrite);

  private:
    int lockAndCheckName();
    int giveNewName(const std::string& target);

    FileSystem& fileSystem_;
    std::string path_;
    int descriptor_ = -1;
    bool named_ = false;
};

Result<void> TemporaryFile::create(const std::string& folder, mode_t mode) {
    for (int attempt = 0; attempt < kMaxNameAttempts; ++attempt) {
        path_ = temporaryFilePath(folder);
        descriptor_ = uninterrupted([&] {
            return fileSystem_.open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, mode);
        });
        if (descriptor_ == -EEXIST) continue;
        if (descriptor_ == -ENOENT) return {ErrorCode::NotFound, "The folder does not exist"};
        if (descriptor_ < 0) return writeError(descriptor_);
        named_ = true;
        const int locked = lockAndCheckName();
        if (locked == 0) return {};
        fileSystem_.close(std::exchange(descriptor_, -1));
        fileSystem_.unlink(path_.c_str());
        named_ = false;
        if (locked != -EAGAIN) return writeError(locked);
    }
    return {ErrorCode::CannotWrite, "No free name for a temporary file"};
}

/// 0, or -EAGAIN when a cleaner was quicker than our lock, or another failure.
int TemporaryFile::lockAndCheckName() {
    const int locked =
        uninterrupted([&] { return fileSystem_.flock(descriptor_, LOCK_EX | LOCK_NB); });
    if (isNotOffered(locked)) return 0;
    if (locked < 0) return locked;
    struct stat status = {};
    const int found = fileSystem_.fstat(descriptor_, status);
    if (found < 0) return found;
    return status.st_nlink == 0 ? -EAGAIN : 0;
}

/// Gives the file the permissions, the owner and the group of the one that it replaces.
Result<void> TemporaryFile::adopt(const struct stat& replaced) {
    // Only root may give a file away, and a user only to one of their groups: an attempt.
    struct stat own = {};
    if (fileSystem_.fstat(descriptor_, own) == 0 &&
        (own.st_uid != replaced.st_uid || own.st_gid != replaced.st_gid) &&
        fileSystem_.fchown(descriptor_, replaced.st_uid, replaced.st_gid) < 0) {
        fileSystem_.fchown(descriptor_, static_cast<uid_t>(-1), replaced.st_gid);
    }
    const int changed = fileSystem_.fchmod(descriptor_, replaced.st_mode & kPermissionBits);
    // File systems without permissions (FAT) refuse; the file is then as private as they make it.
    if (changed < 0 && changed != -EPERM && !isNotOffered(changed)) return writeError(changed);
    return {};
}

Result<void> TemporaryFile::fill(std::span<const std::uint8_t> bytes) {
    // The disk is at work on one piece while the next is copied into the system's memory.
    for (std::size_t at = 0; at < bytes.size(); at += kFlushedPiece) {
        const auto piece = bytes.subspan(at, std::min(kFlushedPiece, bytes.size() - at));
        if (Result<void> written = writeDescriptor(descriptor_, piece, fileSystem_); !written) {
            return written;
        }
        if (piece.size() == kFlushedPiece) fileSystem_.beginFlush(descriptor_, at, piece.size());
    }
    const int flushed = uninterrupted([&] { return fileSystem_.fsync(descriptor_); });
    if (flushed < 0) return writeError(flushed);
    struct stat status = {};
    const int found = fileSystem_.fstat(descriptor_, status);
    if (found < 0) return writeError(found);
    if (static_cast<std::uint64_t>(status.st_size) != bytes.size()) {
        return {ErrorCode::CannotWrite, "The file does not have the size that was written"};
    }
    return {};
}

Result<void> TemporaryFile::publish(const std::string& target, Overwrite overwrite) {
    const int renamed = overwrite == Overwrite::Allow
                            ? fileSystem_.rename(path_.c_str(), target.c_str())
                            : giveNewName(target);
    if (renamed == -EEXIST && overwrite == Overwrite::Refuse) return alreadyExists();
    if (renamed < 0) return writeError(renamed);
    named_ = false;
    return {};
}

/// Renames without replacing. Where the file system lacks that, a second hard link does the same;
/// where it lacks those too (FAT), looking first is all that is left.
int TemporaryFile::giveNewName(const std::string& target) {
    const int renamed = fileSystem_.renameNoReplace(path_.c_str(), target.c_str());
    if (!isNotOffered(renamed)) return renamed;
    const int linked = fileSystem_.link(path_.c_str(), target.c_str());
    if (linked == 0) {
        fileSystem_.unlink(path_.c_str());
        return 0;
    }
    if (linked != -EPERM && !isNotOffered(linked)) return linked;
    return renameAfterALook(path_.c_str(), target.c_str(), fileSystem_);
}

/// A descriptor that does not block yet. Whoever reads a pipe may be about to open it.
int openStream(const std::string& path, FileSystem& fileSystem) {
    const auto open = [&] {
        return uninterrupted(
            [&] { return fileSystem.open(path.c_str(), O_WRONLY | O_NOCTTY | O_NONBLOCK, 0); });
    };
    int descriptor = open();
    for (auto waited = kPipePause; descriptor == -ENXIO && waited <= kPipePatience;
         waited += kPipePause) {
        fileSystem.pause(kPipePause);
        descriptor = open();
    }
    return descriptor;
}

Result<void> writeBlocking(int descriptor, std::span<const std::uint8_t> bytes,
                           FileSystem& fileSystem) {
    const int blocking = fileSystem.setBlocking(descriptor);
    if (blocking < 0) return writeError(blocking);
    return writeDescriptor(descriptor, bytes, fileSystem);
}

Result<void> writeStream(const std::string& path, const struct stat& status,
                         std::span<const std::uint8_t> bytes, FileSystem& fileSystem) {
    const int descriptor = openStream(path, fileSystem);
    if (descriptor == -ENXIO && S_ISFIFO(status.st_mode)) {
        return {ErrorCode::CannotWrite, "Nothing reads from this pipe"};
    }
    if (descriptor < 0) return writeError(descriptor);
    Result<void> written = writeBlocking(descriptor, bytes, fileSystem);
    const int closed = fileSystem.close(descriptor);
    if (written && closed < 0 && closed != -EINTR) return writeError(closed);
    return written;
}

/// Makes the file with the permissions for its real name.
Result<void> giveTemporaryName(TemporaryFile& file, const std::string& folder,
                               const struct stat* replaced, NewOwner newOwner) {
    if (replaced == nullptr) {
        // The kernel applies the mask, or what the folder says of new files in an access list;
        // nothing else knows both. Whoever may open the file now may afterwards, too.
        Result<void> done = file.create(folder, kNewFileMode);
        if (done && newOwner == NewOwner::FoldersOwner) file.giveToOwnerOf(folder);
        return done;
    }
    if (Result<void> done = file.create(folder, kPrivateFileMode); !done) return done;
    return file.adopt(*replaced);
}

Result<void> replaceInOneStep(const std::string& target, const struct stat* replaced,
                              std::span<const std::uint8_t> bytes, Overwrite overwrite,
                              FileSystem& fileSystem, NewOwner newOwner) {
    const std::string folder = folderOfPath(target);
    removeLeftOversOnce(folder, fileSystem);
    {
        TemporaryFile file(fileSystem);
        if (Result<void> done = giveTemporaryName(file, folder, replaced, newOwner); !done)
            return done;
        if (Result<void> done = file.fill(bytes); !done) return done;
        if (Result<void> done = file.publish(target, overwrite); !done) return done;
    }
    if (const Result<void> flushed = flushFolder(folder, fileSystem); !flushed) {
        return {ErrorCode::CannotWrite,
                filled("The file was written, but its folder could not be flushed: %1",
                       {flushed.error().message})};
    }
    return {};
}

void giveFolderToOwnerOfParent(const std::string& folder, FileSystem& fileSystem) {
    const int opened = uninterrupted(
        [&] { return fileSystem.open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW, 0); });
    if (opened < 0) return;
    giveToOwnerOf(folderOfPath(folder), opened, fileSystem);
    fileSystem.close(opened);
}

}  // namespace

Result<void> writeFileSafely(const std::string& path, std::span<const std::uint8_t> bytes,
                             Overwrite overwrite, FileSystem& fileSystem, NewOwner newOwner) try {
    if (path.empty()) return {ErrorCode::InvalidArgument, "The file name is empty"};
    struct stat status = {};
    const int found = fileSystem.stat(path.c_str(), status);
    if (found == 0 && isStream(status)) return writeStream(path, status, bytes, fileSystem);
    if (found == 0 && S_ISDIR(status.st_mode)) return {ErrorCode::CannotWrite, "It is a folder"};
    if (overwrite == Overwrite::Refuse) {
        struct stat link = {};
        if (fileSystem.lstat(path.c_str(), link) == 0) return alreadyExists();
    }
    if (found < 0 && found != -ENOENT && found != -ELOOP) return writeError(found);
    if (found < 0) {
        const Result<std::string> target = followLinks(path, fileSystem);
        if (!target) return target.error();
        return replaceInOneStep(*target, nullptr, bytes, overwrite, fileSystem, newOwner);
    }
    if (!S_ISREG(status.st_mode)) return {ErrorCode::CannotWrite, "It is not an ordinary file"};
    const int writable = fileSystem.canWrite(path.c_str());
    if (writable < 0) return writeError(writable);
    const Result<std::string> target = followLinks(path, fileSystem);
    if (!target) return target.error();
    return replaceInOneStep(*target, &status, bytes, overwrite, fileSystem, newOwner);
} catch (const std::bad_alloc&) {
    return outOfMemory();
}

Result<void> writeDescriptor(int descriptor, std::span<const std::uint8_t> bytes,
                             FileSystem& fileSystem) {
    while (!bytes.empty()) {
        const ssize_t count =
            uninterrupted([&] { return fileSystem.write(descriptor, bytes.data(), bytes.size()); });
        if (count < 0) return writeError(static_cast<int>(count));
        // POSIX allows a count of 0; going round again might never end.
        if (count == 0) return {ErrorCode::CannotWrite, "Nothing more could be written"};
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return {};
}

void giveToOwnerOf(const std::string& folder, int descriptor, FileSystem& fileSystem) {
    struct stat own = {};
    struct stat theirs = {};
    if (fileSystem.fstat(descriptor, own) == 0 && fileSystem.stat(folder.c_str(), theirs) == 0 &&
        own.st_uid != theirs.st_uid) {
        fileSystem.fchown(descriptor, theirs.st_uid, theirs.st_gid);
    }
}

std::string folderOfPath(const std::string& path) {
    const std::size_t slash = path.find_last_of('/');
    if (slash == std::string::npos) return ".";
    return path.substr(0, std::max<std::size_t>(slash, 1));  // the root is its slash
}

Result<std::string> followLinks(const std::string& path, FileSystem& fileSystem) {
    std::string at = path;
    for (int i = 0; i < kMaxLinks; ++i) {
        std::string target;
        const int read = fileSystem.readlink(at.c_str(), target);
        if (read == -EINVAL || read == -ENOENT) return at;  // no link, or nothing
        if (read < 0) return writeError(read);
        if (!target.starts_with('/')) target.insert(0, folderOfPath(at) + "/");
        at = std::move(target);
    }
    return writeError(-ELOOP);
}

Result<void> flushFolder(const std::string& folder, FileSystem& fileSystem) {
    const int descriptor =
        uninterrupted([&] { return fileSystem.open(folder.c_str(), O_RDONLY | O_DIRECTORY, 0); });
    if (descriptor == -EACCES) return {};
    int flushed = descriptor;
    if (descriptor >= 0) {
        flushed = uninterrupted([&] { return fileSystem.fsync(descriptor); });
        fileSystem.close(descriptor);
    }
    if (flushed >= 0 || isNotOffered(flushed)) return {};
    return writeError(flushed);
}

Result<void> makeFolders(const std::string& folder, FileSystem& fileSystem, NewOwner newOwner) {
    for (std::size_t end = 0; end != std::string::npos;) {
        end = folder.find('/', end + 1);
        const std::string part = folder.substr(0, end);
        const int made = fileSystem.mkdir(part.c_str(), kPrivateFolderMode);
        if (made == 0 && newOwner == NewOwner::FoldersOwner) {
            giveFolderToOwnerOfParent(part, fileSystem);
        }
        if (made == 0 || made == -EEXIST) continue;
        struct stat status = {};
        if (fileSystem.stat(part.c_str(), status) == 0) continue;  // a read-only parent, say
        return writeError(made);
    }
    return {};
}

}  // namespace skarnel
