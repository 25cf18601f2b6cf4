#include "imaging/io/deflate.h"

#include <libdeflate.h>

#include <new>

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

bool runsAreEnough(ByteView sample) {
    // Below that a search takes a millisecond.
    constexpr std::size_t kWorthTheHaste = std::size_t{256} << 10;
    if (sample.size() < kWorthTheHaste) return false;
    const Compressor compressor = makeCompressor(kFastestLevel);
    Bytes searched(libdeflate_zlib_compress_bound(compressor.get(), sample.size()));
    const std::size_t searchedSize = libdeflate_zlib_compress(
        compressor.get(), sample.data(), sample.size(), searched.data(), searched.size());
    Bytes runs;
    runs.reserve(searched.size());
    RunDeflater deflater(runs);
    deflater.add(sample);
    deflater.finish();
    return runs.size() <= searchedSize + searchedSize / 5;
}

}  // namespace skarnel::io
