#include "storage/settings_store.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <bit>
#include <limits>

#include "storage/fake_file_systems.h"
#include "storage/left_overs.h"
#include "storage/scoped_variable.h"
#include "storage/temporary_folder.h"

namespace skarnel {
namespace {

using test::fileText;
using test::putFile;
using test::ScopedVariable;
using test::TemporaryFolder;
using testing::ElementsAre;
using testing::IsEmpty;

class SettingsStoreTest : public testing::Test {
  protected:
    const TemporaryFolder folder_;
    const std::string path_ = folder_ / "settings.json";
};

TEST_F(SettingsStoreTest, AnAbsentKeyReadsAsZeroAndFalse) {
    const SettingsStore store(path_);
    EXPECT_FALSE(store.contains("alpha"));
    EXPECT_EQ(store.floatForKey("alpha"), 0.0F);
    EXPECT_FALSE(store.boolForKey("applyBackgroundColor"));
    EXPECT_EQ(store.valueForKey("alpha"), std::nullopt);
    EXPECT_THAT(store.keys(), IsEmpty());
}

TEST_F(SettingsStoreTest, WhatIsSetIsReadBackAtOnceAndAfterARestart) {
    {
        SettingsStore store(path_);
        store.setFloat("gradient", 0.1F);
        store.setFloat("offset", -0.0F);
        store.setFloat("start", std::numeric_limits<float>::quiet_NaN());
        store.setBool("applyBackgroundColor", true);
        EXPECT_EQ(store.floatForKey("gradient"), 0.1F);
        ASSERT_TRUE(store.synchronize());
    }
    const SettingsStore again(path_);
    EXPECT_THAT(again.keys(), ElementsAre("applyBackgroundColor", "gradient", "offset", "start"));
    EXPECT_EQ(again.floatForKey("gradient"), 0.1F);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(again.floatForKey("offset")), 0x80000000U);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(again.floatForKey("start")), 0x7fc00000U);
    EXPECT_TRUE(again.boolForKey("applyBackgroundColor"));
}

TEST_F(SettingsStoreTest, AKeyWithTheValueZeroIsPresent) {
    SettingsStore store(path_);
    store.setFloat("offset", 0);
    store.setBool("applyBackgroundColor", false);
    EXPECT_TRUE(store.contains("offset"));
    EXPECT_TRUE(store.contains("applyBackgroundColor"));
}

TEST_F(SettingsStoreTest, NumbersAndFlagsReadAsEachOther) {
    SettingsStore store(path_);
    store.setFloat("number", 0.5F);
    store.setFloat("zero", 0);
    store.setBool("on", true);
    store.setBool("off", false);
    EXPECT_TRUE(store.boolForKey("number"));
    EXPECT_FALSE(store.boolForKey("zero"));
    EXPECT_EQ(store.floatForKey("on"), 1.0F);
    EXPECT_EQ(store.floatForKey("off"), 0.0F);
    EXPECT_EQ(store.valueForKey("number"), SettingValue(0.5F));
    EXPECT_EQ(store.valueForKey("on"), SettingValue(true));
}

TEST_F(SettingsStoreTest, OnlySynchronizeTouchesTheFile) {
    SettingsStore store(path_);
    store.setFloat("alpha", 1);
    EXPECT_TRUE(store.hasUnsavedChanges());
    EXPECT_THAT(folder_.names(), IsEmpty());
    ASSERT_TRUE(store.synchronize());
    EXPECT_FALSE(store.hasUnsavedChanges());
    EXPECT_THAT(folder_.names(), ElementsAre("settings.json", "settings.json.lock"));
}

TEST_F(SettingsStoreTest, SynchronizeWithoutChangesDoesNothing) {
    test::RefusingFileSystem counting({});
    SettingsStore store(path_, counting);
    const int opened = counting.count("open");
    ASSERT_TRUE(store.synchronize());
    EXPECT_EQ(counting.count("open"), opened);
    EXPECT_THAT(folder_.names(), IsEmpty());
}

TEST_F(SettingsStoreTest, ManyStepsOfASliderAreOneWrite) {
    test::RefusingFileSystem counting({});
    SettingsStore store(path_, counting);
    for (int i = 0; i < 1000; ++i) store.setFloat("offset", static_cast<float>(i));
    ASSERT_TRUE(store.synchronize());
    EXPECT_EQ(counting.count("rename"), 1);
    EXPECT_EQ(SettingsStore(path_).floatForKey("offset"), 999.0F);
}

TEST_F(SettingsStoreTest, ARemovedKeyIsGoneAlsoOnDisk) {
    SettingsStore store(path_);
    store.setFloat("alpha", 1);
    store.setFloat("other", 2);
    ASSERT_TRUE(store.synchronize());
    store.removeObject("alpha");
    store.removeObject("never there");
    EXPECT_FALSE(store.contains("alpha"));
    ASSERT_TRUE(store.synchronize());
    EXPECT_THAT(SettingsStore(path_).keys(), ElementsAre("other"));
}

TEST_F(SettingsStoreTest, TwoProgramsLoseNoneOfEachOthersKeys) {
    SettingsStore first(path_);
    SettingsStore second(path_);
    first.setFloat("a", 1);
    second.setFloat("b", 2);
    ASSERT_TRUE(first.synchronize());
    ASSERT_TRUE(second.synchronize());
    first.setFloat("c", 3);
    ASSERT_TRUE(first.synchronize());
    EXPECT_THAT(SettingsStore(path_).keys(), ElementsAre("a", "b", "c"));
}

TEST_F(SettingsStoreTest, ARemovalHereLeavesWhatOthersWrote) {
    SettingsStore first(path_);
    first.setFloat("a", 1);
    ASSERT_TRUE(first.synchronize());
    SettingsStore second(path_);
    second.setFloat("b", 2);
    ASSERT_TRUE(second.synchronize());
    first.removeObject("a");
    ASSERT_TRUE(first.synchronize());
    EXPECT_THAT(SettingsStore(path_).keys(), ElementsAre("b"));
}

TEST_F(SettingsStoreTest, AnUnchangedValueDoesNotOverwriteWhatAnotherProgramSet) {
    SettingsStore first(path_);
    first.setFloat("a", 1);
    ASSERT_TRUE(first.synchronize());
    SettingsStore second(path_);
    second.setFloat("a", 2);
    ASSERT_TRUE(second.synchronize());
    first.setFloat("b", 3);
    ASSERT_TRUE(first.synchronize());
    EXPECT_EQ(SettingsStore(path_).floatForKey("a"), 2.0F);
    EXPECT_EQ(first.floatForKey("a"), 1.0F);  // seen only after reload
}

TEST_F(SettingsStoreTest, ReloadWritesTheOwnChangesAndTakesOverTheOthers) {
    SettingsStore first(path_);
    SettingsStore second(path_);
    first.setFloat("a", 1);
    second.setFloat("b", 2);
    ASSERT_TRUE(second.synchronize());
    ASSERT_TRUE(first.reload());
    EXPECT_THAT(first.keys(), ElementsAre("a", "b"));
    EXPECT_THAT(SettingsStore(path_).keys(), ElementsAre("a", "b"));
}

TEST_F(SettingsStoreTest, ReloadThatCannotWriteKeepsTheOwnChanges) {
    test::RefusingFileSystem full({{"write", ENOSPC}});
    putFile(path_, R"({"old": 1, "gone": 2})");
    SettingsStore store(path_, full);
    store.setFloat("new", 3);
    store.removeObject("gone");
    EXPECT_FALSE(store.reload());
    EXPECT_THAT(store.keys(), ElementsAre("new", "old"));
    EXPECT_TRUE(store.hasUnsavedChanges());
}

TEST_F(SettingsStoreTest, RemovingEveryKeyAfterAReloadEmptiesTheFile) {
    SettingsStore store(path_);
    store.setFloat("a", 1);
    ASSERT_TRUE(store.synchronize());
    SettingsStore other(path_);
    other.setFloat("unrelated", 9);
    ASSERT_TRUE(other.synchronize());
    ASSERT_TRUE(store.reload());
    for (const std::string& key : store.keys()) store.removeObject(key);
    ASSERT_TRUE(store.synchronize());
    EXPECT_EQ(fileText(path_), "{}\n");
}

TEST_F(SettingsStoreTest, TheObserverHearsOfEveryChange) {
    SettingsStore store(path_);
    std::vector<std::string> heard;
    store.setObserver([&](const std::string& key) { heard.push_back(key); });
    store.setFloat("a", 1);
    store.setBool("b", true);
    store.removeObject("a");
    store.removeObject("a");
    EXPECT_THAT(heard, ElementsAre("a", "b", "a"));
    SettingsStore other(path_);
    other.setFloat("c", 1);
    ASSERT_TRUE(other.synchronize());
    heard.clear();
    ASSERT_TRUE(store.reload());
    EXPECT_THAT(heard, ElementsAre("c"));
    store.setObserver({});
    store.setFloat("a", 2);
    EXPECT_EQ(heard.size(), 1U);
}

TEST_F(SettingsStoreTest, AReloadTellsOfChangedValuesAndOfNoOthers) {
    putFile(path_, R"({"a": 1, "b": 2, "c": true, "d": 4})");
    SettingsStore store(path_);
    std::vector<std::string> heard;
    store.setObserver([&](const std::string& key) { heard.push_back(key); });
    putFile(path_, R"({"a": 5, "b": 2, "c": 1})");
    ASSERT_TRUE(store.reload());
    EXPECT_THAT(heard, ElementsAre("a", "c", "d"));
    EXPECT_EQ(store.floatForKey("a"), 5.0F);
    EXPECT_EQ(store.keySetChanges(), 1U);
}

TEST_F(SettingsStoreTest, ChangesOfTheKeySetAreCountedAndChangesOfValuesAreNot) {
    SettingsStore store(path_);
    EXPECT_EQ(store.keySetChanges(), 0U);
    store.setFloat("a", 1);
    EXPECT_EQ(store.keySetChanges(), 1U);
    store.setFloat("a", 2);
    EXPECT_EQ(store.keySetChanges(), 1U);
    store.removeObject("a");
    EXPECT_EQ(store.keySetChanges(), 2U);
}

TEST_F(SettingsStoreTest, WhatAKilledProgramLeftIsRemoved) {
    std::filesystem::create_directory(folder_ / "real");
    std::filesystem::create_symlink("real/settings.json", path_);
    putFile(folder_ / "real/settings.json", "{}");
    putFile(temporaryFilePath(folder_ / "real"), "half");
    SettingsStore(path_).removeLeftOvers();
    EXPECT_FALSE(std::filesystem::exists(path_ + ".lock"));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder_ / "real"), {}), 1);
    SettingsStore("").removeLeftOvers();
    std::filesystem::create_symlink("loop.json", folder_ / "loop.json");
    putFile(temporaryFilePath(folder_.path()), "half");
    SettingsStore(folder_ / "loop.json").removeLeftOvers();
    EXPECT_THAT(folder_.names(), ElementsAre("loop.json", "real", "settings.json"));
}

TEST_F(SettingsStoreTest, ALockThatIsNotGivenUpIsReportedAndNothingIsLost) {
    SettingsStore store(path_);
    store.setLockPatience(std::chrono::milliseconds(20));
    store.setFloat("a", 1);
    const int lock = ::open((path_ + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    ASSERT_EQ(::flock(lock, LOCK_EX), 0);
    const Result<void> refused = store.synchronize();
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().message, "Another program keeps the settings locked");
    ::close(lock);
    ASSERT_TRUE(store.synchronize());
    EXPECT_EQ(SettingsStore(path_).floatForKey("a"), 1.0F);
}

TEST_F(SettingsStoreTest, AFileSystemWithoutLocksIsServed) {
    for (const int error : {ENOLCK, ENOSYS, EINVAL, EOPNOTSUPP}) {
        test::RefusingFileSystem noLocks({{"flock", error}});
        SettingsStore store(path_, noLocks);
        store.setFloat("a", static_cast<float>(error));
        EXPECT_TRUE(store.synchronize());
        EXPECT_EQ(SettingsStore(path_).floatForKey("a"), static_cast<float>(error));
    }
}

TEST_F(SettingsStoreTest, WithoutAPathItLivesInMemoryAndSaysSo) {
    SettingsStore store("");
    store.setFloat("a", 1);
    EXPECT_EQ(store.floatForKey("a"), 1.0F);
    const Result<void> refused = store.synchronize();
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().message, "There is no folder for the settings");
    EXPECT_FALSE(store.reload());
    EXPECT_TRUE(store.contains("a"));
}

TEST_F(SettingsStoreTest, MakesItsFoldersPrivately) {
    SettingsStore store(folder_ / "config/skarnel/settings.json");
    store.setFloat("a", 1);
    ASSERT_TRUE(store.synchronize());
    struct stat status = {};
    ASSERT_EQ(::stat((folder_ / "config/skarnel").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0700U);
}

TEST(SettingsStorePath, FollowsTheBaseDirectories) {
    const ScopedVariable config("XDG_CONFIG_HOME", "/somewhere/config");
    EXPECT_EQ(SettingsStore::defaultPath(), "/somewhere/config/skarnel/settings.json");
    const ScopedVariable home("HOME", "/home/someone");
    const ScopedVariable relative("XDG_CONFIG_HOME", "relative");
    EXPECT_EQ(SettingsStore::defaultPath(), "/home/someone/.config/skarnel/settings.json");
    const ScopedVariable absent("XDG_CONFIG_HOME", nullptr);
    EXPECT_EQ(SettingsStore::defaultPath(), "/home/someone/.config/skarnel/settings.json");
}

TEST(SettingsStorePath, WithoutAHomeTheAccountsOwnIsTaken) {
    const ScopedVariable absent("XDG_CONFIG_HOME", nullptr);
    const ScopedVariable home("HOME", nullptr);
    const std::string path = SettingsStore::defaultPath();
    EXPECT_TRUE(path.empty() || path.ends_with("/.config/skarnel/settings.json")) << path;
    if (::geteuid() != 0) GTEST_SKIP() << "only root may be somebody without an account";
    constexpr uid_t kNobodysNumber = 4'000'000'123;
    ASSERT_EQ(::seteuid(kNobodysNumber), 0);
    EXPECT_EQ(SettingsStore::defaultPath(), "");
    ASSERT_EQ(::seteuid(0), 0);
}

TEST(SettingsStorePath, TheFirstWholePathIsTaken) {
    const struct {
        SettingsStore::UserFolders folders;
        const char* path;
    } rows[] = {
        {{"/c", "/h", "/a"}, "/c/skarnel/settings.json"},
        {{"c", "/h", "/a"}, "/h/.config/skarnel/settings.json"},
        {{"", "/h", "/a"}, "/h/.config/skarnel/settings.json"},
        {{nullptr, "h", "/a"}, "/a/.config/skarnel/settings.json"},
        {{nullptr, nullptr, "/a"}, "/a/.config/skarnel/settings.json"},
        {{nullptr, nullptr, "a"}, ""},
        {{nullptr, nullptr, nullptr}, ""},
    };
    for (const auto& row : rows) EXPECT_EQ(SettingsStore::pathWithin(row.folders), row.path);
}

}  // namespace
}  // namespace skarnel
