// Where the readers get the memory of a picture from.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

#include "imaging/cgimage.h"

namespace skarnel::io {

enum class PictureContents { Zeroed, Undefined };

/// Gives at least `size` bytes, all zero and aligned to 64, or null.
using PictureMemory = std::shared_ptr<std::uint8_t> (*)(std::size_t size);

/// Makes the readers of this process take picture memory from `memory` instead of the heap (null =
/// the heap again). The decoder's helper decodes straight into what it hands back by this. Set it
/// before the first decoding.
void setPictureMemory(PictureMemory memory);

/// A buffer for a picture whose size has been checked; none without memory.
std::optional<PixelBuffer> newPictureBuffer(int width, int height, PictureContents contents);

}  // namespace skarnel::io
