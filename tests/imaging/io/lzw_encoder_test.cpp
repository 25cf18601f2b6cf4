#include "imaging/io/lzw_encoder.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace skarnel::io {
namespace {

Bytes encoded(const Bytes& strip) {
    LzwEncoder encoder;
    Bytes codes;
    encoder.encode(strip, codes);
    return codes;
}

class CodeReader {
  public:
    explicit CodeReader(const Bytes& bytes) : bytes_(bytes) {}
    /// The next `width` bits, the highest first; 0xFFFF at the end.
    unsigned take(unsigned width) {
        unsigned code = 0;
        for (unsigned i = 0; i < width; ++i, ++at_) {
            if (at_ / 8 >= bytes_.size()) return 0xFFFF;
            code = code << 1 | (bytes_[at_ / 8] >> (7 - at_ % 8) & 1U);
        }
        return code;
    }
    std::size_t bytesTaken() const { return (at_ + 7) / 8; }

  private:
    const Bytes& bytes_;
    std::size_t at_ = 0;
};

/// The decoder of TIFF 6.0, section 13, word for word: strings are kept whole. Empty on a code that
/// may not stand there.
Bytes decoded(const Bytes& codes) {
    CodeReader in(codes);
    Bytes out;
    std::vector<Bytes> table;
    const auto reset = [&] {
        table.assign(258, {});
        for (unsigned i = 0; i < 256; ++i) table[i] = {static_cast<std::uint8_t>(i)};
    };
    // One entry is still to come when a code is read, so the width grows one early.
    const auto width = [&] {
        return table.size() < 511    ? 9U
               : table.size() < 1023 ? 10U
               : table.size() < 2047 ? 11U
                                     : 12U;
    };
    unsigned old = 256;
    for (;;) {
        const unsigned code = in.take(table.empty() ? 9 : width());
        if (code == 257) return in.bytesTaken() == codes.size() ? out : Bytes{};
        if (code == 256) {
            reset();
            old = 256;
            continue;
        }
        if (old == 256) {
            if (code > 255 || table.empty()) return {};
            out.push_back(static_cast<std::uint8_t>(code));
            old = code;
            continue;
        }
        if (code > table.size() || table.size() > 4094) return {};
        Bytes added = table[old];
        added.push_back(code < table.size() ? table[code][0] : table[old][0]);
        table.push_back(added);
        out.insert(out.end(), table[code].begin(), table[code].end());
        old = code;
    }
}

Bytes randomBytes(std::size_t size, unsigned values, unsigned seed) {
    std::mt19937 random(seed);
    Bytes bytes(size);
    for (auto& byte : bytes) byte = static_cast<std::uint8_t>(random() % values);
    return bytes;
}

TEST(LzwEncoder, OneByteIsClearItselfAndEnd) {
    // 100000000 000000111 100000001 and five bits to fill.
    EXPECT_EQ(encoded({7}), (Bytes{0x80, 0x01, 0xE0, 0x20}));
}

TEST(LzwEncoder, ARepeatedByteBecomesAString) {
    // Clear, 7, 258 (7 7), 7, end: 100000000 000000111 100000010 000000111 100000001 000.
    EXPECT_EQ(encoded({7, 7, 7, 7}), (Bytes{0x80, 0x01, 0xE0, 0x40, 0x78, 0x08}));
}

TEST(LzwEncoder, EverySizeComesBack) {
    // All widths, the full table, and every place in which a strip may end.
    const Bytes all = randomBytes(5000, 256, 1);
    for (std::size_t size = 1; size <= all.size(); size += size < 600 || size > 3700 ? 1 : 7) {
        const Bytes strip(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(size));
        ASSERT_EQ(decoded(encoded(strip)), strip) << size;
    }
}

TEST(LzwEncoder, RepeatsOfAllKindsComeBack) {
    for (unsigned round = 0; round < 40; ++round) {
        const Bytes strip = randomBytes(20'000, 1 + round * 3, round);
        ASSERT_EQ(decoded(encoded(strip)), strip) << "round " << round;
    }
}

TEST(LzwEncoder, LongStringsComeBackAndAreShort) {
    // Strings of 1, 2, 3 ... bytes: about 447 codes for 100,000 bytes.
    const Bytes strip(100'000, 0);
    const Bytes codes = encoded(strip);
    EXPECT_EQ(decoded(codes), strip);
    EXPECT_LE(codes.size(), 600U);
}

TEST(LzwEncoder, IsNearTheBestOnGrain) {
    // Four bits a byte are its entropy; the codes of growing strings stay within a third of that.
    const Bytes strip = randomBytes(256 << 10, 16, 9);
    EXPECT_LE(encoded(strip).size(), strip.size() / 2 * 4 / 3);
}

TEST(LzwEncoder, TwoAtATimeAreTheSameCodes) {
    LzwEncoder encoder;
    for (const auto& [one, other] : {std::pair{1, 9000}, {9000, 1}, {9000, 9000}, {8999, 9001}}) {
        const Bytes first = randomBytes(static_cast<std::size_t>(one), 40, 3);
        const Bytes second = randomBytes(static_cast<std::size_t>(other), 200, 4);
        Bytes firstCodes;
        Bytes secondCodes;
        encoder.encodeTwo(first, firstCodes, second, secondCodes);
        EXPECT_EQ(firstCodes, encoded(first)) << one << " and " << other;
        EXPECT_EQ(secondCodes, encoded(second)) << one << " and " << other;
    }
}

}  // namespace
}  // namespace skarnel::io
