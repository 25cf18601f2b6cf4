#include "storage/whole_file.h"

#include <fcntl.h>

#include <algorithm>
#include <new>
#include <optional>

#include "storage/pipe_patience.h"
#include "util/log/message.h"
#include "util/log/system_error.h"

namespace skarnel {
namespace {

using FileBytes = std::vector<std::uint8_t>;

constexpr std::size_t kStartBytes = 64;  // enough to know any file by
constexpr std::size_t kChunkBytes = std::size_t{1} << 16;

Error readError(int result) {
    return {ErrorCode::CannotRead,
            result == -EISDIR ? marked("It is a folder") : describeError(-result)};
}

Error tooLarge() {
    return {ErrorCode::TooLarge, "The file is too large"};
}

/// The text is short enough to need no memory itself.
Error outOfMemory() {
    return {ErrorCode::OutOfMemory, "Out of memory"};
}

ReadLimit limitOf(std::uint64_t maxBytes) {
    return [maxBytes](std::span<const std::uint8_t>) -> Result<std::uint64_t> { return maxBytes; };
}

/// One read of at most `most` bytes onto the end: how many came, or the negative error number.
ssize_t append(FileBytes& bytes, std::size_t most, int descriptor, FileSystem& fileSystem) {
    const std::size_t before = bytes.size();
    bytes.resize(before + most);
    const ssize_t count = uninterrupted(
        [&] { return fileSystem.read(descriptor, bytes.data() + before, bytes.size() - before); });
    bytes.resize(before + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    return count;
}

/// Begins to read a pipe that was opened without blocking, and lets it block: `start` holds what
/// came first. Nothing comes as long as nobody writes, and then the system says that it would have
/// to wait.
std::optional<Error> waitForWriter(int pipe, FileBytes& start, FileSystem& fileSystem) {
    ssize_t count = append(start, kChunkBytes, pipe, fileSystem);
    for (auto waited = kPipePause; count == 0 && waited <= kPipePatience; waited += kPipePause) {
        fileSystem.pause(kPipePause);
        count = append(start, kChunkBytes, pipe, fileSystem);
    }
    if (count == 0) return Error{ErrorCode::CannotRead, "Nothing comes through this pipe"};
    if (count < 0 && count != -EAGAIN) return readError(static_cast<int>(count));
    const int blocking = fileSystem.setBlocking(pipe);
    if (blocking < 0) return readError(blocking);
    return std::nullopt;
}

/// `bytes` holds what was read before.
Result<FileBytes> readRest(int descriptor, FileBytes bytes, const ReadLimit& limit,
                           FileSystem& fileSystem) {
    bool ended = false;
    const auto readSome = [&](std::size_t most) -> std::optional<Error> {
        const ssize_t count = append(bytes, most, descriptor, fileSystem);
        ended = count == 0;
        if (count < 0) return readError(static_cast<int>(count));
        return std::nullopt;
    };
    while (!ended && bytes.size() < kStartBytes) {
        if (auto error = readSome(kStartBytes)) return *error;
    }
    const Result<std::uint64_t> most = limit(bytes);
    if (!most) return most.error();
    struct stat status = {};
    if (fileSystem.fstat(descriptor, status) == 0 && S_ISREG(status.st_mode)) {
        if (static_cast<std::uint64_t>(status.st_size) > *most) return tooLarge();
        bytes.reserve(static_cast<std::size_t>(status.st_size) + 1);
    }
    while (!ended) {
        if (bytes.size() > *most) return tooLarge();
        // What was set aside for a file of known size ends with a byte that stays empty.
        const std::size_t room = bytes.capacity() - bytes.size();
        if (auto error = readSome(room > 0 ? room : kChunkBytes)) return *error;
    }
    if (bytes.size() > *most) return tooLarge();
    return bytes;
}

Result<FileBytes> readOpened(int descriptor, const ReadLimit& limit, FileSystem& fileSystem) {
    struct stat status = {};
    const int found = fileSystem.fstat(descriptor, status);
    if (found < 0) return readError(found);
    if (S_ISCHR(status.st_mode) || S_ISBLK(status.st_mode)) {
        return {ErrorCode::CannotRead, "It is not an ordinary file"};
    }
    FileBytes start;
    if (S_ISFIFO(status.st_mode)) {
        if (auto error = waitForWriter(descriptor, start, fileSystem)) return *error;
    }
    return readRest(descriptor, std::move(start), limit, fileSystem);
}

}  // namespace

Result<FileBytes> readDescriptor(int descriptor, const ReadLimit& limit,
                                 FileSystem& fileSystem) try {
    return readRest(descriptor, {}, limit, fileSystem);
} catch (const std::bad_alloc&) {
    return outOfMemory();
}

Result<FileBytes> readDescriptor(int descriptor, std::uint64_t maxBytes, FileSystem& fileSystem) {
    return readDescriptor(descriptor, limitOf(maxBytes), fileSystem);
}

Result<FileBytes> readWholeFile(const std::string& path, const ReadLimit& limit,
                                FileSystem& fileSystem) {
    // Not blocking, so that nothing waits where nobody writes.
    const int descriptor = uninterrupted(
        [&] { return fileSystem.open(path.c_str(), O_RDONLY | O_NOCTTY | O_NONBLOCK, 0); });
    if (descriptor < 0) {
        return {descriptor == -ENOENT ? ErrorCode::NotFound : ErrorCode::CannotRead,
                describeError(-descriptor)};
    }
    Result<FileBytes> bytes = [&]() -> Result<FileBytes> {
        try {
            return readOpened(descriptor, limit, fileSystem);
        } catch (const std::bad_alloc&) {
            return outOfMemory();
        }
    }();
    fileSystem.close(descriptor);
    return bytes;
}

Result<FileBytes> readWholeFile(const std::string& path, std::uint64_t maxBytes,
                                FileSystem& fileSystem) {
    return readWholeFile(path, limitOf(maxBytes), fileSystem);
}

}  // namespace skarnel
