#include "imaging/io/read_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "util/log/system_error.h"

namespace skarnel::io {
namespace {

constexpr std::size_t kStartBytes = 64;  // enough to know any format by

Error tooLarge() {
    return {ErrorCode::TooLarge, "The file is larger than 8 GB"};
}

Error readError(int number) {
    return {number == ENOENT || number == ENOTDIR ? ErrorCode::NotFound : ErrorCode::CannotRead,
            describeError(number)};
}

}  // namespace

FileDescriptor::~FileDescriptor() {
    if (number_ >= 0) ::close(number_);
}

Result<FileDescriptor> openPicture(const std::string& path) {
    // Not blocking, so that a pipe without a writer is refused instead of waited for.
    FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (file.number() < 0) return readError(errno);
    struct stat status {};
    if (::fstat(file.number(), &status) != 0) return readError(errno);
    if (S_ISDIR(status.st_mode)) return readError(EISDIR);
    if (!S_ISREG(status.st_mode)) return {ErrorCode::CannotRead, "Not a regular file"};
    return file;
}

Result<Bytes> readAll(int descriptor, std::size_t maxBytes) {
    // By seeking, not by asking for the file's status: the decoder's cell allows no such call.
    const off_t here = ::lseek(descriptor, 0, SEEK_CUR);
    const off_t end = here < 0 ? -1 : ::lseek(descriptor, 0, SEEK_END);
    std::size_t expected = std::size_t{1} << 20U;
    if (end >= here && here >= 0 && ::lseek(descriptor, here, SEEK_SET) == here) {
        if (static_cast<std::uint64_t>(end - here) > maxBytes) return tooLarge();
        // One more, so that the end is seen without growing.
        expected = static_cast<std::size_t>(end - here) + 1;
    }
    Bytes bytes(kStartBytes);
    std::size_t size = 0;
    for (;;) {
        if (size == bytes.size()) {
            if (size >= maxBytes) return tooLarge();
            if (size == kStartBytes && imageTypeOfContent(bytes) == nullptr) {
                return {ErrorCode::UnknownFormat, "Not a picture of a known format"};
            }
            bytes.resize(size < expected ? expected : 2 * size);
        }
        const ssize_t count = ::read(descriptor, bytes.data() + size, bytes.size() - size);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return readError(errno);
        if (count == 0) break;
        size += static_cast<std::size_t>(count);
    }
    bytes.resize(size);
    return bytes;
}

}  // namespace skarnel::io
