#include "qt/user_presets.h"

#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonObject>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <limits>

#include "qt/window_state.h"

namespace skarnel {
namespace {

constexpr SettingNumbers kSome{1, 2, 3, 4, 5, 6, 7};
constexpr SettingNumbers kOther{0.1F, -2, 3, 4, 5, 300, 7};

class UserPresetsTest : public ::testing::Test {
  protected:
    QStringList names() const {
        QStringList names;
        for (const UserPreset& preset : presets.all()) names.append(preset.name);
        return names;
    }

    QTemporaryDir folder;
    WindowState state{folder.filePath(QStringLiteral("window.json"))};
    UserPresets presets{state};
};

TEST_F(UserPresetsTest, ThereAreNoneAtFirst) {
    EXPECT_TRUE(presets.all().isEmpty());
}

TEST_F(UserPresetsTest, ASavedLookIsThereAtTheNextStart) {
    presets.add(QStringLiteral("Mine"), kSome);
    presets.add(QStringLiteral("Other"), kOther);
    WindowState next(folder.filePath(QStringLiteral("window.json")));
    const UserPresets again(next);
    EXPECT_EQ(again.all(), (QList<UserPreset>{{QStringLiteral("Mine"), kSome},
                                              {QStringLiteral("Other"), kOther}}));
}

TEST_F(UserPresetsTest, AnEmptyNameBecomesOneAndATakenOneGetsANumber) {
    EXPECT_EQ(presets.add(QStringLiteral("  "), kSome), 0);
    EXPECT_EQ(presets.add({}, kSome), 1);
    EXPECT_EQ(presets.add(QStringLiteral(" my look"), kSome), 2);
    EXPECT_EQ(names(), (QStringList{QStringLiteral("My Look"), QStringLiteral("My Look 2"),
                                    QStringLiteral("my look 3")}));
}

TEST_F(UserPresetsTest, ANameChangesUnlessItIsEmptyOrTaken) {
    presets.add(QStringLiteral("One"), kSome);
    presets.add(QStringLiteral("Two"), kSome);
    QSignalSpy changes(&presets, &UserPresets::changed);
    EXPECT_FALSE(presets.rename(0, QStringLiteral(" ")));
    EXPECT_FALSE(presets.rename(0, QStringLiteral("TWO")));
    EXPECT_FALSE(presets.rename(2, QStringLiteral("Three")));
    EXPECT_FALSE(presets.rename(-1, QStringLiteral("Three")));
    EXPECT_TRUE(changes.isEmpty());
    EXPECT_TRUE(presets.rename(0, QStringLiteral(" one ")));
    EXPECT_EQ(names(), (QStringList{QStringLiteral("one"), QStringLiteral("Two")}));
    EXPECT_EQ(changes.size(), 1);
}

TEST_F(UserPresetsTest, ARemovedLookIsGone) {
    presets.add(QStringLiteral("One"), kSome);
    presets.add(QStringLiteral("Two"), kSome);
    presets.remove(0);
    presets.remove(7);
    presets.remove(-1);
    EXPECT_EQ(names(), QStringList{QStringLiteral("Two")});
}

TEST(UserPreset, DiffersFromAnotherByItsNameOrByItsNumbers) {
    const UserPreset mine{QStringLiteral("Mine"), kSome};
    EXPECT_NE(mine, (UserPreset{QStringLiteral("Other"), kSome}));
    EXPECT_NE(mine, (UserPreset{QStringLiteral("Mine"), kOther}));
}

TEST_F(UserPresetsTest, ItsOwnNameIsNoChange) {
    presets.add(QStringLiteral("One"), kSome);
    QSignalSpy changes(&presets, &UserPresets::changed);
    EXPECT_TRUE(presets.rename(0, QStringLiteral(" One ")));
    EXPECT_TRUE(changes.isEmpty());
}

TEST_F(UserPresetsTest, ALookIsFoundByItsNameInAnyCase) {
    EXPECT_EQ(presets.placeOf(QStringLiteral("One")), -1);
    presets.add(QStringLiteral("One"), kSome);
    presets.add(QStringLiteral("Two"), kSome);
    EXPECT_EQ(presets.placeOf(QStringLiteral("two")), 1);
    EXPECT_EQ(presets.placeOf(QStringLiteral("Three")), -1);
}

TEST_F(UserPresetsTest, ARemovedLookComesBackToItsPlace) {
    for (const char* name : {"One", "Two", "Three"}) presets.add(QLatin1String(name), kSome);
    const auto two = presets.remove(1);
    ASSERT_TRUE(two.has_value());
    EXPECT_EQ(presets.restore(*two), QStringLiteral("Two"));
    EXPECT_EQ(names(),
              (QStringList{QStringLiteral("One"), QStringLiteral("Two"), QStringLiteral("Three")}));
    EXPECT_EQ(presets.all()[1].settings, kSome);
}

TEST_F(UserPresetsTest, ARemovedLookComesBackAtTheEndOfAShorterListAndUnderAFreeName) {
    for (const char* name : {"One", "Two", "Three"}) presets.add(QLatin1String(name), kOther);
    const auto three = presets.remove(2);
    ASSERT_TRUE(three.has_value());
    presets.remove(0);
    ASSERT_TRUE(presets.rename(0, QStringLiteral("three")));
    EXPECT_EQ(presets.restore(*three), QStringLiteral("Three 2"));
    EXPECT_EQ(names(), (QStringList{QStringLiteral("three"), QStringLiteral("Three 2")}));
}

TEST_F(UserPresetsTest, WhatAnotherWindowRemovedIsNeitherRenamedNorKept) {
    presets.add(QStringLiteral("One"), kSome);
    presets.add(QStringLiteral("Two"), kSome);
    WindowState stateOfOther(folder.filePath(QStringLiteral("window.json")));
    UserPresets other(stateOfOther);
    other.remove(0);
    EXPECT_TRUE(presets.rename(0, QStringLiteral("Uno")));
    EXPECT_EQ(names(), QStringList{QStringLiteral("Two")});
    other.remove(0);
    EXPECT_EQ(presets.remove(0), std::nullopt);
    EXPECT_TRUE(presets.all().isEmpty());
}

TEST_F(UserPresetsTest, WhatAnotherWindowSavedUnderTheSameNameIsNeitherRenamedNorRemoved) {
    presets.add(QStringLiteral("One"), kSome);
    const QList<UserPreset> theirs{{QStringLiteral("One"), kOther}};
    const auto replace = [&] {
        WindowState stateOfOther(folder.filePath(QStringLiteral("window.json")));
        UserPresets other(stateOfOther);
        other.remove(0);
        other.add(QStringLiteral("One"), kOther);
    };
    replace();
    EXPECT_TRUE(presets.rename(0, QStringLiteral("Uno")));
    EXPECT_EQ(presets.all(), theirs);
    presets.remove(0);
    presets.add(QStringLiteral("One"), kSome);
    replace();
    EXPECT_EQ(presets.remove(0), std::nullopt);
    EXPECT_EQ(presets.all(), theirs);
}

TEST_F(UserPresetsTest, WhatCannotBeReadIsLeftOut) {
    QJsonObject good{{QStringLiteral("name"), QStringLiteral("Good")}};
    for (const ReflectionSetting& setting : kReflectionSettings) {
        good.insert(
            QString::fromLatin1(setting.key.data(), static_cast<qsizetype>(setting.key.size())), 1);
    }
    QJsonObject unnamed = good;
    unnamed.remove(QStringLiteral("name"));
    QJsonObject wrong = good;
    wrong.insert(QStringLiteral("alpha"), QStringLiteral("much"));
    QJsonObject huge = good;
    huge.insert(QStringLiteral("alpha"), 1e300);
    state.setValue(QStringLiteral("presets"),
                   QJsonArray{unnamed, wrong, huge, 3, QJsonObject{}, good, good});
    const UserPresets read(state);
    ASSERT_EQ(read.all().size(), 1);
    EXPECT_EQ(read.all().front().name, QStringLiteral("Good"));
}

}  // namespace
}  // namespace skarnel
