// When results are stored past the caches.
#pragma once

#include <cstddef>

#include "imaging/cgimage.h"

namespace skarnel {

/// True for bitmaps that are much larger than what a core's own cache holds: storing them through
/// the cache would first read every line from memory. Smaller ones are likely to be read soon.
inline bool usesStreaming(const MutablePixelView& target) {
    constexpr std::ptrdiff_t kFromBytes = std::ptrdiff_t{24} << 20;
    return target.strideBytes * target.height >= kFromBytes;
}

}  // namespace skarnel
