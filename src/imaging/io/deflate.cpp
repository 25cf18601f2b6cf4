#include "imaging/io/deflate.h"

#include <libdeflate.h>

#include <cassert>
#include <new>

#include "imaging/io/repeat_deflate.h"
#include "imaging/io/run_deflate.h"

namespace skarnel::io {

void FreeCompressor::operator()(libdeflate_compressor* compressor) const {
    libdeflate_free_compressor(compressor);
}

Compressor makeCompressor(int level) {
    Compressor compressor(libdeflate_alloc_compressor(level));
    if (!compressor) throw std::bad_alloc();
    return compressor;
}

DeflateWay fastestWay(ByteView sample, std::size_t pixelBytes) {
    // Below that a search takes a millisecond.
    constexpr std::size_t kWorthTheHaste = std::size_t{256} << 10;
    if (sample.size() < kWorthTheHaste) return DeflateWay::Search;
    const Compressor compressor = makeCompressor(kFastestLevel);
    Bytes packed(libdeflate_zlib_compress_bound(compressor.get(), sample.size()));
    const std::size_t searched = libdeflate_zlib_compress(
        compressor.get(), sample.data(), sample.size(), packed.data(), packed.size());
    const auto isAtMost = [&](DeflateWay way, std::size_t most) {
        packed.clear();
        const auto deflater = makeBlockDeflater(way, packed, pixelBytes);
        deflater->add(sample);
        deflater->finish();
        return packed.size() <= most;
    };
    if (isAtMost(DeflateWay::Runs, searched + searched / 5)) return DeflateWay::Runs;
    if (isAtMost(DeflateWay::Repeats, searched + searched / 8)) return DeflateWay::Repeats;
    return DeflateWay::Search;
}

std::unique_ptr<BlockDeflater> makeBlockDeflater(DeflateWay way, Bytes& out,
                                                 std::size_t pixelBytes) {
    assert(way != DeflateWay::Search);
    if (way == DeflateWay::Runs) return std::make_unique<RunDeflater>(out);
    return std::make_unique<RepeatDeflater>(out, pixelBytes);
}

}  // namespace skarnel::io
