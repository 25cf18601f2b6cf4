// The resolution of a JPEG 2000 file: boxes of ITU-T T.800, annex I, put together byte by byte.
#include "imaging/io/jp2_common.h"

#include <gtest/gtest.h>

#include <limits>

#include "imaging/io/file_builders.h"

namespace skarnel::io {
namespace {

using testing::ByteSink;

Bytes box(std::string_view type, const Bytes& contents) {
    return ByteSink(true).u32(8 + contents.size()).text(type).raw(contents).bytes;
}

/// 254 / 2 and 508 / 2 times ten to the power of two points a metre: 322.58 and 645.16 an inch.
Bytes points() {
    return ByteSink(true).u16(254).u16(2).u16(508).u16(2).u8(2).u8(2).bytes;
}

Bytes header(const Bytes& resolution) {
    return box("jp2h", box("res ", resolution));
}

void expectPoints(const std::optional<Resolution>& found) {
    ASSERT_TRUE(found);
    EXPECT_NEAR(found->horizontal, 25400 * 0.0254, 1e-6);
    EXPECT_NEAR(found->vertical, 12700 * 0.0254, 1e-6);
}

TEST(Jp2Resolution, OfACaptureComesBeforeThatOfADisplay) {
    const Bytes other = ByteSink(true).u16(1).u16(1).u16(1).u16(1).zeros(2).bytes;
    Bytes both = box("resd", other);
    const Bytes capture = box("resc", points());
    both.insert(both.end(), capture.begin(), capture.end());
    expectPoints(jp2Resolution(header(both)));
    expectPoints(jp2Resolution(header(box("resd", points()))));
}

TEST(Jp2Resolution, IsFoundInBoxesOfEveryKindOfLength) {
    const Bytes inner = box("res ", box("resc", points()));
    const Bytes large = ByteSink(true).u32(1).text("jp2h").u64(16 + inner.size()).raw(inner).bytes;
    expectPoints(jp2Resolution(large));
    const Bytes toTheEnd = ByteSink(true).u32(0).text("jp2h").raw(inner).bytes;
    expectPoints(jp2Resolution(toTheEnd));
}

TEST(Jp2Resolution, OfABrokenFileIsNone) {
    const struct {
        const char* name;
        Bytes file;
    } rows[] = {
        {"no header", box("ftyp", {1, 2, 3, 4})},
        {"no resolution", box("jp2h", box("ihdr", {1}))},
        {"neither kind", header(box("resx", points()))},
        {"a length without its end", ByteSink(true).u32(1).text("jp2h").u32(0).bytes},
        {"shorter than its own head", ByteSink(true).u32(7).text("jp2h").zeros(8).bytes},
        {"longer than the file", ByteSink(true).u32(90).text("jp2h").zeros(8).bytes},
        {"a vertical part of nothing",
         header(box("resc", ByteSink(true).u16(1).u16(0).u16(1).u16(1).zeros(2).bytes))},
        {"a horizontal part of nothing",
         header(box("resc", ByteSink(true).u16(1).u16(1).u16(1).u16(0).zeros(2).bytes))},
        {"numbers that are cut", header(box("resc", ByteSink(true).u16(1).u16(1).u16(1).bytes))}};
    for (const auto& [name, file] : rows) EXPECT_FALSE(jp2Resolution(file)) << name;
}

TEST(Jp2Resolution, IsWrittenInFourDigitsAtLeast) {
    const Bytes file = box("jp2h", {});
    for (const double dpi : {0.01, 1.0, 72.0, 299.9, 1e6, 1e9}) {
        const auto read = jp2Resolution(withJp2Resolution(file, {dpi, 2 * dpi}));
        ASSERT_TRUE(read) << dpi;
        EXPECT_NEAR(read->horizontal / dpi, 1, 1e-4);
        EXPECT_NEAR(read->vertical / dpi, 2, 2e-4);
    }
}

TEST(Jp2Resolution, ThatIsNoNumberOfPointsEndsAllTheSame) {
    const Bytes file = box("jp2h", {});
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(withJp2Resolution(file, {0, kInfinity}).size(), file.size() + 26);
}

TEST(Jp2Resolution, IsNotPutIntoAFileWithoutAHeader) {
    const Bytes codestream = {0xFF, 0x4F, 0xFF, 0x51, 0, 0, 0, 9, 9};
    EXPECT_EQ(withJp2Resolution(codestream, {72, 72}), codestream);
}

}  // namespace
}  // namespace skarnel::io
