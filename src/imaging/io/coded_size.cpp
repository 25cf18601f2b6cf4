#include "imaging/io/coded_size.h"

#include <algorithm>

#include "imaging/io/byte_reader.h"

namespace skarnel::io {
namespace {

/// A picture has a few hundred slices at most; every unit costs time.
constexpr int kMostUnits = 4096;

/// Bits, the highest of a byte first; 0 past the end, which is remembered.
class BitReader {
  public:
    explicit BitReader(ByteView bytes) : bytes_(bytes) {}

    std::uint32_t take(unsigned count) {
        std::uint32_t value = 0;
        for (unsigned i = 0; i < count; ++i, ++at_) {
            if (at_ / 8 >= bytes_.size()) {
                failed_ = true;
                return 0;
            }
            value = value << 1U | (bytes_[at_ / 8] >> (7 - at_ % 8) & 1U);
        }
        return value;
    }
    bool flag() { return take(1) == 1; }
    void skip(unsigned count) {
        for (; count > 32; count -= 32) take(32);
        take(count);
    }

    /// As many bits as there were zeros before the first one: ue(v) of HEVC, uvlc() of AV1.
    std::uint32_t golomb() {
        unsigned zeros = 0;
        while (!flag() && !failed_) ++zeros;
        failed_ = failed_ || zeros > 31;
        return failed_ ? 0 : (1U << zeros) - 1 + take(zeros);
    }

    bool failed() const { return failed_; }

  private:
    ByteView bytes_;
    std::size_t at_ = 0;
    bool failed_ = false;
};

void enlarge(CodedSize& size, std::uint32_t width, std::uint32_t height) {
    size.width = std::max(size.width, width);
    size.height = std::max(size.height, height);
}

// --- HEVC, by the clauses of ITU-T H.265.

/// The first bytes of a unit without those that only keep a start code from appearing (7.3.1.1).
Bytes unescaped(ByteView unit) {
    constexpr std::size_t kMostBytes = 256;  // the size stands far before
    Bytes out;
    int zeros = 0;
    for (const std::uint8_t byte : unit.first(std::min(unit.size(), kMostBytes))) {
        if (zeros >= 2 && byte == 3) {
            zeros = 0;
            continue;
        }
        zeros = byte == 0 ? zeros + 1 : 0;
        out.push_back(byte);
    }
    return out;
}

/// profile_tier_level(), 7.3.3, of so many layers in time.
void skipProfile(BitReader& in, unsigned layers) {
    constexpr unsigned kProfileBits = 88;
    constexpr unsigned kLevelBits = 8;
    in.skip(kProfileBits + kLevelBits);
    if (layers == 1) return;
    unsigned bits = 0;
    for (unsigned i = 1; i < layers; ++i) {
        bits += in.flag() ? kProfileBits : 0;
        bits += in.flag() ? kLevelBits : 0;
    }
    in.skip(2 * (9 - layers) + bits);
}

/// seq_parameter_set_rbsp(), 7.3.2.2, behind the unit's head.
bool addParameters(ByteView content, CodedSize& size) {
    const Bytes bytes = unescaped(content);
    BitReader in(bytes);
    in.skip(4);
    const unsigned layers = in.take(3) + 1;
    in.skip(1);
    skipProfile(in, layers);
    in.golomb();
    constexpr std::uint32_t kAllColorsWhole = 3;
    if (in.golomb() == kAllColorsWhole) in.skip(1);
    const std::uint32_t width = in.golomb();
    const std::uint32_t height = in.golomb();
    enlarge(size, width, height);
    return !in.failed();
}

/// False where it is damaged. `slices` counts those of all pictures.
bool addUnit(ByteView unit, CodedSize& size, std::uint32_t& slices) {
    constexpr std::size_t kHeadBytes = 2;
    if (unit.size() <= kHeadBytes) return true;  // no decoder looks at it
    const unsigned layer = (unit[0] & 1U) << 5U | unit[1] >> 3U;
    if (layer > 0) return true;  // nor at another view's
    const unsigned type = unit[0] >> 1U & 63U;
    constexpr unsigned kFirstNonPicture = 32;
    constexpr unsigned kParameters = 33;
    if (type == kParameters) return addParameters(unit.subspan(kHeadBytes), size);
    if (type >= kFirstNonPicture) return true;
    ++slices;
    const bool beginsPicture = unit[kHeadBytes] >> 7U == 1;
    if (beginsPicture) ++size.pictures;
    return true;
}

// --- AV1, by the clauses of "AV1 Bitstream & Decoding Process", version 1.0.0.

/// What of a sequence header its frames' heads depend on.
struct Sequence {
    bool isReduced = false;
    unsigned timeBits = 0;
    unsigned widthBits = 0;
    unsigned heightBits = 0;
    std::uint64_t pixels = 1;
    unsigned frameNumberBits = 0;
    // 2: each frame says so itself.
    std::uint32_t screenContent = 2;
    std::uint32_t wholeMotion = 2;
};

/// timing_info() to operating_parameters_info(), 5.5.1.
void skipTimes(BitReader& in, Sequence& sequence) {
    bool hasModel = false;
    unsigned delayBits = 0;
    if (in.flag()) {
        in.skip(64);
        const bool isEven = in.flag();
        if (isEven) in.golomb();
        hasModel = in.flag();
        if (hasModel) {
            delayBits = in.take(5) + 1;
            in.skip(32 + 5);
            const unsigned bits = in.take(5) + 1;
            if (!isEven) sequence.timeBits = bits;
        }
    }
    const bool hasDelays = in.flag();
    const unsigned points = in.take(5) + 1;
    for (unsigned i = 0; i < points; ++i) {
        in.skip(12);
        constexpr std::uint32_t kLastLevelWithoutTier = 7;
        if (in.take(5) > kLastLevelWithoutTier) in.skip(1);
        if (hasModel && in.flag()) in.skip(2 * delayBits + 1);
        if (hasDelays && in.flag()) in.skip(4);
    }
}

/// The tools that only moving pictures have, as far as a frame's head depends on them, 5.5.1.
void readTools(BitReader& in, Sequence& sequence) {
    in.skip(4);
    if (in.flag()) in.skip(2);
    constexpr std::uint32_t kByFrame = 2;
    sequence.screenContent = in.flag() ? kByFrame : in.take(1);
    if (sequence.screenContent > 0) sequence.wholeMotion = in.flag() ? kByFrame : in.take(1);
}

/// sequence_header_obu(), 5.5.1; none where it is cut.
std::optional<Sequence> readSequence(ByteView content, CodedSize& size) {
    BitReader in(content);
    in.skip(3 + 1);
    Sequence sequence;
    sequence.isReduced = in.flag();
    if (sequence.isReduced) {
        in.skip(5);
    } else {
        skipTimes(in, sequence);
    }
    sequence.widthBits = in.take(4) + 1;
    sequence.heightBits = in.take(4) + 1;
    const std::uint32_t width = in.take(sequence.widthBits) + 1;
    const std::uint32_t height = in.take(sequence.heightBits) + 1;
    enlarge(size, width, height);
    sequence.pixels = std::uint64_t{width} * height;
    if (!sequence.isReduced) {
        if (in.flag()) {
            const unsigned difference = in.take(4) + 2;
            sequence.frameNumberBits = in.take(3) + difference + 1;
        }
        in.skip(3);
        readTools(in, sequence);
    }
    if (in.failed()) return std::nullopt;
    return sequence;
}

/// uncompressed_header(), 5.9.2, to where a frame says that it has a size of its own; false where
/// it is cut.
bool addFrame(ByteView content, const Sequence& sequence, CodedSize& size) {
    BitReader in(content);
    std::uint64_t pixels = sequence.pixels;
    constexpr std::uint32_t kKeyFrame = 0;
    constexpr std::uint32_t kSwitchFrame = 3;
    if (!sequence.isReduced) {
        if (in.flag()) return true;  // shows one that was decoded
        const std::uint32_t type = in.take(2);
        const bool isShown = in.flag();
        in.skip(isShown ? sequence.timeBits : 1);
        if (type != kSwitchFrame && (type != kKeyFrame || !isShown)) in.skip(1);
        in.skip(1);
        const bool isScreen = sequence.screenContent > 1 ? in.flag() : sequence.screenContent == 1;
        if (isScreen && sequence.wholeMotion > 1) in.skip(1);
        in.skip(sequence.frameNumberBits);
        const bool hasOwnSize = type == kSwitchFrame || in.flag();
        if (hasOwnSize) pixels = std::uint64_t{1} << (sequence.widthBits + sequence.heightBits);
    }
    const std::uint64_t pictures = size.pictures + (pixels - 1) / sequence.pixels + 1;
    constexpr std::uint64_t kMostPictures = 1U << 30U;
    size.pictures = static_cast<std::uint32_t>(std::min(pictures, kMostPictures));
    return !in.failed();
}

class Av1Units {
  public:
    enum class Part : std::uint8_t { Configuration, Picture };

    /// open_bitstream_unit(), 5.3, one behind the other. False where one is damaged. The library
    /// puts the picture's units behind those of the configuration, which must be whole so.
    bool add(ByteView bytes, Part part) {
        const bool mustBeWhole = part == Part::Configuration;
        ByteReader in(bytes, ByteOrder::Big);
        while (in.left() > 0) {
            if (++units_ > kMostUnits) return false;
            const unsigned head = in.u8();
            constexpr unsigned kHasExtension = 4;
            constexpr unsigned kHasSize = 2;
            if ((head & kHasExtension) != 0) in.skip(1);
            if (mustBeWhole && (head & kHasSize) == 0) return false;
            const std::uint64_t count = (head & kHasSize) != 0 ? numberOf(in) : in.left();
            const ByteView content = in.take(count);
            // No decoder goes on behind a unit that is cut, nor begins with it.
            if (in.failed()) return !mustBeWhole;
            if (!addUnit(head >> 3U & 15U, content)) return false;
        }
        return true;
    }

    CodedSize size() const { return size_; }

  private:
    /// leb128(), 4.10.5.
    static std::uint64_t numberOf(ByteReader& in) {
        std::uint64_t value = 0;
        for (unsigned i = 0; i < 8; ++i) {
            const std::uint64_t byte = in.u8();
            value |= (byte & 0x7FU) << 7 * i;
            if (byte >> 7U == 0) break;
        }
        return value;
    }

    bool addUnit(unsigned type, ByteView content) {
        constexpr unsigned kSequenceHeader = 1;
        constexpr unsigned kFrameHeader = 3;
        constexpr unsigned kFrame = 6;
        constexpr unsigned kFrameHeaderAgain = 7;
        if (type == kSequenceHeader) {
            sequence_ = readSequence(content, size_);
            return sequence_.has_value();
        }
        const bool isFrame = type == kFrameHeader || type == kFrame || type == kFrameHeaderAgain;
        return !isFrame || !sequence_ || addFrame(content, *sequence_, size_);
    }

    CodedSize size_;
    std::optional<Sequence> sequence_;
    int units_ = 0;
};

// --- Canvases.

/// Two sides of two or four bytes behind version, flags and what differs.
std::optional<CodedSize> canvasSize(ByteView data, std::size_t between) {
    ByteReader in(data, ByteOrder::Big);
    in.skip(1);
    const bool isLarge = (in.u8() & 1U) == 1;
    in.skip(between);
    const std::uint32_t width = isLarge ? in.u32() : in.u16();
    const std::uint32_t height = isLarge ? in.u32() : in.u16();
    if (in.failed()) return std::nullopt;
    return CodedSize{width, height, 1};
}

}  // namespace

std::optional<CodedSize> sizeOfHevc(ByteView configuration, ByteView coded) {
    CodedSize size;
    int units = 0;
    std::uint32_t slices = 0;
    const auto add = [&](ByteView unit) {
        return ++units <= kMostUnits && addUnit(unit, size, slices);
    };
    ByteReader in(configuration, ByteOrder::Big);
    constexpr std::size_t kFixedBytes = 22;
    in.skip(kFixedBytes);
    const int arrays = in.u8();
    for (int array = 0; array < arrays && !in.failed(); ++array) {
        in.skip(1);  // what their type is the units say themselves
        const int count = in.u16();
        for (int i = 0; i < count && !in.failed(); ++i) {
            if (!add(in.take(in.u16()))) return std::nullopt;
        }
    }
    ByteReader data(coded, ByteOrder::Big);
    while (data.left() > 0) {
        if (!add(data.take(data.u32()))) return std::nullopt;
    }
    // A slice may begin anywhere and reach to the picture's end, however few bytes it has.
    constexpr std::uint32_t kSlicesOfAPicture = 4;
    size.pictures = std::max(size.pictures, (slices + kSlicesOfAPicture - 1) / kSlicesOfAPicture);
    return size;
}

std::optional<CodedSize> sizeOfAv1(ByteView configuration, ByteView coded) {
    constexpr std::size_t kFixedBytes = 4;
    Av1Units units;
    if (configuration.size() > kFixedBytes &&
        !units.add(configuration.subspan(kFixedBytes), Av1Units::Part::Configuration)) {
        return std::nullopt;
    }
    if (!units.add(coded, Av1Units::Part::Picture)) return std::nullopt;
    return units.size();
}

std::optional<CodedSize> sizeOfGrid(ByteView data) {
    constexpr std::size_t kCounts = 2;  // of its rows and columns
    return canvasSize(data, kCounts);
}

std::optional<CodedSize> sizeOfOverlay(ByteView data) {
    constexpr std::size_t kColor = 8;  // below its parts
    return canvasSize(data, kColor);
}

}  // namespace skarnel::io
