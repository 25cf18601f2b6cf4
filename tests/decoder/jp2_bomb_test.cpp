// JPEG 2000 files of a few bytes that state tens of thousands of tiles, for each of which their
// library takes kilobytes: refused behind the wall without much memory.
#include <gtest/gtest.h>

#include <optional>
#include <utility>

#include "decoder/opened_file.h"
#include "imaging/io/file_builders.h"
#include "imaging/io/readers.h"

namespace skarnel {
namespace {

using namespace skarnel::testing;

/// A stream of three components of 8 bits whose packets are all empty, with no more than one tile's
/// data: SIZ, COD, QCD, SOT, SOD, EOC.
Bytes streamOfTiles(std::uint32_t side, std::uint32_t tileSide) {
    constexpr unsigned kLevels = 5;
    ByteSink out(true);
    out.u16(0xFF4F).u16(0xFF51).u16(38 + 3 * 3).u16(0).u32(side).u32(side).u32(0).u32(0);
    out.u32(tileSide).u32(tileSide).u32(0).u32(0).u16(3);
    for (int i = 0; i < 3; ++i) out.u8(7).u8(1).u8(1);
    out.u16(0xFF52).u16(12).u8(0).u8(0).u16(1).u8(0).u8(kLevels).u8(4).u8(4).u8(0).u8(1);
    out.u16(0xFF5C).u16(3 + 3 * kLevels + 1).u8(0x40);
    for (unsigned i = 0; i < 3 * kLevels + 1; ++i) out.u8(9 << 3);
    out.u16(0xFF90).u16(10).u16(0).u32(14 + 100).u8(0).u8(1).u16(0xFF93).zeros(100);
    return out.u16(0xFFD9).bytes;
}

class Jpeg2000Bomb : public ::testing::Test {
  protected:
    void SetUp() override {
        if (kSanitized) GTEST_SKIP() << "a sanitizer's run-time needs system calls of its own";
    }
};

TEST_F(Jpeg2000Bomb, OfTensOfThousandsOfTilesIsRefusedAtLittleCost) {
    for (const auto& [side, tileSide] : {std::pair{250U, 1U}, std::pair{2000U, 8U}}) {
        const Bytes file = streamOfTiles(side, tileSide);
        const Outcome outcome = openWithHoles(file, file.size());
        EXPECT_FALSE(outcome.opened) << side;
        expectLittleWork(outcome);
    }
}

TEST_F(Jpeg2000Bomb, OfMorePixelsThanAreBelievedIsRefused) {
    const auto opened = [](std::uint32_t side, std::int64_t believed) {
        const Bytes file = streamOfTiles(side, side);
        DecodeLimits limits;
        limits.fileBytes = file.size();
        if (believed > 0) limits.maxUnprovenPixels = believed;
        const auto picture = io::readJpeg2000(file, limits);
        return picture ? std::nullopt : std::optional(picture.error().code);
    };
    EXPECT_EQ(opened(2048, 0), std::nullopt);
    EXPECT_EQ(opened(2049, 0), ErrorCode::TooLarge);
    EXPECT_EQ(opened(2049, 5'000'000), std::nullopt) << "who asks for them has them";
}

TEST_F(Jpeg2000Bomb, IsNoneWithOneTile) {
    for (const std::uint32_t side : {250U, 2000U}) {
        const Bytes file = streamOfTiles(side, side);
        const Outcome outcome = openWithHoles(file, file.size());
        EXPECT_TRUE(outcome.opened) << side;
        expectLittleWork(outcome);
    }
}

}  // namespace
}  // namespace skarnel
