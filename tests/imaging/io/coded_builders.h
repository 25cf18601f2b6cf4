// Units of HEVC and AV1 as far as their headers go, and the boxes that hold them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "imaging/io/file_builders.h"

namespace skarnel::testing {

/// Zeros and ones, the first the highest of its byte.
class Bits {
  public:
    Bits& add(std::uint64_t value, int count) {
        for (int i = count - 1; i >= 0; --i) text_ += (value >> i & 1U) != 0 ? '1' : '0';
        return *this;
    }
    Bits& zeros(int count) { return add(0, count); }
    Bits& golomb(std::uint32_t value) {
        int digits = 1;
        while ((std::uint64_t{value} + 1) >> digits != 0) ++digits;
        return zeros(digits - 1).add(std::uint64_t{value} + 1, digits);
    }
    Bytes bytes() const {
        Bytes out((text_.size() + 7) / 8);
        for (std::size_t i = 0; i < text_.size(); ++i) {
            if (text_[i] == '1') out[i / 8] |= static_cast<std::uint8_t>(0x80U >> i % 8);
        }
        return out;
    }

  private:
    std::string text_;
};

// --- HEVC.

inline constexpr int kSlice = 19;
inline constexpr int kParameters = 33;

inline Bytes hevcUnit(int type, const Bytes& content, int layer = 0) {
    Bytes out = Bits()
                    .zeros(1)
                    .add(static_cast<unsigned>(type), 6)
                    .add(static_cast<unsigned>(layer), 6)
                    .add(1, 3)
                    .bytes();
    out.insert(out.end(), content.begin(), content.end());
    return out;
}

/// The bits that stand for the layers in time but the last: whether each has a profile and a level.
inline Bytes parameters(std::uint32_t width, std::uint32_t height, std::string_view layers = "",
                        std::uint32_t chroma = 1) {
    const auto count = static_cast<int>(layers.size());
    Bits out;
    out.zeros(4).add(static_cast<unsigned>(count), 3).add(1, 1);
    out.add(0x0123456789ABCDEF, 64).add(0xFFFFFFFF, 32);
    int more = 0;
    for (const char layer : layers) {
        const bool hasProfile = layer == 'p' || layer == 'b';
        const bool hasLevel = layer == 'l' || layer == 'b';
        out.add(hasProfile ? 1 : 0, 1).add(hasLevel ? 1 : 0, 1);
        more += (hasProfile ? 88 : 0) + (hasLevel ? 8 : 0);
    }
    if (count > 0) out.zeros(2 * (8 - count));
    for (int i = 0; i < more; ++i) out.add(1, 1);
    out.golomb(0).golomb(chroma);
    if (chroma == 3) out.add(1, 1);
    return out.golomb(width).golomb(height).add(1, 1).bytes();
}

/// Each in an array of its own, which says another type.
inline Bytes configurationOf(const std::vector<Bytes>& units) {
    ByteSink out(true);
    out.raw(Bytes(22, 1)).u8(static_cast<std::uint8_t>(units.size()));
    for (const Bytes& unit : units) out.u8(40).u16(1).u16(unit.size()).raw(unit);
    return out.bytes;
}

inline Bytes dataOf(const std::vector<Bytes>& units) {
    ByteSink out(true);
    for (const Bytes& unit : units) out.u32(unit.size()).raw(unit);
    return out.bytes;
}

// --- AV1.

inline constexpr unsigned kSequenceHeader = 1;
inline constexpr unsigned kFrameHeader = 3;
inline constexpr unsigned kFrame = 6;

inline Bytes number(std::uint32_t value) {
    Bytes out;
    for (; value >= 0x80; value >>= 7U) out.push_back(static_cast<std::uint8_t>(value | 0x80U));
    out.push_back(static_cast<std::uint8_t>(value));
    return out;
}

inline Bytes av1Unit(unsigned type, const Bytes& content) {
    return ByteSink(true)
        .u8(static_cast<std::uint8_t>(type << 3U | 2U))
        .raw(number(content.size()))
        .raw(content)
        .bytes;
}
inline Bits& addSides(Bits& out, std::uint32_t width, std::uint32_t height, int bits) {
    const auto count = static_cast<unsigned>(bits - 1);
    return out.add(count, 4).add(count, 4).add(width - 1, bits).add(height - 1, bits);
}

inline Bytes stillHeader(std::uint32_t width, std::uint32_t height) {
    Bits out;
    out.zeros(3).add(3, 2).add(31, 5);
    return addSides(out, width, height, 16).zeros(3).add(1, 1).bytes();
}

}  // namespace skarnel::testing
