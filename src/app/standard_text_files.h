// Writing text and plain data to files with the operating system's own calls.
#pragma once

#include "platform/text_files.h"
#include "storage/file_system.h"

namespace skarnel {

/// Writes all bytes, never through a link: to a file of another name beside it, which then takes
/// the place of `path` in one step. On failure what was there stays and nothing is left beside it.
/// A file that was not there has permissions for the user alone; one that was keeps its own. The
/// message of an error is the cause alone.
Result<void> writePrivateFile(const std::string& path, ByteView bytes, FileSystem& fileSystem);

/// For the temporary files of text imaging: nothing is flushed to the disk. What is to be written
/// atomically goes the way of saved pictures instead.
class StandardTextFiles final : public TextFiles {
  public:
    /// Borrows the file system.
    explicit StandardTextFiles(FileSystem& fileSystem = systemFileSystem())
        : fileSystem_(fileSystem) {}

    TextWriteOutcome writeStringToFile(std::u16string_view text, std::string_view path,
                                       Atomically atomically, std::int32_t encoding) override;
    bool writeDataToFile(ByteView data, std::string_view path, Atomically atomically) override;

  private:
    Result<void> write(ByteView data, std::string_view path, Atomically atomically);
    FileSystem& fileSystem_;
};

}  // namespace skarnel
