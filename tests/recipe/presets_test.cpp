#include "recipe/presets.h"

#include <gtest/gtest.h>

#include <cmath>
#include <set>
#include <string>

namespace skarnel {
namespace {

TEST(Presets, ThereAreTwelveAndTheFirstIsTheDefaults) {
    ASSERT_EQ(builtInPresets().size(), 12U);
    for (std::size_t i = 0; i < kReflectionSettings.size(); ++i) {
        EXPECT_EQ(builtInPresets()[0].settings[i], kReflectionSettings[i].defaultValue)
            << kReflectionSettings[i].key;
    }
}

TEST(Presets, NoTwoShareAnIdANameOrTheirNumbers) {
    std::set<std::string_view> ids;
    std::set<std::string_view> names;
    std::set<SettingNumbers> numbers;
    for (const Preset& preset : builtInPresets()) {
        EXPECT_TRUE(ids.insert(preset.id).second) << preset.id;
        EXPECT_TRUE(names.insert(preset.name).second) << preset.name;
        EXPECT_TRUE(numbers.insert(preset.settings).second) << preset.name;
    }
}

TEST(Presets, TheTwoCardsAreEachOthersMirrorImage) {
    // The turn follows sin(-2 pi v / 100), which is odd about 50.
    const Preset* left = presetWithId("card-left");
    const Preset* right = presetWithId("card-right");
    ASSERT_TRUE(left != nullptr && right != nullptr);
    EXPECT_EQ(left->settings[6] + right->settings[6], 100.0F);
    for (std::size_t i = 0; i < 6; ++i) EXPECT_EQ(left->settings[i], right->settings[i]);
}

TEST(Presets, AnUnknownIdAndUnknownNumbersGiveNone) {
    EXPECT_EQ(presetWithId("no-such-look"), nullptr);
    EXPECT_EQ(presetWithId(""), nullptr);
    EXPECT_EQ(presetWithSettings({1, 2, 3, 4, 5, 6, 7}), nullptr);
}

TEST(Presets, ALookIsFoundByItsIdAndByItsNumbers) {
    for (const Preset& preset : builtInPresets()) {
        EXPECT_EQ(presetWithId(preset.id), &preset);
        EXPECT_EQ(presetWithSettings(preset.settings), &preset);
    }
}

}  // namespace
}  // namespace skarnel
