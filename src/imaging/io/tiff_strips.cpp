#include "imaging/io/tiff_strips.h"

#include <libdeflate.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "imaging/io/deflate.h"
#include "imaging/io/lzw_encoder.h"

namespace skarnel::io {
namespace {

/// The picture as strips of differences between neighbours in a row.
class Differences {
  public:
    Differences(PixelView pixels, int rowsPerStrip)
        : pixels_(pixels),
          rowsPerStrip_(rowsPerStrip),
          rowBytes_(static_cast<std::size_t>(pixels.width) *
                    static_cast<std::size_t>(pixels.samplesPerPixel)) {}

    std::size_t pixelBytes() const { return static_cast<std::size_t>(pixels_.samplesPerPixel); }

    std::uint32_t strips() const {
        return static_cast<std::uint32_t>((std::int64_t{pixels_.height} + rowsPerStrip_ - 1) /
                                          rowsPerStrip_);
    }

    /// Replaces `out` by the strip.
    void strip(std::uint32_t number, Bytes& out) const {
        const int first = static_cast<int>(number) * rowsPerStrip_;
        const int rows = std::min(rowsPerStrip_, pixels_.height - first);
        out.resize(rowBytes_ * static_cast<std::size_t>(rows));
        for (int y = 0; y < rows; ++y) {
            differences(pixels_.row(first + y),
                        out.data() + rowBytes_ * static_cast<std::size_t>(y));
        }
    }

  private:
    void differences(const std::uint8_t* row, std::uint8_t* __restrict out) const {
        const auto samples = static_cast<std::size_t>(pixels_.samplesPerPixel);
        std::memcpy(out, row, samples);
        for (std::size_t i = samples; i < rowBytes_; ++i) {
            out[i] = static_cast<std::uint8_t>(row[i] - row[i - samples]);
        }
    }

    PixelView pixels_;
    int rowsPerStrip_;
    std::size_t rowBytes_;
};

bool codeWithLzw(const Differences& differences, const StripSink& sink) {
    LzwEncoder encoder;
    std::array<Bytes, 2> strips;
    std::array<Bytes, 2> codes;
    const std::uint32_t count = differences.strips();
    std::uint32_t number = 0;
    for (; number + 1 < count; number += 2) {
        differences.strip(number, strips[0]);
        differences.strip(number + 1, strips[1]);
        encoder.encodeTwo(strips[0], codes[0], strips[1], codes[1]);
        if (!sink(number, codes[0]) || !sink(number + 1, codes[1])) return false;
    }
    if (number == count) return true;
    differences.strip(number, strips[0]);
    encoder.encode(strips[0], codes[0]);
    return sink(number, codes[0]);
}

bool codeInBlocks(const Differences& differences, DeflateWay way, const StripSink& sink) {
    Bytes strip;
    Bytes codes;
    for (std::uint32_t number = 0; number < differences.strips(); ++number) {
        differences.strip(number, strip);
        codes.clear();
        const auto deflater = makeBlockDeflater(way, codes, differences.pixelBytes());
        deflater->add(strip);
        deflater->finish();
        if (!sink(number, codes)) return false;
    }
    return true;
}

bool codeWithSearch(const Differences& differences, int level, const StripSink& sink) {
    const Compressor compressor = makeCompressor(level);
    Bytes strip;
    Bytes codes;
    for (std::uint32_t number = 0; number < differences.strips(); ++number) {
        differences.strip(number, strip);
        codes.resize(libdeflate_zlib_compress_bound(compressor.get(), strip.size()));
        const std::size_t size = libdeflate_zlib_compress(compressor.get(), strip.data(),
                                                          strip.size(), codes.data(), codes.size());
        if (size == 0 || !sink(number, ByteView(codes).first(size))) return false;
    }
    return true;
}

/// A few strips, evenly spread, that stand for all of them.
Bytes sampleOf(const Differences& differences) {
    constexpr std::uint32_t kPieces = 8;
    constexpr std::size_t kPieceBytes = std::size_t{96} << 10;
    const std::uint32_t step = std::max(1U, differences.strips() / kPieces);
    Bytes sample;
    Bytes strip;
    for (std::uint32_t number = 0; number < differences.strips(); number += step) {
        differences.strip(number, strip);
        const std::size_t size = step == 1 ? strip.size() : std::min(strip.size(), kPieceBytes);
        sample.insert(sample.end(), strip.begin(),
                      strip.begin() + static_cast<std::ptrdiff_t>(size));
    }
    return sample;
}

}  // namespace

bool codeStrips(PixelView pixels, int rowsPerStrip, StripCode code, std::optional<int> level,
                const StripSink& sink) {
    const Differences differences(pixels, rowsPerStrip);
    if (code == StripCode::Lzw) return codeWithLzw(differences, sink);
    if (level) return codeWithSearch(differences, *level, sink);
    const DeflateWay way = fastestWay(sampleOf(differences), differences.pixelBytes());
    if (way == DeflateWay::Search) return codeWithSearch(differences, kFastestLevel, sink);
    return codeInBlocks(differences, way, sink);
}

}  // namespace skarnel::io
