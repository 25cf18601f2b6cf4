// Deflate for pictures' rows of differences: which way is worth its time.
#pragma once

#include <cstdint>
#include <memory>

#include "imaging/io/image_io.h"

struct libdeflate_compressor;

namespace skarnel::io {

/// The level that stands for "none was given".
inline constexpr int kFastestLevel = 1;
inline constexpr int kSmallestLevel = 12;

/// Whether codes and runs alone (RunDeflater) make of these bytes at most a fifth more than a
/// search for repeats does. Costs about 6 ns a byte, so a sample of a large picture should do.
/// False for bytes too few to gain anything. Throws std::bad_alloc.
bool runsAreEnough(ByteView sample);

struct FreeCompressor {
    void operator()(libdeflate_compressor* compressor) const;
};
using Compressor = std::unique_ptr<libdeflate_compressor, FreeCompressor>;

/// Level 0 (stored) to 12. Throws std::bad_alloc.
Compressor makeCompressor(int level);

}  // namespace skarnel::io
