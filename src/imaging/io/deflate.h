// Deflate for pictures' rows of differences: which way is worth its time.
#pragma once

#include <cstdint>
#include <memory>

#include "imaging/io/block_deflate.h"
#include "imaging/io/image_io.h"

struct libdeflate_compressor;

namespace skarnel::io {

/// The level that stands for "none was given".
inline constexpr int kFastestLevel = 1;
inline constexpr int kSmallestLevel = 12;

/// How to compress without a level, from the fastest to the one that finds most.
enum class DeflateWay { Runs, Repeats, Search };

/// The fastest way that suits these bytes: RunDeflater where it makes at most a fifth more of them
/// than a search for repeats at every byte does, RepeatDeflater where it makes at most an eighth
/// more, otherwise that search. Costs about 8 ns a byte, so a sample of a large picture should do.
/// Always the search for bytes too few to gain anything. `pixelBytes` is 3 or 4. Throws
/// std::bad_alloc.
DeflateWay fastestWay(ByteView sample, std::size_t pixelBytes);

/// For Runs or Repeats, with its stream at the end of `out`, which must outlive it. Throws
/// std::bad_alloc.
std::unique_ptr<BlockDeflater> makeBlockDeflater(DeflateWay way, Bytes& out,
                                                 std::size_t pixelBytes);

struct FreeCompressor {
    void operator()(libdeflate_compressor* compressor) const;
};
using Compressor = std::unique_ptr<libdeflate_compressor, FreeCompressor>;

/// Level 0 (stored) to 12. Throws std::bad_alloc.
Compressor makeCompressor(int level);

}  // namespace skarnel::io
