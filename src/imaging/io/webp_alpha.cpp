#include "imaging/io/webp_alpha.h"

#include <algorithm>

#include "imaging/io/vp8l_codes.h"

namespace skarnel::io {
namespace {

constexpr std::size_t kShortestCopy = 4;

std::size_t alikeFrom(const std::uint8_t* one, const std::uint8_t* other, std::size_t most) {
    return static_cast<std::size_t>(std::mismatch(one, one + most, other).first - one);
}

/// Gives each row to `sink` as single values and copies.
template <typename Sink>
void walk(ByteView plane, std::size_t width, Sink&& sink) {
    for (std::size_t start = 0; start < plane.size(); start += width) {
        const std::uint8_t* row = plane.data() + start;
        for (std::size_t x = 0; x < width;) {
            const std::size_t most = std::min<std::size_t>(width - x, kVp8lLongestCopy);
            const std::size_t left = x > 0 ? alikeFrom(row + x, row + x - 1, most) : 0;
            const std::size_t top = start > 0 ? alikeFrom(row + x, row + x - width, most) : 0;
            const std::size_t length = std::max(left, top);
            if (length < kShortestCopy) {
                sink.value(row[x++]);
                continue;
            }
            sink.copy(vp8lNumber(static_cast<std::uint32_t>(length)),
                      vp8lNumber(left == length ? kVp8lLeft : kVp8lAbove));
            x += length;
        }
    }
}

struct Counter {
    Vp8lCounts counts;

    void value(std::uint8_t alpha) { ++counts.green[alpha]; }
    void copy(Vp8lNumber length, Vp8lNumber distance) {
        ++counts.green[256 + length.symbol];
        ++counts.distance[distance.symbol];
    }
};

struct Writer {
    Vp8lBits& bits;
    Vp8lCodes codes;

    void value(std::uint8_t alpha) { bits.put(codes.green[alpha]); }
    void copy(Vp8lNumber length, Vp8lNumber distance) {
        bits.put(codes.green[256 + length.symbol]);
        bits.put(length.extra, length.extraBits);
        bits.put(codes.distance[distance.symbol]);
    }
};

}  // namespace

void appendWebPAlpha(Bytes& out, ByteView plane, std::size_t width) {
    constexpr std::uint8_t kLosslessUnfiltered = 1;
    out.push_back(kLosslessUnfiltered);
    Counter counter;
    walk(plane, width, counter);
    Vp8lBits bits(out);
    bits.put(0, 3);  // no transform, no cache of colours, one group of codes
    walk(plane, width, Writer{bits, putVp8lCodes(bits, counter.counts)});
    bits.finish();
}

}  // namespace skarnel::io
