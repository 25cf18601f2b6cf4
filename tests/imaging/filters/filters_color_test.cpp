// Expected samples from a script that applies the published matrices to straight components and
// multiplies by 255; the ones with zeros by hand.
#include <limits>

#include "imaging/filter_registry.h"
#include "imaging/filters/filter_run.h"

namespace skarnel {
namespace {

using namespace filters;

constexpr double kPi = 3.141592653589793;
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

/// One pixel through a filter.
Row through(std::string_view name, const Row& pixel,
            const std::vector<std::pair<std::string_view, CIValue>>& values = {}) {
    const auto output = filterOn(name, pictureOf(1, pixel), values).outputImage();
    return output ? samplesOf(*output, {0, 0}, 1, 1) : Row{};
}

const std::vector<Row> kColors{{255, 0, 0, 255}, {200, 100, 50, 255}, {10, 20, 5, 40},
                               {0, 0, 0, 0},     {1, 1, 0, 1},        {255, 255, 255, 255}};

TEST(ColorFilters, AreRegisteredWithTheirDefaults) {
    const auto valueOf = [](std::string_view name, std::string_view key) {
        CIFilter filter = CIFilter::filterWithName(name).value();
        EXPECT_FALSE(filter.valueForKey(key)) << "no value before the defaults are set";
        filter.setDefaults();
        return std::get<double>(filter.valueForKey(key).value());
    };
    EXPECT_EQ(valueOf("CIHueAdjust", "inputAngle"), 0);
    EXPECT_EQ(valueOf("CIColorControls", "inputSaturation"), 1);
    EXPECT_EQ(valueOf("CIColorControls", "inputBrightness"), 0);
    EXPECT_EQ(valueOf("CIColorControls", "inputContrast"), 1);
    EXPECT_EQ(valueOf("CISepiaTone", "inputIntensity"), 1);
    EXPECT_TRUE(CIFilter::filterWithName("CIColorInvert"));
}

TEST(ColorFilters, KeepTheExtentAndWorkOutsideTheOrigin) {
    const CIImage image = pictureOf(2, {255, 0, 0, 255, 0, 0, 0, 255});
    const CIImage inverted = filterOn("CIColorInvert", image).outputImage().value();
    EXPECT_EQ(inverted.extent(), image.extent());
    // What lies outside is transparent and stays so.
    EXPECT_EQ(samplesOf(inverted, {-1, 0}, 4, 1),
              (Row{0, 0, 0, 0, 0, 255, 255, 255, 255, 255, 255, 255, 0, 0, 0, 0}));
}

TEST(HueAdjust, ByNothingKeepsEveryByte) {
    for (const Row& color : kColors) EXPECT_EQ(through("CIHueAdjust", color), color);
}

TEST(HueAdjust, TurnsByTheAngle) {
    const auto turned = [](const Row& color, double angle) {
        return through("CIHueAdjust", color, {{"inputAngle", angle}});
    };
    // (0.213 - 0.213, 0.213 + 0.143, 0.213 - 0.787).
    EXPECT_EQ(turned({255, 0, 0, 255}, kPi / 2), (Row{0, 91, 0, 255}));
    // (0.213 - 0.787, 0.426, 0.426): 108.63.
    EXPECT_EQ(turned({255, 0, 0, 255}, kPi), (Row{0, 109, 109, 255}));
    EXPECT_EQ(turned({200, 100, 50, 255}, 1), (Row{105, 132, 12, 255}));
    EXPECT_EQ(turned({0, 255, 0, 255}, 2 * kPi / 3), (Row{116, 177, 255, 255}));
}

TEST(HueAdjust, LeavesGreyAsItIs) {
    for (const int grey : {0, 1, 100, 255})
        for (const double angle : {0.5, 1.0, 2.5, -4.0})
            EXPECT_EQ(through("CIHueAdjust", {grey, grey, grey, 255}, {{"inputAngle", angle}}),
                      (Row{grey, grey, grey, 255}));
}

TEST(ColorControls, WithTheirDefaultsKeepEveryByte) {
    for (const Row& color : kColors) EXPECT_EQ(through("CIColorControls", color), color);
}

TEST(ColorControls, WithoutSaturationGiveTheLuminance) {
    const std::vector<std::pair<std::string_view, CIValue>> grey{{"inputSaturation", 0.0}};
    // 0.213, 0.715 and 0.072 of 255: 54.3, 182.3, 18.4.
    EXPECT_EQ(through("CIColorControls", {255, 0, 0, 255}, grey), (Row{54, 54, 54, 255}));
    EXPECT_EQ(through("CIColorControls", {0, 255, 0, 255}, grey), (Row{182, 182, 182, 255}));
    EXPECT_EQ(through("CIColorControls", {0, 0, 255, 255}, grey), (Row{18, 18, 18, 255}));
}

TEST(ColorControls, AddBrightnessAndThenSpreadTheContrast) {
    const Row color{200, 100, 50, 255};
    // 0.2 * 255 = 51, clamped at 255.
    EXPECT_EQ(through("CIColorControls", color, {{"inputBrightness", 0.2}}),
              (Row{251, 151, 101, 255}));
    EXPECT_EQ(through("CIColorControls", color, {{"inputBrightness", 0.4}}),
              (Row{255, 202, 152, 255}));
    // 1.5 (c - 127.5) + 127.5 = 1.5 c - 63.75: 236.25, 86.25, 11.25.
    EXPECT_EQ(through("CIColorControls", color, {{"inputContrast", 1.5}}), (Row{236, 86, 11, 255}));
    // 3 c - 255.
    EXPECT_EQ(through("CIColorControls", color, {{"inputContrast", 3.0}}), (Row{255, 45, 0, 255}));
    // 1.5 (c + 51) - 63.75 = 1.5 c + 12.75: 312.75, 162.75, 87.75.
    EXPECT_EQ(through("CIColorControls", color, {{"inputBrightness", 0.2}, {"inputContrast", 1.5}}),
              (Row{255, 163, 88, 255}));
}

TEST(SepiaTone, FollowsItsMatrix) {
    // Rows' sums: 1.351 and 1.203 clamp; 0.937 * 255 = 238.9.
    EXPECT_EQ(through("CISepiaTone", {255, 255, 255, 255}), (Row{255, 255, 239, 255}));
    // Red alone: 0.393, 0.349, 0.272.
    EXPECT_EQ(through("CISepiaTone", {255, 0, 0, 255}), (Row{100, 89, 69, 255}));
    EXPECT_EQ(through("CISepiaTone", {255, 0, 0, 255}, {{"inputIntensity", 0.0}}),
              (Row{255, 0, 0, 255}));
    // Half way: 0.6965, 0.1745, 0.136.
    EXPECT_EQ(through("CISepiaTone", {255, 0, 0, 255}, {{"inputIntensity", 0.5}}),
              (Row{178, 44, 35, 255}));
    EXPECT_EQ(through("CISepiaTone", {255, 0, 0, 255}, {{"inputIntensity", 9.0}}),
              (Row{100, 89, 69, 255}));
}

TEST(ColorInvert, InvertsStraightColoursAndKeepsAlpha) {
    EXPECT_EQ(through("CIColorInvert", {255, 0, 100, 255}), (Row{0, 255, 155, 255}));
    // Half transparent: what is missing up to the alpha.
    EXPECT_EQ(through("CIColorInvert", {100, 0, 30, 128}), (Row{28, 128, 98, 128}));
    EXPECT_EQ(through("CIColorInvert", {0, 0, 0, 0}), (Row{0, 0, 0, 0}));
    // A colour above its alpha counts as full.
    EXPECT_EQ(through("CIColorInvert", {200, 0, 0, 100}), (Row{0, 100, 100, 100}));
}

TEST(ColorFilters, NoColourComesOutAboveItsAlpha) {
    for (int alpha = 0; alpha < 256; alpha += 5)
        for (int red = 0; red <= alpha; red += 3) {
            const Row out =
                through("CIHueAdjust", {red, alpha / 2, alpha, alpha}, {{"inputAngle", red * 0.1}});
            for (int sample = 0; sample < 3; ++sample)
                ASSERT_LE(out[static_cast<std::size_t>(sample)], alpha);
            ASSERT_EQ(out[3], alpha);
        }
}

TEST(ColorFilters, ValuesThatAreNoNumbersDefineNoImage) {
    for (const double value : {kNan, kInf, -kInf}) {
        EXPECT_EQ(through("CIHueAdjust", kColors[0], {{"inputAngle", value}}), Row{});
        EXPECT_EQ(through("CIColorControls", kColors[0], {{"inputContrast", value}}), Row{});
        EXPECT_EQ(through("CISepiaTone", kColors[0], {{"inputIntensity", value}}), Row{});
    }
}

TEST(ColorFilters, ChainsOfFiltersWork) {
    const CIImage once =
        filterOn("CIColorInvert", pictureOf(1, {10, 20, 5, 40})).outputImage().value();
    const CIImage twice = filterOn("CIColorInvert", once).outputImage().value();
    EXPECT_EQ(samplesOf(twice, {0, 0}, 1, 1), (Row{10, 20, 5, 40}));
}

}  // namespace
}  // namespace skarnel
