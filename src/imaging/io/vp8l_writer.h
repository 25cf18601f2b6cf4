// Lossless WebP by our own hand, for pictures that the library takes too much memory for.
#pragma once

#include "imaging/cgimage.h"
#include "imaging/io/image_io.h"
#include "util/log/result.h"

namespace skarnel::io {

/// Writes the picture as lossless WebP (RFC 9649) in memory for some rows and the file: green
/// taken off red and blue, a predictor for each block of 16 pixels a side, prefix codes by how well
/// a block is predicted, and copies of what lies on the left and above. TooLarge above 16383
/// pixels a side. Throws std::bad_alloc.
Result<Bytes> writeLosslessWebP(const CGImage& image, const ImageProperties& properties);

/// From so many pixels on it is worth it; below, the library finds more repeats.
inline constexpr std::int64_t kOwnLosslessPixels = 4'000'000;

}  // namespace skarnel::io
