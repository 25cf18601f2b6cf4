#include "app/background_color_text.h"

#include <gtest/gtest.h>

#include <limits>

#include "controller_fixture.h"

namespace skarnel::testing_app {
namespace {

TEST(BackgroundColorText, TruncatesAfterASinglePrecisionProduct) {
    struct Row {
        const char* name;
        double red, green, blue;
        const char* expected;
    };
    const Row rows[] = {
        {"black", 0, 0, 0, "#000000"},
        {"white", 1, 1, 1, "#FFFFFF"},
        {"half is 127.5, never 128", 0.5, 0.5, 0.5, "#7F7F7F"},
        {"orange", 1, 0.2, 0, "#FF3300"},
        {"thirds", 0.1, 0.6, 1.0 / 3, "#199955"},
        {"leading zeros", 1.0 / 255, 2.0 / 255, 254.0 / 255, "#0102FE"},
        {"12 of 255 has a leading zero", 12.0 / 255, 0, 0, "#0C0000"},
        {"just below 1/16", 15.9 / 255, 15.9 / 255, 15.9 / 255, "#0F0F0F"},
        {"just below white", 0.9999, 0.9999, 0.9999, "#FEFEFE"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(colorTextOfRGB(row.red, row.green, row.blue), row.expected) << row.name;
    }
}

// 99/255 as a double, times 255 in double precision, is 99 - 1.4e-14 and would truncate to 98;
// narrowed to single precision first it is 99 exactly.
TEST(BackgroundColorText, NarrowsBeforeItMultiplies) {
    for (int value = 0; value <= 255; ++value) {
        const double component = value / 255.0;
        const float product = static_cast<float>(component) * 255.0F;
        char expected[8];
        std::snprintf(expected, sizeof expected, "#%02X%02X%02X",
                      static_cast<unsigned char>(product), static_cast<unsigned char>(product),
                      static_cast<unsigned char>(product));
        EXPECT_EQ(colorTextOfRGB(component, component, component), expected) << value;
    }
}

TEST(BackgroundColorText, HasSevenCharactersWhateverTheComponents) {
    const double odd[] = {-1,
                          -1e30,
                          1.5,
                          2e9,
                          1e300,
                          std::numeric_limits<double>::infinity(),
                          std::numeric_limits<double>::quiet_NaN()};
    for (const double red : odd) {
        for (const double blue : odd) {
            const std::string text = colorTextOfRGB(red, 0.5, blue);
            EXPECT_EQ(text.size(), 7U) << red << " " << blue;
            EXPECT_EQ(text.find(' '), std::string::npos) << red << " " << blue;
            EXPECT_EQ(text.find('\0'), std::string::npos) << red << " " << blue;
        }
    }
}

using BackgroundColorString = ControllerTest;

TEST_F(BackgroundColorString, ConvertsToDeviceRGBAndIgnoresAlpha) {
    controller.resultViewBackgroundColor = NSColor::colorWithDeviceWhite(0.5, 0.25);
    EXPECT_EQ(controller.backgroundColorString(), "#7F7F7F");
    controller.resultViewBackgroundColor = NSColor::colorWithDeviceRed(1, 0.2, 0, 0);
    EXPECT_EQ(controller.backgroundColorString(), "#FF3300");
    // Cyan and black add up: red 1 - min(1, 0.25 + 0.25) = 0.5, green and blue 1 - 0.25 = 0.75,
    // and 0.75 * 255 = 191.25 is BF.
    controller.resultViewBackgroundColor = NSColor::colorWithDeviceCyan(0.25, 0, 0, 0.25, 1);
    EXPECT_EQ(controller.backgroundColorString(), "#7FBFBF");
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST_F(BackgroundColorString, IsBlackAtFirst) {
    controller.init();
    EXPECT_EQ(controller.backgroundColorString(), "#000000");
}

}  // namespace
}  // namespace skarnel::testing_app
