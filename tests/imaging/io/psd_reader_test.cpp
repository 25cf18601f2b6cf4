// The Photoshop reader on files built by hand.
#include <gtest/gtest.h>

#include <bit>

#include "imaging/io/file_builders.h"
#include "imaging/io/pictures.h"

namespace skarnel {
namespace {

using namespace skarnel::testing;

std::vector<Rgba> decoded(const PsdBuilder& builder) {
    const auto picture = decodeImage(builder.build());
    EXPECT_TRUE(picture) << picture.error().message;
    return picture ? pixelsOf(picture->image) : std::vector<Rgba>();
}

TEST(PsdReader, EveryPackingGivesTheSamePicture) {
    for (const bool big : {false, true}) {
        for (const std::uint16_t packing : {0, 1, 2}) {
            PsdBuilder psd;
            psd.big = big;
            psd.width = 2;
            psd.height = 2;
            psd.packing = packing;
            psd.rows = {{1, 2}, {3, 4}, {10, 20}, {30, 40}, {100, 110}, {120, 130}};
            EXPECT_EQ(
                decoded(psd),
                (std::vector<Rgba>{
                    {1, 10, 100, 255}, {2, 20, 110, 255}, {3, 30, 120, 255}, {4, 40, 130, 255}}))
                << big << packing;
        }
    }
}

TEST(PsdReader, PredictedRowsAreSummedUp) {
    PsdBuilder eight;
    eight.width = 3;
    eight.mode = 1;
    eight.packing = 3;
    eight.rows = {{10, 5, 255}};  // 10, 15, 14
    EXPECT_EQ(decoded(eight),
              (std::vector<Rgba>{{10, 10, 10, 255}, {15, 15, 15, 255}, {14, 14, 14, 255}}));
    PsdBuilder sixteen = eight;
    sixteen.width = 2;
    sixteen.depth = 16;
    sixteen.rows = {{0x01, 0x01, 0x01, 0x01}};  // 0x0101, 0x0202
    EXPECT_EQ(decoded(sixteen), (std::vector<Rgba>{{1, 1, 1, 255}, {2, 2, 2, 255}}));
    // 1.0F = 3F800000 and 0: bytes 3F 00 | 80 00 | 00 00 | 00 00, each less the one before.
    PsdBuilder floats = eight;
    floats.width = 2;
    floats.depth = 32;
    floats.rows = {{0x3F, 0xC1, 0x80, 0x80, 0, 0, 0, 0}};
    EXPECT_EQ(decoded(floats), (std::vector<Rgba>{{255, 255, 255, 255}, {0, 0, 0, 255}}));
}

TEST(PsdReader, BitmapsHaveBlackBits) {
    PsdBuilder psd;
    psd.width = 9;
    psd.depth = 1;
    psd.mode = 0;
    psd.rows = {{0b10000000, 0b10000000}};
    const auto pixels = decoded(psd);
    EXPECT_EQ(pixels.at(0), (Rgba{0, 0, 0, 255}));
    EXPECT_EQ(pixels.at(1), (Rgba{255, 255, 255, 255}));
    EXPECT_EQ(pixels.at(8), (Rgba{0, 0, 0, 255}));
}

TEST(PsdReader, IndicesNameColoursOfThreePlanes) {
    PsdBuilder psd;
    psd.mode = 2;
    psd.palette = Bytes(768, 0);
    psd.palette[5] = 1;
    psd.palette[256 + 5] = 2;
    psd.palette[512 + 5] = 3;
    psd.rows = {{5}};
    EXPECT_EQ(decoded(psd), (std::vector<Rgba>{{1, 2, 3, 255}}));
    psd.palette.resize(767);
    EXPECT_FALSE(decodeImage(psd.build()));
}

TEST(PsdReader, LightOfThirtyTwoBitsGoesThroughTheCurveOfSrgb) {
    PsdBuilder psd;
    psd.width = 3;
    psd.depth = 32;
    psd.mode = 1;
    ByteSink row(true);
    // 1.055 * 0.5^(1/2.4) - 0.055 = 0.7354 -> 187.5; 12.92 * 0.002 = 0.02584 -> 6.6.
    for (const float value : {0.5F, 0.002F, -3.0F}) row.u32(std::bit_cast<std::uint32_t>(value));
    psd.rows = {row.bytes};
    const auto pixels = decoded(psd);
    EXPECT_NEAR(pixels.at(0)[0], 188, 1);
    EXPECT_EQ(pixels.at(1)[0], 7);
    EXPECT_EQ(pixels.at(2)[0], 0);
}

PsdBuilder withExtraChannel(int layerCount) {
    PsdBuilder psd;
    psd.width = 2;
    psd.rows = {{255, 200}, {255, 150}, {155, 127}, {0, 128}};
    if (layerCount != 99) {
        psd.layers = ByteSink(true).u32(2).u16(static_cast<std::uint16_t>(layerCount)).bytes;
    }
    return psd;
}

TEST(PsdReader, MergedAlphaHasItsWhiteTakenAway) {
    // Over white at alpha 128: 127 of white; 200 - 127 = 73, 150 - 127 = 23, 127 - 127 = 0.
    const std::vector<Rgba> expected = {{0, 0, 0, 0}, {73, 23, 0, 128}};
    EXPECT_EQ(decoded(withExtraChannel(-1)), expected);
    EXPECT_EQ(decoded(withExtraChannel(99)), expected) << "no layers at all";
}

TEST(PsdReader, AnExtraChannelBesideLayersIsNoTransparency) {
    EXPECT_EQ(decoded(withExtraChannel(1)),
              (std::vector<Rgba>{{255, 255, 155, 255}, {200, 150, 127, 255}}));
}

TEST(PsdReader, InksAreStoredInverted) {
    PsdBuilder psd;
    psd.mode = 4;
    psd.width = 2;
    psd.rows = {{255, 0}, {255, 255}, {255, 255}, {255, 255}};
    const auto pixels = decoded(psd);
    EXPECT_GE(pixels.at(0)[0], 253);  // no ink
    EXPECT_LT(pixels.at(1)[0], 80);   // cyan
    EXPECT_GT(pixels.at(1)[2], 180);
    psd.rows.push_back({0, 255});
    EXPECT_EQ(decoded(psd).at(0), (Rgba{0, 0, 0, 0}));
    EXPECT_EQ(decoded(psd).at(1)[3], 255);
}

TEST(PsdReader, ReadsTheResolutionOfItsResources) {
    PsdBuilder psd;
    psd.rows = {{1}, {2}, {3}};
    psd.resources = ByteSink(true)
                        .text("8BIM")
                        .u16(1005)
                        .u16(0)
                        .u32(16)
                        .u32(300 << 16)
                        .u16(1)
                        .u16(1)
                        .u32(150 << 16)
                        .u16(1)
                        .u16(1)
                        .bytes;
    const auto picture = decodeImage(psd.build());
    ASSERT_TRUE(picture);
    EXPECT_EQ(numberProperty(picture->properties, kPropertyDpiWidth), 300.0);
    EXPECT_EQ(numberProperty(picture->properties, kPropertyDpiHeight), 150.0);
}

TEST(PsdReader, RefusesWhatItCannotBe) {
    struct Row {
        const char* name;
        void (*change)(PsdBuilder&);
    };
    for (const Row& row :
         {Row{"unknown mode", [](PsdBuilder& b) { b.mode = 9; }},
          Row{"depth of a bitmap", [](PsdBuilder& b) { b.mode = 0; }},
          Row{"odd depth", [](PsdBuilder& b) { b.depth = 12; }},
          Row{"too few channels",
              [](PsdBuilder& b) {
                  b.rows = {{1}, {2}};
              }},
          Row{"unknown packing", [](PsdBuilder& b) { b.packing = 4; }},
          Row{"wider than the format allows", [](PsdBuilder& b) { b.width = 30001; }},
          Row{"missing rows", [](PsdBuilder& b) { b.width = 3; }}}) {
        PsdBuilder psd;
        psd.rows = {{1}, {2}, {3}};
        row.change(psd);
        EXPECT_FALSE(decodeImage(psd.build())) << row.name;
    }
}

TEST(PsdReader, RunsThatLeaveTheirRowAreDamage) {
    PsdBuilder psd;
    psd.mode = 1;
    psd.width = 2;
    psd.packing = 0;
    psd.rows = {{}};
    for (const Bytes& run :
         {Bytes{2, 1, 2, 3}, Bytes{0xFE, 7}, Bytes{0, 1}, Bytes{1, 1}, Bytes{0xFF}}) {
        Bytes file = psd.build();
        file[file.size() - 1] = 1;  // packed in runs
        file.push_back(0);
        file.push_back(static_cast<std::uint8_t>(run.size()));
        file.insert(file.end(), run.begin(), run.end());
        EXPECT_FALSE(decodeImage(file)) << ::testing::PrintToString(run);
    }
    Bytes good = psd.build();
    good[good.size() - 1] = 1;
    for (const int byte : {0, 3, 0x80, 0xFF, 9}) good.push_back(static_cast<std::uint8_t>(byte));
    const auto picture = decodeImage(good);
    ASSERT_TRUE(picture);
    EXPECT_EQ(pixelAt(picture->image, 1, 0), (Rgba{9, 9, 9, 255}));
}

TEST(PsdReader, DuotonesAreTheirGreyPicture) {
    PsdBuilder psd;
    psd.mode = 8;
    psd.palette = Bytes(20, 1);  // the inks
    psd.rows = {{77}};
    EXPECT_EQ(decoded(psd), (std::vector<Rgba>{{77, 77, 77, 255}}));
    EXPECT_EQ(textProperty(decodeImage(psd.build())->properties, kPropertyColorModel), "Gray");
}

Bytes resource(unsigned id, const std::string& name, const Bytes& data) {
    ByteSink out(true);
    out.text("8BIM").u16(id).u8(name.size()).text(name).zeros(name.size() % 2 == 0 ? 1 : 0);
    return out.u32(data.size()).raw(data).zeros(data.size() % 2).bytes;
}

TEST(PsdReader, TheCamerasFactsAreAmongItsResourcesAndWhatIsUnknownIsPassedOver) {
    // One entry: the maker.
    const Bytes block = ByteSink(true)
                            .text("MM")
                            .u16(42)
                            .u32(8)
                            .u16(1)
                            .u16(0x010F)
                            .u16(2)
                            .u32(4)
                            .text("Cam")
                            .u8(0)
                            .u32(0)
                            .bytes;
    ByteSink all(true);
    all.raw(resource(1061, "of an odd length", {1, 2, 3}));
    all.raw(resource(1039, "odd", Bytes(7, 'p')));  // no profile
    all.raw(resource(1058, "", block)).text("8BIX").zeros(20);
    PsdBuilder psd;
    psd.rows = {{1}, {2}, {3}};
    psd.resources = all.bytes;
    const auto picture = decodeImage(psd.build());
    ASSERT_TRUE(picture) << picture.error().message;
    EXPECT_EQ(textProperty(picture->properties, "{TIFF}.Make"), "Cam");
    EXPECT_EQ(pixelsOf(picture->image), (std::vector<Rgba>{{1, 2, 3, 255}}));
}

}  // namespace
}  // namespace skarnel
