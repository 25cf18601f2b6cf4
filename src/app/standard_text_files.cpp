#include "app/standard_text_files.h"

#include <fcntl.h>

#include "storage/safe_file.h"
#include "textimaging/string_encodings.h"
#include "util/log/system_error.h"
#include "util/log/system_log.h"

namespace skarnel {
namespace {

constexpr mode_t kUserAlone = 0600;

Result<void> cannotWrite(int error) {
    return {ErrorCode::CannotWrite, describeError(-error)};
}

}  // namespace

Result<void> writePrivateFile(const std::string& path, ByteView bytes, FileSystem& fileSystem) {
    int descriptor = uninterrupted([&] {
        return fileSystem.open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, kUserAlone);
    });
    const bool isNew = descriptor >= 0;
    if (descriptor == -EEXIST)
        descriptor = uninterrupted(
            [&] { return fileSystem.open(path.c_str(), O_WRONLY | O_TRUNC | O_NOFOLLOW, 0); });
    if (descriptor < 0) return cannotWrite(descriptor);
    Result<void> result = writeDescriptor(descriptor, bytes, fileSystem);
    const int closed = fileSystem.close(descriptor);
    if (result && closed < 0 && closed != -EINTR) result = cannotWrite(closed);
    if (!result && isNew) fileSystem.unlink(path.c_str());
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
