// Opening and reading a picture's file.
#pragma once

#include <cstddef>
#include <string>
#include <utility>

#include "imaging/io/image_io.h"
#include "util/log/message.h"
#include "util/log/result.h"

namespace skarnel::io {

/// Short enough for a string to hold without memory of its own, which is what there is none of.
inline constexpr const char* kNoMemory = marked("No memory left");

/// Above any picture within the pixel limit that could be decoded at all.
inline constexpr std::size_t kMaxFileBytes = std::size_t{8} << 30;

/// Closes its descriptor. Move-only; -1 when empty.
class FileDescriptor {
  public:
    explicit FileDescriptor(int number = -1) : number_(number) {}
    FileDescriptor(FileDescriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    ~FileDescriptor();

    int number() const { return number_; }
    int release() { return std::exchange(number_, -1); }

  private:
    int number_;
};

/// A regular file for reading; NotFound or CannotRead with the system's reason otherwise.
Result<FileDescriptor> openPicture(const std::string& path);

/// Everything from the descriptor's position to its end; UnknownFormat, and no more is read, when
/// the first bytes are of no picture. TooLarge for more than `maxBytes`.
Result<Bytes> readAll(int descriptor, std::size_t maxBytes = kMaxFileBytes);

}  // namespace skarnel::io
