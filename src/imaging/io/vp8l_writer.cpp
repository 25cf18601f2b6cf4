#include "imaging/io/vp8l_writer.h"

#include <algorithm>
#include <array>
#include <bit>
#include <string_view>
#include <vector>

#include "imaging/io/exif_block.h"
#include "imaging/io/pixel_rows.h"
#include "imaging/io/riff_chunks.h"
#include "imaging/io/vp8l_codes.h"
#include "imaging/io/vp8l_rows.h"
#include "imaging/io/writers.h"

namespace skarnel::io {
namespace {

constexpr int kMaxSide = 16383;
constexpr std::size_t kShortestCopy = 4;

struct Pixel {
    std::uint8_t red, green, blue, alpha;
};

/// Splits a row into single pixels and copies, and gives each to `sink` with its group of codes.
template <typename Sink>
void walkRow(const Vp8lRows& rows, Sink& sink) {
    const std::vector<std::uint32_t>& row = rows.current();
    const std::vector<std::uint32_t>& above = rows.above();
    for (std::size_t x = 0; x < row.size();) {
        const std::size_t most = std::min<std::size_t>(row.size() - x, kVp8lLongestCopy);
        std::size_t left = 0;
        if (x > 0) {
            while (left < most && row[x + left] == row[x - 1]) ++left;
        }
        std::size_t top = 0;
        if (!rows.isFirst()) {
            while (top < most && row[x + top] == above[x + top]) ++top;
        }
        const std::size_t length = std::max(left, top);
        if (length < kShortestCopy) {
            sink.pixel(rows.groupAt(x), std::bit_cast<Pixel>(row[x]));
            ++x;
            continue;
        }
        sink.copy(rows.groupAt(x), static_cast<std::uint32_t>(length),
                  left == length ? kVp8lLeft : kVp8lAbove);
        x += length;
    }
}

/// Counts symbols, and the bits behind them.
struct Counter {
    std::vector<Vp8lCounts> groups;
    std::uint64_t extraBits = 0;

    void pixel(std::size_t group, Pixel pixel) {
        Vp8lCounts& counts = groups[group];
        ++counts.green[pixel.green];
        ++counts.red[pixel.red];
        ++counts.blue[pixel.blue];
        ++counts.alpha[pixel.alpha];
    }
    void copy(std::size_t group, std::uint32_t length, std::uint32_t distance) {
        const Vp8lNumber size = vp8lNumber(length);
        ++groups[group].green[256 + size.symbol];
        ++groups[group].distance[vp8lNumber(distance).symbol];
        extraBits += size.extraBits;
    }
};

/// Writes symbols by their codes.
struct Writer {
    Vp8lBits& bits;
    std::vector<Vp8lCodes> groups;

    void pixel(std::size_t group, Pixel pixel) {
        const Vp8lCodes& codes = groups[group];
        const PrefixCode green = codes.green[pixel.green];
        const PrefixCode red = codes.red[pixel.red];
        const PrefixCode blue = codes.blue[pixel.blue];
        const PrefixCode alpha = codes.alpha[pixel.alpha];
        const unsigned front = unsigned{green.length} + red.length;
        const std::uint64_t first = green.bits | std::uint64_t{red.bits} << green.length;
        const std::uint64_t second = blue.bits | std::uint64_t{alpha.bits} << blue.length;
        bits.put(first | second << front, front + blue.length + alpha.length);
    }
    void copy(std::size_t group, std::uint32_t length, std::uint32_t distance) {
        const Vp8lNumber size = vp8lNumber(length);
        bits.put(groups[group].green[256 + size.symbol]);
        bits.put(size.extra, size.extraBits);
        bits.put(groups[group].distance[vp8lNumber(distance).symbol]);
    }
};

template <typename Sink>
void walk(const CGImage& image, const Vp8lPlan& plan, Sink& sink) {
    Vp8lRows rows(image, plan);
    for (int y = 0; y < image.height(); ++y) {
        rows.next();
        walkRow(rows, sink);
    }
}

template <std::size_t N>
std::uint64_t bitsOf(const std::array<std::uint32_t, N>& counts,
                     const std::array<PrefixCode, N>& codes) {
    std::uint64_t bits = 0;
    for (std::size_t i = 0; i < N; ++i) bits += std::uint64_t{counts[i]} * codes[i].length;
    return bits;
}

std::uint64_t bitsOf(const Counter& counter, const std::vector<Vp8lCodes>& codes) {
    std::uint64_t bits = counter.extraBits;
    for (std::size_t i = 0; i < codes.size(); ++i) {
        const Vp8lCounts& counts = counter.groups[i];
        bits += bitsOf(counts.green, codes[i].green) + bitsOf(counts.red, codes[i].red) +
                bitsOf(counts.blue, codes[i].blue) + bitsOf(counts.alpha, codes[i].alpha) +
                bitsOf(counts.distance, codes[i].distance);
    }
    return bits;
}

void putHeader(Vp8lBits& bits, const CGImage& image, bool opaque, const Vp8lPlan& plan) {
    bits.put(0x2F, 8);
    bits.put(static_cast<unsigned>(image.width() - 1), 14);
    bits.put(static_cast<unsigned>(image.height() - 1), 14);
    bits.put(opaque ? 0 : 1, 1);
    bits.put(0, 3);  // the version
    constexpr unsigned kPredict = 0;
    constexpr unsigned kSubtractGreen = 2;
    bits.put(1 | kSubtractGreen << 1, 3);
    bits.put(1 | kPredict << 1, 3);
    bits.put(kVp8lBlockBits - 2, 3);
    putVp8lNumbers(bits, plan.modes);
    bits.put(0, 1);  // no more transforms
    bits.put(0, 1);  // no cache of colours
    bits.put(plan.groupCount > 1 ? 1 : 0, 1);
    if (plan.groupCount > 1) {
        bits.put(kVp8lBlockBits - 2, 3);
        putVp8lNumbers(bits, plan.groups);
    }
}

/// Appends the stream of the picture itself.
void appendStream(Bytes& out, const CGImage& image, bool opaque) {
    const Vp8lPlan plan = planVp8l(image);
    Counter counter;
    counter.groups.resize(plan.groupCount);
    walk(image, plan, counter);
    Vp8lBits bits(out);
    putHeader(bits, image, opaque, plan);
    Writer writer{bits, {}};
    for (const Vp8lCounts& counts : counter.groups) {
        writer.groups.push_back(putVp8lCodes(bits, counts));
    }
    // Grown piece by piece, the file would be held twice.
    constexpr std::size_t kAround = 8192;
    out.reserve(out.size() + bitsOf(counter, writer.groups) / 8 + kAround);
    walk(image, plan, writer);
    bits.finish();
}

}  // namespace

Result<Bytes> writeLosslessWebP(const CGImage& image, const ImageProperties& properties) {
    if (image.width() > kMaxSide || image.height() > kMaxSide) {
        return {ErrorCode::TooLarge, "WebP pictures have at most 16383 pixels a side"};
    }
    const bool opaque = isOpaque(image.pixels());
    const Bytes exif = writeExifBlock(exifTreeOf(properties), resolutionOf(properties));
    Bytes out;
    RiffChunk riff(out, "RIFF");
    constexpr std::string_view kForm = "WEBP";
    out.insert(out.end(), kForm.begin(), kForm.end());
    if (!exif.empty()) appendWebPFeatures(out, {image.width(), image.height(), !opaque, true});
    RiffChunk picture(out, "VP8L");
    appendStream(out, image, opaque);
    picture.end();
    if (!exif.empty()) appendRiffChunk(out, "EXIF", exif);
    riff.end();
    return out;
}

}  // namespace skarnel::io
