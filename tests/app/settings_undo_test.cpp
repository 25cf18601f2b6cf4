#include "app/settings_undo.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include <limits>

#include "recording_services.h"

namespace skarnel::testing_app {
namespace {

/// The defaults with another opacity.
SettingsState withAlpha(float alpha) {
    SettingsState state = defaultSettings();
    state.numbers[5] = alpha;
    return state;
}

TEST(SettingsUndo, StartsEmpty) {
    SettingsUndo undo;
    EXPECT_FALSE(undo.canUndo());
    EXPECT_FALSE(undo.canRedo());
    EXPECT_EQ(undo.undo(), std::nullopt);
    EXPECT_EQ(undo.redo(), std::nullopt);
    EXPECT_EQ(undo.undoLabel(), "");
    EXPECT_EQ(undo.redoLabel(), "");
}

TEST(SettingsUndo, ADragIsOneEntryFromPressToRelease) {
    SettingsUndo undo;
    undo.beginGesture("Opacity", withAlpha(200));
    undo.endGesture(withAlpha(120));  // whatever lay between
    EXPECT_EQ(undo.undoLabel(), "Opacity");
    EXPECT_EQ(undo.undo(), withAlpha(200));
    EXPECT_FALSE(undo.canUndo());
    EXPECT_EQ(undo.redoLabel(), "Opacity");
    EXPECT_EQ(undo.redo(), withAlpha(120));
    EXPECT_FALSE(undo.canRedo());
}

TEST(SettingsUndo, AGestureThatEndsWhereItBeganIsNoEntry) {
    SettingsUndo undo;
    undo.beginGesture("Opacity", withAlpha(200));
    undo.endGesture(withAlpha(200));
    undo.record("Opacity", withAlpha(1), withAlpha(1));
    EXPECT_FALSE(undo.canUndo());
}

TEST(SettingsUndo, AGestureThatEndsWhereItBeganKeepsWhatCanBeRedone) {
    SettingsUndo undo;
    undo.record("Opacity", withAlpha(1), withAlpha(2));
    undo.undo();
    undo.record("Width", withAlpha(1), withAlpha(1));
    EXPECT_TRUE(undo.canRedo());
}

TEST(SettingsUndo, AResetIsOneEntryForAllSettings) {
    SettingsState changed = withAlpha(10);
    changed.numbers[0] = 25;
    changed.applyBackgroundColor = true;
    SettingsUndo undo;
    undo.record("Reset", changed, defaultSettings());
    EXPECT_EQ(undo.undo(), changed);
    EXPECT_EQ(undo.redo(), defaultSettings());
}

TEST(SettingsUndo, StatesAreReturnedInTurn) {
    SettingsUndo undo;
    undo.record("a", withAlpha(1), withAlpha(2));
    undo.record("b", withAlpha(2), withAlpha(3));
    EXPECT_EQ(undo.undo(), withAlpha(2));
    EXPECT_EQ(undo.undoLabel(), "a");
    EXPECT_EQ(undo.redoLabel(), "b");
    EXPECT_EQ(undo.undo(), withAlpha(1));
    EXPECT_EQ(undo.redo(), withAlpha(2));
    EXPECT_EQ(undo.redo(), withAlpha(3));
}

TEST(SettingsUndo, ANewEntryDropsWhatCouldBeRedone) {
    SettingsUndo undo;
    undo.record("a", withAlpha(1), withAlpha(2));
    undo.undo();
    undo.record("b", withAlpha(1), withAlpha(9));
    EXPECT_FALSE(undo.canRedo());
    EXPECT_EQ(undo.undo(), withAlpha(1));
    EXPECT_FALSE(undo.canUndo());
}

TEST(SettingsUndo, AnActionIsTakenBackAndMadeAgainAmongTheStates) {
    SettingsUndo undo;
    std::string log;
    undo.record("Opacity", withAlpha(1), withAlpha(2));
    undo.recordAction(
        "Remove", [&] { log += "back "; }, [&] { log += "forth "; });
    EXPECT_EQ(undo.undoLabel(), "Remove");
    EXPECT_EQ(undo.undo(), std::nullopt);
    EXPECT_EQ(undo.undo(), withAlpha(1));
    EXPECT_FALSE(undo.canUndo());
    EXPECT_EQ(undo.redo(), withAlpha(2));
    EXPECT_EQ(undo.redoLabel(), "Remove");
    EXPECT_EQ(undo.redo(), std::nullopt);
    EXPECT_EQ(log, "back forth ");
}

TEST(SettingsUndo, TheOldestEntriesGoFirst) {
    SettingsUndo undo(2);
    undo.record("a", withAlpha(1), withAlpha(2));
    undo.record("b", withAlpha(2), withAlpha(3));
    undo.record("c", withAlpha(3), withAlpha(4));
    EXPECT_EQ(undo.undo(), withAlpha(3));
    EXPECT_EQ(undo.undo(), withAlpha(2));
    EXPECT_FALSE(undo.canUndo());
}

TEST(SettingsUndo, ALimitOfNoneKeepsOne) {
    SettingsUndo undo(0);
    undo.record("a", withAlpha(1), withAlpha(2));
    EXPECT_TRUE(undo.canUndo());
}

TEST(SettingsUndo, AGestureThatIsStillOpenEndsWhereTheNextBegins) {
    SettingsUndo undo;
    undo.beginGesture("a", withAlpha(1));
    EXPECT_TRUE(undo.isGestureOpen());
    undo.beginGesture("b", withAlpha(2));
    undo.endGesture(withAlpha(3));
    EXPECT_FALSE(undo.isGestureOpen());
    EXPECT_EQ(undo.undoLabel(), "b");
    EXPECT_EQ(undo.undo(), withAlpha(2));
    EXPECT_EQ(undo.undo(), withAlpha(1));
}

TEST(SettingsUndo, AnEndWithoutABeginningDoesNothing) {
    SettingsUndo undo;
    undo.endGesture(withAlpha(7));
    EXPECT_FALSE(undo.canUndo());
}

TEST(SettingsState, NaNEqualsItself) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(withAlpha(nan), withAlpha(nan));
    EXPECT_FALSE(withAlpha(0.0F) == withAlpha(-0.0F));
}

TEST(SettingsState, IsReadAsARenderReadsIt) {
    CallLog log;
    RecordingDefaults defaults(log);
    SettingsState expected;
    expected.numbers[5] = 200;  // an absent opacity counts as 200, all else as 0
    EXPECT_EQ(readSettings(defaults), expected);
    defaults.values = {{"offset", 20.0F}, {"alpha", 0.0F}, {"applyBackgroundColor", true}};
    expected.numbers[5] = 0;
    expected.numbers[2] = 20;
    expected.applyBackgroundColor = true;
    EXPECT_EQ(readSettings(defaults), expected);
}

}  // namespace
}  // namespace skarnel::testing_app
