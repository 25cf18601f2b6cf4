// Large lossy WebP in little memory: the library codes the colours, the rest is ours.
#pragma once

#include "imaging/io/image_io.h"
#include "imaging/io/picture_rows.h"
#include "util/log/result.h"

namespace skarnel::io {

/// From so many pixels on it is worth it.
inline constexpr std::int64_t kLossyInBandsPixels = 4'000'000;

/// Writes rows of at most 16383 pixels a side with a `quality` from 0 to below 1, and an EXIF chunk
/// unless that is empty. The library gets luma and halved chroma, which are made a band of rows at
/// a time, and hands over what it has coded as soon as it can; alpha, for which it would take some
/// twenty bytes a pixel, is coded by appendWebPAlpha. Throws std::bad_alloc.
Result<Bytes> writeLossyWebPInBands(PictureRows& rows, double quality, const Bytes& exif);

}  // namespace skarnel::io
