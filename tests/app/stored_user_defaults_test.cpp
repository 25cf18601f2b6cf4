#include "app/stored_user_defaults.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "storage/temporary_folder.h"
#include "util/log/system_log.h"

namespace skarnel {
namespace {

using test::fileText;
using test::putFile;
using testing::HasSubstr;

class StoredUserDefaultsTest : public testing::Test {
  protected:
    const test::TemporaryFolder folder_;
    const std::string path_ = folder_ / "settings.json";
};

TEST_F(StoredUserDefaultsTest, HasNothingAtFirst) {
    SettingsStore store(path_);
    const StoredUserDefaults defaults(store);
    EXPECT_EQ(defaults.objectForKey("alpha"), std::nullopt);
    EXPECT_EQ(defaults.floatForKey("alpha"), 0.0F);
    EXPECT_FALSE(defaults.boolForKey("applyBackgroundColor"));
    EXPECT_EQ(defaults.dictionaryRepresentation().allKeys().count(), 0U);
}

TEST_F(StoredUserDefaultsTest, KeepsNumbersAndFlagsApart) {
    SettingsStore store(path_);
    StoredUserDefaults defaults(store);
    defaults.setFloat(0, "offset");
    defaults.setBool(false, "applyBackgroundColor");
    EXPECT_EQ(defaults.objectForKey("offset"), DefaultsValue(0.0F));
    EXPECT_EQ(defaults.objectForKey("applyBackgroundColor"), DefaultsValue(false));
    defaults.setFloat(12.5F, "offset");
    defaults.setBool(true, "applyBackgroundColor");
    EXPECT_EQ(defaults.floatForKey("offset"), 12.5F);
    EXPECT_TRUE(defaults.boolForKey("applyBackgroundColor"));
}

TEST_F(StoredUserDefaultsTest, ValuesSurviveARestartOnceSynchronized) {
    {
        SettingsStore store(path_);
        StoredUserDefaults defaults(store);
        defaults.setFloat(0.1F, "gradient");
        EXPECT_EQ(fileText(path_), "(none)");  // nothing is written before
        EXPECT_TRUE(defaults.synchronize());
    }
    SettingsStore store(path_);
    EXPECT_EQ(StoredUserDefaults(store).floatForKey("gradient"), 0.1F);
}

TEST_F(StoredUserDefaultsTest, TheDictionaryIsACopyThatRemovalsLeaveAlone) {
    SettingsStore store(path_);
    StoredUserDefaults defaults(store);
    defaults.setFloat(1, "b");
    defaults.setFloat(2, "a");
    std::vector<std::string> walked;
    for (const std::string& key : defaults.dictionaryRepresentation().allKeys()) {
        walked.push_back(key);
        defaults.removeObjectForKey(key);
    }
    EXPECT_THAT(walked, testing::UnorderedElementsAre("a", "b"));
    EXPECT_EQ(defaults.objectForKey("a"), std::nullopt);
    EXPECT_EQ(defaults.objectForKey("b"), std::nullopt);
}

TEST_F(StoredUserDefaultsTest, ResettingTakesOverWhatOtherProgramsStored) {
    SettingsStore store(path_);
    StoredUserDefaults defaults(store);
    defaults.setFloat(5, "mine");
    {
        SettingsStore other(path_);
        other.setFloat("theirs", 6);
        EXPECT_TRUE(other.synchronize().hasValue());
    }
    defaults.resetStandardUserDefaults();
    EXPECT_EQ(defaults.floatForKey("mine"), 5.0F);
    EXPECT_EQ(defaults.floatForKey("theirs"), 6.0F);
}

TEST_F(StoredUserDefaultsTest, AFailedWriteIsLoggedAndKeepsTheValues) {
    putFile(folder_ / "file", "");
    SettingsStore store(folder_ / "file/settings.json");
    StoredUserDefaults defaults(store);
    defaults.setFloat(5, "alpha");
    const ScopedLogCapture captured;
    EXPECT_FALSE(defaults.synchronize());
    EXPECT_THAT(captured.text(), HasSubstr("Couldn't save the settings in " + store.path() + ": "));
    EXPECT_EQ(defaults.floatForKey("alpha"), 5.0F);
    defaults.resetStandardUserDefaults();
    EXPECT_EQ(defaults.floatForKey("alpha"), 5.0F);
}

TEST(DefaultsKeys, WalksEveryKeyWhenNothingChanges) {
    const DefaultsKeys keys({"a", "b", "c"});
    std::string walked;
    for (const std::string& key : keys) walked += key;
    EXPECT_EQ(walked, "abc");
}

TEST(DefaultsKeys, FailsLoudlyWhenAKeyIsAddedOrRemovedMeanwhile) {
    DefaultsKeys keys({"a", "b"});
    const auto addAtTheLastStep = [&keys] {
        for (const std::string& key : keys) {
            if (key == "b") keys.add("c");
        }
    };
    EXPECT_THROW(addAtTheLastStep(), EnumerationMutationError);
    const auto removeAnother = [&keys] {
        for (const std::string& key : keys) {
            if (key == "a") keys.remove("b");
        }
    };
    EXPECT_THROW(removeAnother(), EnumerationMutationError);
}

TEST(DefaultsKeys, RemovingAKeyThatIsNotThereIsNoChange) {
    DefaultsKeys keys({"a", "b"});
    for (const std::string& key : keys) keys.remove(key + "?");
    EXPECT_EQ(keys.count(), 2U);
}

}  // namespace
}  // namespace skarnel
