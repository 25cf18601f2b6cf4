#include "cli/canvas_size.h"

#include <gtest/gtest.h>

#include <limits>

#include "cli/pictures.h"

namespace skarnel::cli {
namespace {

RenderSettings with(const std::vector<std::pair<std::string_view, float>>& numbers) {
    RenderSettings settings = defaultSettings();
    for (const auto& [key, value] : numbers) settings.numbers[indexOfSetting(key)] = value;
    return settings;
}

TEST(RenderSizes, AtTheDefaultsTheCanvasIsTwiceAsHigh) {
    const auto sizes = renderSizes({300, 200}, defaultSettings());
    ASSERT_TRUE(sizes);
    EXPECT_EQ(sizes->reflection, (PixelSize{300, 200}));
    EXPECT_EQ(sizes->canvas, (PixelSize{300, 400}));
    EXPECT_EQ(sizes->result, (PixelSize{300, 400}));
}

TEST(RenderSizes, AQuarterTurnIsNarrowerAndHigher) {
    // 400 x 300 composite: 240 x 420.
    const auto sizes = renderSizes({400, 150}, with({{"imagePerspective", 25}}));
    ASSERT_TRUE(sizes);
    EXPECT_EQ(sizes->canvas, (PixelSize{400, 300}));
    EXPECT_EQ(sizes->result, (PixelSize{240, 420}));
}

TEST(RenderSizes, AWiderReflectionWidensTheCanvas) {
    const auto sizes = renderSizes({300, 100}, with({{"perspectiveWidth", 10}, {"offset", 20}}));
    ASSERT_TRUE(sizes);
    EXPECT_EQ(sizes->canvas, (PixelSize{360, 220}));
}

TEST(RenderSizes, WithoutHeightOrWidthThereIsNothing) {
    EXPECT_FALSE(renderSizes({300, 100}, with({{"perspectiveHeight", 0}})));
    EXPECT_FALSE(renderSizes({300, 100}, with({{"perspectiveHeight", 0.5F}})));
    EXPECT_FALSE(renderSizes({300, 100}, with({{"perspectiveWidth", -50}})));
    EXPECT_FALSE(renderSizes({300, 100}, with({{"offset", -300}})));
    EXPECT_FALSE(renderSizes({300, 100}, with({{"offset", 3e38F}})));
    EXPECT_FALSE(renderSizes({300, 100}, with({{"perspectiveWidth", 1e9F}})));
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_FALSE(renderSizes({300, 100}, with({{"perspectiveHeight", nan}})));
}

TEST(RenderSizes, ArePredictedForHugeSettingsWithoutRendering) {
    const auto sizes = renderSizes({1000, 1000}, with({{"perspectiveWidth", 1e6F}}));
    ASSERT_TRUE(sizes);
    EXPECT_EQ(sizes->canvas.width, 20'001'000);
}

TEST(RenderSizes, ATurnTooLargeFor32BitsLeavesTheCanvas) {
    // 20000 x 26000 pixels become 12000 x 36400, 1.75e9 bytes.
    const auto turned = renderSizes({20'000, 13'000}, with({{"imagePerspective", 25}}));
    ASSERT_TRUE(turned);
    EXPECT_EQ(turned->result, (PixelSize{12'000, 36'400}));
    // 4 x 140e6 pixels would keep their width and become 4 x 196e6, 3.1e9 bytes.
    const auto unturned = renderSizes({4, 70'000'000}, with({{"imagePerspective", 25}}));
    ASSERT_TRUE(unturned);
    EXPECT_EQ(unturned->result, (PixelSize{4, 140'000'000}));
}

TEST(RenderSizes, AreThoseOfTheRenderItself) {
    const CGImage picture = test::gradientPicture(61, 47);
    int compared = 0;
    for (const float width : {0.0F, 10.0F, -7.0F, 33.3F}) {
        for (const float height : {100.0F, 33.0F, -50.0F, 141.4F, 3.0F}) {
            for (const float offset : {0.0F, 7.7F, -20.0F}) {
                for (const float turn : {50.0F, 0.0F, 10.0F, 25.0F, 62.0F, 99.0F, 50.01F}) {
                    const RenderSettings settings = with({{"perspectiveWidth", width},
                                                          {"perspectiveHeight", height},
                                                          {"offset", offset},
                                                          {"imagePerspective", turn}});
                    const auto sizes = renderSizes({61, 47}, settings);
                    const auto result = renderPicture(picture, settings);
                    ASSERT_EQ(sizes.has_value(), result.has_value());
                    if (!result) continue;
                    EXPECT_EQ(sizes->result,
                              (PixelSize{result->image.width(), result->image.height()}))
                        << width << " " << height << " " << offset << " " << turn;
                    ++compared;
                }
            }
        }
    }
    EXPECT_GT(compared, 400);
}

}  // namespace
}  // namespace skarnel::cli
