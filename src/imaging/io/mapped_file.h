// A picture's bytes without reading them: the system brings in what a decoder looks at.
#pragma once

#include <cstddef>
#include <cstdint>

#include "imaging/io/image_io.h"
#include "imaging/io/read_file.h"

namespace skarnel::io {

/// An open file, mapped from its position to its end where that can be, and read otherwise.
///
/// A mapped file that is cut short by somebody else ends the process at the next look at what is
/// gone: for processes whose end is an answer.
class MappedFile {
  public:
    /// Maps, for the time when mapping is no longer allowed.
    explicit MappedFile(int descriptor);
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;
    ~MappedFile();

    std::size_t mappedBytes() const { return mappedBytes_; }

    /// Everything, with the errors of readAll; valid as long as this.
    Result<ByteView> read();

  private:
    int descriptor_;
    std::uint8_t* mapped_ = nullptr;  // null when the file has to be read
    std::size_t mappedBytes_ = 0;
    Bytes bytes_;
};

}  // namespace skarnel::io
