#include "cli/render_settings.h"

#include <gtest/gtest.h>

namespace skarnel::cli {
namespace {

TEST(RenderSettings, DefaultsAreTheApplicationsDefaults) {
    const RenderSettings settings = defaultSettings();
    EXPECT_EQ(settings.number("perspectiveWidth"), 0.0F);
    EXPECT_EQ(settings.number("perspectiveHeight"), 100.0F);
    EXPECT_EQ(settings.number("offset"), 0.0F);
    EXPECT_EQ(settings.number("start"), 0.0F);
    EXPECT_EQ(settings.number("gradient"), 7.0F);
    EXPECT_EQ(settings.number("alpha"), 200.0F);
    EXPECT_EQ(settings.number("imagePerspective"), 50.0F);
    EXPECT_FALSE(settings.applyBackgroundColor);
    EXPECT_EQ(settings.backgroundColor, (DeviceColor{0, 0, 0, 1}));
}

TEST(RenderSettings, StoredOnesCountWhereTheyAreAndDefaultsElsewhere) {
    SettingsStore store("");
    store.setFloat("offset", 0);
    store.setFloat("gradient", 3);
    store.setBool("applyBackgroundColor", true);
    const RenderSettings settings = storedSettings(store);
    EXPECT_EQ(settings.number("gradient"), 3.0F);
    EXPECT_EQ(settings.number("offset"), 0.0F);
    EXPECT_EQ(settings.number("alpha"), 200.0F);
    EXPECT_TRUE(settings.applyBackgroundColor);
}

TEST(RenderSettings, AnEmptyStoreIsTheDefaults) {
    EXPECT_EQ(storedSettings(SettingsStore("")), defaultSettings());
}

TEST(RenderSettings, OptionsWinOverWhatIsStored) {
    SettingsStore store("");
    store.setFloat("gradient", 3);
    store.setFloat("alpha", 100);
    SettingOverrides overrides;
    overrides.numbers[indexOfSetting("gradient")] = 9.0F;
    overrides.applyBackgroundColor = true;
    overrides.backgroundColor = DeviceColor{1, 0, 0, 1};
    const RenderSettings settings = withOverrides(storedSettings(store), overrides);
    EXPECT_EQ(settings.number("gradient"), 9.0F);
    EXPECT_EQ(settings.number("alpha"), 100.0F);
    EXPECT_TRUE(settings.applyBackgroundColor);
    EXPECT_EQ(settings.backgroundColor, (DeviceColor{1, 0, 0, 1}));
}

}  // namespace
}  // namespace skarnel::cli
