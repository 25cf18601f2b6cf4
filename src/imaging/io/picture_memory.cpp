#include "imaging/io/picture_memory.h"

#include <utility>

namespace skarnel::io {
namespace {

PictureMemory pictureMemory = nullptr;

}  // namespace

void setPictureMemory(PictureMemory memory) {
    pictureMemory = memory;
}

std::optional<PixelBuffer> newPictureBuffer(int width, int height, PictureContents contents) {
    if (pictureMemory == nullptr) {
        return contents == PictureContents::Zeroed ? PixelBuffer::zeroed(width, height)
                                                   : PixelBuffer::uninitialized(width, height);
    }
    if (width < 1 || height < 1 || width > INT32_MAX / 4) return std::nullopt;
    auto bytes = pictureMemory(std::size_t{4} * static_cast<std::size_t>(width) *
                               static_cast<std::size_t>(height));
    if (!bytes) return std::nullopt;
    return PixelBuffer::adopt(std::move(bytes), width, height);
}

}  // namespace skarnel::io
