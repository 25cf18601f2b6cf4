// JPEG XL files of a few bytes, bit by bit: all samples are 0, which costs nothing to say, whatever
// the size of a layer. Names are those of ISO/IEC 18181-1.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "imaging/io/file_builders.h"

namespace skarnel::testing {

/// Bits from the lowest of each byte on.
class JxlBits {
  public:
    JxlBits& put(std::uint64_t value, unsigned count) {
        for (unsigned i = 0; i < count; ++i, ++count_) {
            if (count_ % 8 == 0) bytes_.push_back(0);
            if ((value >> i & 1U) != 0) {
                bytes_.back() |= static_cast<std::uint8_t>(1U << count_ % 8);
            }
        }
        return *this;
    }

    /// One of four ranges, each from a number on with so many bits.
    struct Range {
        std::uint32_t first;
        unsigned bits;
    };
    JxlBits& choose(std::uint32_t value, const std::array<Range, 4>& ranges) {
        unsigned i = 0;
        while (i < 3 && value - ranges[i].first >= std::uint32_t{1} << ranges[i].bits) ++i;
        return put(i, 2).put(value - ranges[i].first, ranges[i].bits);
    }

    JxlBits& align() {
        count_ = bytes_.size() * 8;
        return *this;
    }
    const Bytes& bytes() const { return bytes_; }

  private:
    Bytes bytes_;
    std::size_t count_ = 0;
};

inline void append(Bytes& target, const Bytes& more) {
    target.insert(target.end(), more.begin(), more.end());
}

struct JxlLayer {
    std::uint32_t width;
    std::uint32_t height;
    bool hidden = false;  // only for others to refer to
};

/// A still picture of three colours made of layers, the last of which is not hidden. Each lies on
/// the one before it with its first pixel in the corner.
class JxlBuilder {
  public:
    JxlBuilder(std::uint32_t width, std::uint32_t height) : width_(width), height_(height) {}

    JxlBuilder& layer(const JxlLayer& layer, int times = 1) {
        layers_.insert(layers_.end(), static_cast<std::size_t>(times), layer);
        return *this;
    }

    Bytes build() const {
        Bytes file = header();
        for (std::size_t i = 0; i < layers_.size(); ++i) {
            const Bytes frame = frameOf(layers_[i], i + 1 == layers_.size());
            append(file, frame);
        }
        return file;
    }

  private:
    static constexpr unsigned kGroupSide = 1024;

    Bytes header() const {
        constexpr std::array<JxlBits::Range, 4> kSide = {{{1, 9}, {1, 13}, {1, 18}, {1, 30}}};
        JxlBits bits;
        bits.put(0x0AFF, 16).put(0, 1).choose(height_, kSide).put(0, 3).choose(width_, kSide);
        // Metadata: no extra fields, 8 bits, 16-bit buffers do, no extra channels, not XYB, sRGB.
        bits.put(0, 2).put(0, 3).put(1, 1).put(0, 2).put(0, 1).put(1, 1).put(0, 2);
        return bits.put(1, 1).bytes();  // the usual transform
    }

    Bytes frameOf(const JxlLayer& layer, bool isLast) const {
        JxlBits bits;
        // Not the default, a regular frame or one for reference, modular, no flags, not YCbCr.
        bits.put(0, 1).put(layer.hidden ? 2 : 0, 2).put(1, 1).put(0, 2).put(0, 1);
        bits.put(0, 2).put(3, 2);           // not enlarged, groups of 1024
        if (!layer.hidden) bits.put(0, 2);  // one pass
        const bool covers = layer.width >= width_ && layer.height >= height_;
        putCrop(bits, layer);
        if (!layer.hidden) {
            bits.put(0, 2);               // replaces
            if (!covers) bits.put(0, 2);  // what is in slot 0
            bits.put(isLast ? 1 : 0, 1);
        }
        if (!isLast) bits.put(0, 2);                             // kept in slot 0
        if (layer.hidden) bits.put(1, 1);                        // as it is coded
        if (!layer.hidden && !isLast && covers) bits.put(0, 1);  // in the picture's colours
        bits.put(0, 2);                                          // no name
        bits.put(0, 2).put(0, 2).put(0, 2);                      // no filters
        bits.put(0, 2);                                          // no extensions
        return withSections(bits, layer);
    }

    void putCrop(JxlBits& bits, const JxlLayer& layer) const {
        constexpr std::array<JxlBits::Range, 4> kPlace = {
            {{0, 8}, {256, 11}, {2304, 14}, {18688, 30}}};
        const bool isCropped = layer.width != width_ || layer.height != height_;
        bits.put(isCropped ? 1 : 0, 1);
        if (!isCropped) return;
        if (!layer.hidden) bits.choose(0, kPlace).choose(0, kPlace);
        bits.choose(layer.width, kPlace).choose(layer.height, kPlace);
    }

    /// A code whose only symbol is 0 and takes no bits.
    static void putEmptyCode(JxlBits& bits, bool severalContexts) {
        bits.put(0, 1);
        if (severalContexts) bits.put(1, 1).put(0, 2);
        bits.put(1, 1).put(15, 4).put(0, 1);
    }

    static Bytes withSections(JxlBits& bits, const JxlLayer& layer) {
        const auto groups = [&layer](unsigned side) {
            return std::size_t{(layer.width + side - 1) / side} *
                   ((layer.height + side - 1) / side);
        };
        JxlBits global;
        global.put(1, 1).put(1, 1);  // the usual quantisation, a tree for all
        putEmptyCode(global, true);
        putEmptyCode(global, false);
        const auto putGroup = [](JxlBits& to) { to.put(3, 2).put(0, 2); };
        putGroup(global);
        std::vector<Bytes> sections = {global.bytes()};
        if (groups(kGroupSide) > 1) {
            JxlBits group;
            putGroup(group);
            sections.insert(sections.end(), groups(kGroupSide * 8), group.bytes());
            sections.emplace_back();
            sections.insert(sections.end(), groups(kGroupSide), group.bytes());
        }
        bits.put(0, 1).align();  // in their order
        for (const Bytes& section : sections) bits.put(0, 2).put(section.size(), 10);
        Bytes frame = bits.bytes();
        for (const Bytes& section : sections) append(frame, section);
        return frame;
    }

    std::uint32_t width_;
    std::uint32_t height_;
    std::vector<JxlLayer> layers_;
};

}  // namespace skarnel::testing
