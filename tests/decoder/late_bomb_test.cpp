// Small files of the formats whose libraries are loaded late, which state one size and are made of
// something larger or without end: refused behind the wall, quickly and without much memory. data/
// has what makes them, beside honest ones of the same make.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "decoder/opened_file.h"
#include "imaging/io/late_bombs.h"

namespace skarnel {
namespace {

using namespace skarnel::testing;

Bytes bytesOf(const std::string& name) {
    std::ifstream file(std::filesystem::path(BOMB_FILES) / name, std::ios::binary);
    EXPECT_TRUE(file.is_open()) << name;
    return {std::istreambuf_iterator<char>(file), {}};
}

class LateFile : public ::testing::Test {
  protected:
    void SetUp() override {
        if (kSanitized) GTEST_SKIP() << "a sanitizer's run-time needs system calls of its own";
    }
};

std::string nameOf(const ::testing::TestParamInfo<std::string>& row) {
    std::string name;
    for (const char letter : row.param) name += letter == '-' || letter == '.' ? '_' : letter;
    return name;
}

std::vector<std::string> inBothFormats(const std::vector<std::string>& names) {
    std::vector<std::string> all;
    for (const std::string& name : names)
        for (const char* extension : {".heic", ".avif"}) all.push_back(name + extension);
    return all;
}

TEST_F(LateFile, ThatStatesMorePixelsThanThereMayBeIsRefusedAtLittleCost) {
    for (const std::uint32_t side : {20000U, 65500U}) {
        for (const Bytes& bytes :
             {jxlHeader(side), withSide("alpha.heic", side), withSide("p3.avif", side)}) {
            const Outcome outcome = openWithHoles(bytes, bytes.size());
            EXPECT_FALSE(outcome.opened) << side;
            expectLittleWork(outcome);
        }
    }
}

// Cameras store their pictures as grids.
class HonestFile : public LateFile, public ::testing::WithParamInterface<std::string> {};
TEST_P(HonestFile, IsOpened) {
    const Bytes bytes = bytesOf(GetParam());
    const Outcome outcome = openWithHoles(bytes, bytes.size());
    EXPECT_TRUE(outcome.opened);
    expectLittleWork(outcome);
}
INSTANTIATE_TEST_SUITE_P(
    Files, HonestFile,
    ::testing::ValuesIn(inBothFormats({"grid", "grid-alpha", "overlay", "overlay-alpha"})), nameOf);
INSTANTIATE_TEST_SUITE_P(Cameras, HonestFile,
                         ::testing::Values("grid-of-many.heic", "grid-of-many-cropped.heic",
                                           "two-slices.heic"),
                         nameOf);

// Most of them state 80 x 64 or 5 x 3 pixels, and 26,990 x 26,213 elsewhere, for which the
// libraries would take gigabytes.
class Bomb : public LateFile, public ::testing::WithParamInterface<std::string> {};
TEST_P(Bomb, IsRefusedAtLittleCost) {
    const Bytes bytes = bytesOf(GetParam());
    const Outcome outcome = openWithHoles(bytes, bytes.size());
    EXPECT_FALSE(outcome.opened);
    expectLittleWork(outcome);
}
INSTANTIATE_TEST_SUITE_P(
    Files, Bomb,
    ::testing::ValuesIn(inBothFormats({"grid-larger", "grid-larger-alpha", "overlay-larger",
                                       "overlay-larger-alpha", "overlay-cropped", "coded-larger",
                                       "coded-larger-alpha"})),
    nameOf);
// What is made of itself has no end, what is made of a million pictures one that is far away.
INSTANTIATE_TEST_SUITE_P(
    Endless, Bomb,
    ::testing::ValuesIn(inBothFormats({"grid-of-itself", "overlay-of-itself", "overlay-nested",
                                       "overlay-nested-large", "overlay-turned",
                                       "overlay-of-others", "overlay-turned-by-others"})),
    nameOf);
// The library and a check before it may believe different halves of these.
INSTANTIATE_TEST_SUITE_P(Ambiguous, Bomb,
                         ::testing::ValuesIn(inBothFormats({"two-sizes", "two-sizes-reversed",
                                                            "two-heads", "hidden-references"})),
                         nameOf);
// The coded data states more than the file does: for four million pixels, for which a decoder may
// take its time, in units of its own, in each of a hundred parts, and sixty times over.
INSTANTIATE_TEST_SUITE_P(Inside, Bomb,
                         ::testing::ValuesIn(inBothFormats({"coded-larger-large", "tiles-larger",
                                                            "tiles-larger-of-no-size"})),
                         nameOf);
INSTANTIATE_TEST_SUITE_P(InsideOfHevc, Bomb,
                         ::testing::Values("coded-larger-inside.heic", "many-pictures.heic",
                                           "many-slices.heic"),
                         nameOf);
INSTANTIATE_TEST_SUITE_P(InsideOfAv1, Bomb, ::testing::Values("configuration-cut.avif"), nameOf);
// What a fuzzer found: the overlay is the transparency of the picture, or with 9,000 pixels a side
// the picture itself.
INSTANTIATE_TEST_SUITE_P(Found, Bomb, ::testing::Values("overlaid-alpha.heic", "overlaid.heic"),
                         nameOf);

}  // namespace
}  // namespace skarnel
