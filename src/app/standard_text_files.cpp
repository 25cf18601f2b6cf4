#include "app/standard_text_files.h"

#include <fcntl.h>
#include <sys/file.h>

#include "storage/left_overs.h"
#include "storage/safe_file.h"
#include "textimaging/string_encodings.h"
#include "util/log/system_error.h"
#include "util/log/system_log.h"

namespace skarnel {
namespace {

constexpr mode_t kUserAlone = 0600;
constexpr mode_t kPermissionBits = 0777;

Result<void> cannotWrite(int error) {
    return {ErrorCode::CannotWrite, describeError(-error)};
}

/// Fills the new file behind `descriptor` and closes it. With `replaced` it gets the permissions of
/// that file.
Result<void> fillAndClose(int descriptor, ByteView bytes, const struct stat* replaced,
                          FileSystem& fileSystem) {
    // For those who remove what ended programs left. Without the lock they may come between, and
    // then the file gets no name and the write fails.
    static_cast<void>(fileSystem.flock(descriptor, LOCK_EX | LOCK_NB));
    Result<void> result = writeDescriptor(descriptor, bytes, fileSystem);
    if (result && replaced != nullptr) {
        const int changed = fileSystem.fchmod(descriptor, replaced->st_mode & kPermissionBits);
        if (changed < 0) result = cannotWrite(changed);
    }
    const int closed = fileSystem.close(descriptor);
    if (result && closed < 0 && closed != -EINTR) result = cannotWrite(closed);
    return result;
}

}  // namespace

Result<void> writePrivateFile(const std::string& path, ByteView bytes, FileSystem& fileSystem) {
    struct stat old = {};
    const int found = fileSystem.lstat(path.c_str(), old);
    if (found < 0 && found != -ENOENT) return cannotWrite(found);
    if (found == 0 && !S_ISREG(old.st_mode))
        return {ErrorCode::CannotWrite, "It is not an ordinary file"};
    // Whoever reads the file meets the old bytes or the new ones, also when the disk is full half
    // way: the picture of a page is written twice, and its first form is worth keeping.
    const std::string fresh = temporaryFilePath(folderOfPath(path));
    const int descriptor = uninterrupted([&] {
        return fileSystem.open(fresh.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, kUserAlone);
    });
    if (descriptor < 0) return cannotWrite(descriptor);
    Result<void> result = fillAndClose(descriptor, bytes, found == 0 ? &old : nullptr, fileSystem);
    if (result) {
        const int renamed = fileSystem.rename(fresh.c_str(), path.c_str());
        if (renamed < 0) result = cannotWrite(renamed);
    }
    if (!result) fileSystem.unlink(fresh.c_str());
    return result;
}

Result<void> StandardTextFiles::write(ByteView data, std::string_view path, Atomically atomically) {
    const std::string file(path);
    Result<void> result = atomically == Atomically::Yes
                              ? writeFileSafely(file, data, Overwrite::Allow, fileSystem_)
                              : writePrivateFile(file, data, fileSystem_);
    if (!result) systemLog("Couldn't write " + file + ": " + result.error().message);
    return result;
}

TextWriteOutcome StandardTextFiles::writeStringToFile(std::u16string_view text,
                                                      std::string_view path, Atomically atomically,
                                                      std::int32_t encoding) {
    const std::optional<Bytes> data = encodeString(text, encoding);
    if (!data) return {false, Error{ErrorCode::Unsupported, "The encoding cannot hold the text"}};
    const Result<void> result = write(*data, path, atomically);
    if (!result) return {false, result.error()};
    return {true, std::nullopt};
}

bool StandardTextFiles::writeDataToFile(ByteView data, std::string_view path,
                                        Atomically atomically) {
    return write(data, path, atomically).hasValue();
}

}  // namespace skarnel
