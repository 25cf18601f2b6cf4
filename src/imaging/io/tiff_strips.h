// The compressed strips of a TIFF: differences of neighbouring pixels, then LZW or deflate.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include "imaging/cgimage.h"
#include "imaging/io/image_io.h"

namespace skarnel::io {

enum class StripCode { Lzw, Deflate };

/// Takes the bytes of strip `number`, counted from the top; false ends the work.
using StripSink = std::function<bool(std::uint32_t number, ByteView codes)>;

/// Codes all strips of `rowsPerStrip` rows (the last may have fewer) with the horizontal predictor
/// (TIFF 6.0, section 14), and hands them on in order. `level` is deflate's, 1 to 12; without one
/// the fastest way is taken that suits the picture. False when the sink said so or a strip could
/// not be coded. Throws std::bad_alloc.
bool codeStrips(PixelView pixels, int rowsPerStrip, StripCode code, std::optional<int> level,
                const StripSink& sink);

}  // namespace skarnel::io
