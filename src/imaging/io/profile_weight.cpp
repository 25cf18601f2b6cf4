#include "imaging/io/profile_weight.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "imaging/io/byte_reader.h"
#include "imaging/io/color_memory.h"

namespace skarnel::io {
namespace {

/// Where the list of tags begins, and how many of them the library takes.
constexpr std::size_t kHeadBytes = 128;
constexpr std::uint32_t kMostTags = 100;

/// Honest chains are a handful of elements: curves, a matrix, a table, curves.
constexpr std::uint32_t kMostElements = 32;
/// The library's own bound for a whole chain, which holds it to nothing within; its room for the
/// values between two elements is for 128.
constexpr std::uint32_t kMostChannels = 16;

/// In units of a value of a table mixed in, a few nanoseconds each; the library asks a chain for
/// up to 100,000 colours. An honest chain for inks (two sets of four curves, a table of four
/// channels, a matrix, three curves) has about 430.
constexpr std::uint64_t kMostWork = 2048;
/// A curve is a power at worst, found by going through its segments.
constexpr std::uint64_t kWorkOfCurve = 32;

/// What the library keeps of a segment and of a sample. It must never be refused a curve's memory,
/// and may copy it six times.
constexpr std::uint32_t kSegmentBytes = 128;
constexpr std::uint32_t kSampleBytes = 4;
constexpr std::uint32_t kMostSegments = kSmallColorRequest / kSegmentBytes;
constexpr std::uint32_t kMostSamples = kSmallColorRequest / kSampleBytes;
/// Of all curves of a chain together: 64 of the size that printers' curves mostly have.
constexpr std::uint64_t kMostSamplesOfChain = std::uint64_t{64} * 4096;

constexpr std::uint32_t tagOf(const char (&name)[5]) {
    std::uint32_t tag = 0;
    for (std::size_t i = 0; i < 4; ++i) tag = tag << 8U | static_cast<unsigned char>(name[i]);
    return tag;
}

ByteReader readerAt(ByteView profile, std::uint32_t place) {
    ByteReader in(profile, ByteOrder::Big);
    in.seek(place);
    return in;
}

/// Places are counted from `base` on, as the library counts them: beyond 32 bits from 0 again.
ByteReader readerOfEntry(ByteView profile, ByteReader& entries, std::uint32_t base) {
    const std::uint32_t place = base + entries.u32();
    entries.skip(4);  // how long the part says it is, which nobody believes
    return readerAt(profile, place);
}

/// What the elements looked at so far ask for.
class Chain {
  public:
    explicit Chain(ByteView profile) : profile_(profile) {}

    bool isHeavy() const {
        return tooLarge_ || work_ > kMostWork || samples_ > kMostSamplesOfChain;
    }

    void addElement(ByteReader element) {
        const auto base = static_cast<std::uint32_t>(element.position());
        const std::uint32_t kind = element.u32();
        element.skip(4);
        const std::uint32_t in = element.u16();
        const std::uint32_t out = element.u16();
        if (std::max(in, out) > kMostChannels) {
            tooLarge_ = true;
        } else if (kind == tagOf("cvst")) {
            for (std::uint32_t i = 0; i < in; ++i) {
                addCurve(readerOfEntry(profile_, element, base));
            }
        } else if (kind == tagOf("matf")) {
            work_ += std::uint64_t{in} * out;
        } else if (kind == tagOf("clut")) {
            // All corners of a cell are mixed.
            work_ += (std::uint64_t{1} << in) * out;
        }
    }

  private:
    void addCurve(ByteReader curve) {
        curve.skip(8);
        const std::uint32_t segments = curve.u16();
        curve.skip(2);
        work_ += kWorkOfCurve + segments;
        if (segments > kMostSegments) tooLarge_ = true;
        if (isHeavy() || segments == 0) return;
        curve.skip(std::uint64_t{segments - 1} * 4);  // where one ends and the next begins
        for (std::uint32_t i = 0; i < segments; ++i) addSegment(curve);
    }

    void addSegment(ByteReader& curve) {
        const std::uint32_t kind = curve.u32();
        curve.skip(4);
        if (kind == tagOf("samf")) {
            const std::uint32_t samples = curve.u32();
            if (samples > kMostSamples) tooLarge_ = true;
            samples_ += samples;
            curve.skip(std::uint64_t{samples} * kSampleBytes);
            return;
        }
        constexpr std::array<std::uint32_t, 3> kNumbersOfFormula = {4, 5, 5};
        const std::uint32_t formula = curve.u16();
        curve.skip(2);
        // The library stops at a formula that it does not know.
        if (formula < kNumbersOfFormula.size()) curve.skip(kNumbersOfFormula[formula] * 4);
    }

    ByteView profile_;
    std::uint64_t work_ = 0;
    std::uint64_t samples_ = 0;
    bool tooLarge_ = false;
};

bool isHeavyChain(ByteView profile, std::uint32_t base) {
    ByteReader entries = readerAt(profile, base);
    entries.skip(12);
    const std::uint32_t count = entries.u32();
    if (count > kMostElements) return true;
    Chain chain(profile);
    for (std::uint32_t i = 0; i < count; ++i) {
        chain.addElement(readerOfEntry(profile, entries, base));
    }
    return chain.isHeavy();
}

}  // namespace

bool isHeavyProfile(ByteView profile) {
    ByteReader tags = readerAt(profile, kHeadBytes);
    const std::uint32_t count = std::min(tags.u32(), kMostTags);
    for (std::uint32_t i = 0; i < count; ++i) {
        tags.skip(4);
        const std::uint32_t place = tags.u32();
        tags.skip(4);
        if (readerAt(profile, place).u32() == tagOf("mpet") && isHeavyChain(profile, place)) {
            return true;
        }
    }
    return false;
}

}  // namespace skarnel::io
