#include "qt/setting_ranges.h"

#include <gtest/gtest.h>

#include <limits>
#include <set>

namespace skarnel {
namespace {

TEST(SettingRanges, HaveEverySettingOnceInTheOrderInWhichTheyAct) {
    const char* order[] = {
        "perspectiveHeight", "perspectiveWidth", "offset", "start", "gradient", "alpha",
        "imagePerspective"};
    for (std::size_t i = 0; i < kSettingRanges.size(); ++i)
        EXPECT_EQ(kSettingRanges[i].key, order[i]);
    for (const ReflectionSetting& setting : kReflectionSettings)
        EXPECT_NE(settingRange(setting.key), nullptr) << setting.key;
    EXPECT_EQ(settingRange("unknown"), nullptr);
}

TEST(SettingRanges, EveryDefaultIsAPositionOfItsSlider) {
    for (const SettingRange& range : kSettingRanges) {
        const float value = settingDefault(range.key);
        EXPECT_EQ(valueAtPosition(range, positionOfValue(range, value)), value) << range.key;
    }
}

TEST(SettingRanges, TheFieldTakesAtLeastTheTravel) {
    for (const SettingRange& range : kSettingRanges) {
        EXPECT_LT(range.travelMin, range.travelMax) << range.key;
        EXPECT_LE(range.fieldMin, range.travelMin) << range.key;
        EXPECT_GE(range.fieldMax, range.travelMax) << range.key;
        EXPECT_GT(range.step, 0.0F) << range.key;
    }
}

TEST(SettingRanges, TheTravelEndsOnWholeSteps) {
    for (const SettingRange& range : kSettingRanges) {
        EXPECT_EQ(valueAtPosition(range, travelPositions(range)), range.travelMax) << range.key;
        EXPECT_EQ(valueAtPosition(range, 0), range.travelMin) << range.key;
    }
}

TEST(SettingRanges, WhatLiesBeyondTheTravelRestsAtItsEnd) {
    const SettingRange& alpha = *settingRange("alpha");
    EXPECT_EQ(positionOfValue(alpha, 300.0F), 255);
    EXPECT_EQ(positionOfValue(alpha, -1.0F), 0);
    EXPECT_EQ(positionOfValue(alpha, 99.6F), 100);
    EXPECT_EQ(positionOfValue(alpha, std::numeric_limits<float>::quiet_NaN()), 0);
    EXPECT_EQ(positionOfValue(alpha, std::numeric_limits<float>::infinity()), 255);
}

}  // namespace
}  // namespace skarnel
