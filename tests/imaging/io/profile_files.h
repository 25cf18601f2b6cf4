// Colour profiles (ICC.1:2010) written byte by byte.
#pragma once

#include <bit>
#include <cstdint>
#include <string>
#include <vector>

#include "imaging/io/file_builders.h"

namespace skarnel::testing {

struct ProfileTag {
    std::string name;
    Bytes data;
};

constexpr std::size_t kProfileHeadBytes = 128;

/// A monitor's, from `space` to `pcs`, with white D50. The tags' data lie behind the list in their
/// order; those of equal bytes share them.
inline Bytes profileOf(const std::vector<ProfileTag>& tags, std::string_view space = "RGB ",
                       std::string_view pcs = "XYZ ") {
    ByteSink list(true);
    ByteSink data(true);
    list.u32(tags.size());
    std::vector<std::size_t> places;
    for (std::size_t i = 0; i < tags.size(); ++i) {
        std::size_t same = 0;
        while (same < i && tags[same].data != tags[i].data) ++same;
        const std::size_t end = kProfileHeadBytes + 4 + 12 * tags.size() + data.bytes.size();
        places.push_back(same < i ? places[same] : end);
        if (same == i) data.raw(tags[i].data).zeros((4 - tags[i].data.size() % 4) % 4);
        list.text(tags[i].name).u32(places[i]).u32(tags[i].data.size());
    }
    ByteSink head(true);
    head.u32(kProfileHeadBytes + list.bytes.size() + data.bytes.size()).text("none");
    head.u32(0x04300000).text("mntr").text(space).text(pcs);
    head.zeros(12).text("acsp").zeros(28).u32(0xF6D6).u32(0x10000).u32(0xD32D);
    head.zeros(kProfileHeadBytes - head.bytes.size());
    return head.raw(list.bytes).raw(data.bytes).bytes;
}

inline ByteSink& putFloats(ByteSink& out, const std::vector<float>& values) {
    for (const float value : values) out.u32(std::bit_cast<std::uint32_t>(value));
    return out;
}

inline Bytes whitePoint() {
    return ByteSink(true).text("XYZ ").u32(0).u32(0xF6D6).u32(0x10000).u32(0xD32D).bytes;
}

/// A tag of type 'mpet' whose list names each element; those of equal bytes are there once.
inline Bytes chainOf(unsigned in, unsigned out, const std::vector<Bytes>& elements) {
    ByteSink list(true);
    ByteSink data(true);
    list.text("mpet").u32(0).u16(in).u16(out).u32(elements.size());
    std::vector<std::size_t> places;
    for (std::size_t i = 0; i < elements.size(); ++i) {
        std::size_t same = 0;
        while (same < i && elements[same] != elements[i]) ++same;
        const std::size_t end = 16 + 8 * elements.size() + data.bytes.size();
        places.push_back(same < i ? places[same] : end);
        if (same == i) data.raw(elements[i]);
        list.u32(places[i]).u32(elements[i].size());
    }
    return list.raw(data.bytes).bytes;
}

/// `values`: a row for each output, then what is added to each.
inline Bytes matrixElement(unsigned in, unsigned out, const std::vector<float>& values) {
    ByteSink element(true);
    element.text("matf").u32(0).u16(in).u16(out);
    return putFloats(element, values).bytes;
}

/// Two points a side; `values`: `out` for each corner, the last input's changing first.
inline Bytes tableElement(unsigned in, unsigned out, const std::vector<float>& values) {
    ByteSink element(true);
    element.text("clut").u32(0).u16(in).u16(out).raw(Bytes(in, 2)).zeros(16 - in);
    return putFloats(element, values).bytes;
}

/// (1 x + 0)^power + 0
inline Bytes formulaSegment(float power) {
    ByteSink segment(true);
    segment.text("parf").u32(0).u16(0).u16(0);
    return putFloats(segment, {power, 1, 0, 0}).bytes;
}

inline Bytes sampledSegment(const std::vector<float>& samples) {
    ByteSink segment(true);
    segment.text("samf").u32(0).u32(samples.size());
    return putFloats(segment, samples).bytes;
}

/// `ends`: where each segment but the last ends.
inline Bytes curveOf(const std::vector<float>& ends, const std::vector<Bytes>& segments) {
    ByteSink curve(true);
    curve.text("curf").u32(0).u16(segments.size()).u16(0);
    putFloats(curve, ends);
    for (const Bytes& segment : segments) curve.raw(segment);
    return curve.bytes;
}

/// The same curve, there once, for each of the channels.
inline Bytes curvesElement(unsigned channels, const Bytes& curve) {
    ByteSink element(true);
    element.text("cvst").u32(0).u16(channels).u16(channels);
    for (unsigned i = 0; i < channels; ++i) element.u32(12 + 8 * channels).u32(curve.size());
    return element.raw(curve).bytes;
}

}  // namespace skarnel::testing
