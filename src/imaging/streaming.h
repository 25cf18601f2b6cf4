// When results are stored past the caches.
#pragma once

#include <cstddef>

#include "imaging/cgimage.h"

namespace skarnel {

/// True for blocks that are much larger than what a core's own cache holds: storing them through
/// the cache would first read every line from memory. Smaller ones are likely to be read soon.
inline bool passesCaches(std::size_t bytes) {
    constexpr std::size_t kFromBytes = std::size_t{24} << 20;
    return bytes >= kFromBytes;
}

inline bool usesStreaming(const MutablePixelView& target) {
    return passesCaches(static_cast<std::size_t>(target.strideBytes * target.height));
}

}  // namespace skarnel
