#include "storage/settings_store.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <bit>
#include <limits>

#include "storage/fake_file_systems.h"
#include "storage/left_overs.h"
#include "storage/run_as_nobody.h"
#include "storage/temporary_folder.h"

namespace skarnel {
namespace {

using test::fileText;
using test::putFile;
using test::TemporaryFolder;
using testing::ElementsAre;
using testing::IsEmpty;

class SettingsStoreTest : public testing::Test {
  protected:
    const TemporaryFolder folder_;
    const std::string path_ = folder_ / "settings.json";
};

/// Sets an environment variable, or takes it away, until the end of the test.
class ScopedVariable {
  public:
    ScopedVariable(const char* name, const char* value) : name_(name) {
        if (const char* before = std::getenv(name)) before_ = before;
        set(value);
    }
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;
    ~ScopedVariable() { set(before_ ? before_->c_str() : nullptr); }

  private:
    void set(const char* value) {
        if (value != nullptr) {
            ::setenv(name_, value, 1);
        } else {
            ::unsetenv(name_);
        }
    }
    const char* name_;
    std::optional<std::string> before_;
};

TEST_F(SettingsStoreTest, AnAbsentKeyReadsAsZeroAndFalse) {
    const SettingsStore store(path_);
    EXPECT_FALSE(store.contains("alpha"));
    EXPECT_EQ(store.floatForKey("alpha"), 0.0F);
    EXPECT_FALSE(store.boolForKey("applyBackgroundColor"));
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

TEST_F(SettingsStoreTest, ADamagedFileIsKeptBeforeAnythingIsWritten) {
    putFile(path_, "{\"alpha\": 12");
    SettingsStore store(path_);
    EXPECT_THAT(folder_.names(), ElementsAre("settings.json"));  // reading never writes
    store.setFloat("alpha", 200);
    ASSERT_TRUE(store.synchronize());
    EXPECT_EQ(fileText(path_ + ".damaged"), "{\"alpha\": 12");
    EXPECT_EQ(SettingsStore(path_).floatForKey("alpha"), 200.0F);
}

TEST_F(SettingsStoreTest, ASecondDamageIsKeptBesideTheFirst) {
    for (const char* damage : {"first", "second", "third"}) {
        putFile(path_, damage);
        SettingsStore store(path_);
        store.setFloat("alpha", 1);
        ASSERT_TRUE(store.synchronize());
    }
    EXPECT_EQ(fileText(path_ + ".damaged"), "first");
    EXPECT_EQ(fileText(path_ + ".damaged-2"), "second");
    EXPECT_EQ(fileText(path_ + ".damaged-3"), "third");
}

TEST_F(SettingsStoreTest, DamageThatHappensWhileWeRunIsKeptToo) {
    SettingsStore store(path_);
    store.setFloat("a", 1);
    ASSERT_TRUE(store.synchronize());
    putFile(path_, "broken");
    store.setFloat("b", 2);
    ASSERT_TRUE(store.synchronize());
    EXPECT_EQ(fileText(path_ + ".damaged"), "broken");
}

TEST_F(SettingsStoreTest, AFileThatCouldNotBeReadAtTheStartIsKeptEvenIfItCanBeLater) {
    // The seeding writes defaults over what it could not see.
    class Recovering final : public test::InterceptedFileSystem {
        int before(const std::string& call, const std::string&) override {
            return call == "read" && ++reads_ == 1 ? -EIO : 0;
        }
        int reads_ = 0;
    } fileSystem;
    putFile(path_, R"({"alpha": 12})");
    SettingsStore store(path_, fileSystem);
    EXPECT_FALSE(store.contains("alpha"));
    store.setFloat("alpha", 200);
    ASSERT_TRUE(store.synchronize());
    EXPECT_EQ(fileText(path_ + ".damaged"), R"({"alpha": 12})");
}

TEST_F(SettingsStoreTest, WrongTypesCountAsAbsentAndTheFileIsKept) {
    putFile(path_, R"({"alpha": "much", "offset": 3})");
    SettingsStore store(path_);
    EXPECT_FALSE(store.contains("alpha"));
    EXPECT_EQ(store.floatForKey("offset"), 3.0F);
    store.setFloat("alpha", 200);
    ASSERT_TRUE(store.synchronize());
    EXPECT_EQ(fileText(path_ + ".damaged"), R"({"alpha": "much", "offset": 3})");
    EXPECT_EQ(SettingsStore(path_).floatForKey("offset"), 3.0F);
}

TEST_F(SettingsStoreTest, AFolderInItsPlaceMovesAside) {
    std::filesystem::create_directory(path_);
    putFile(path_ + "/inside", "kept");
    SettingsStore store(path_);
    store.setFloat("alpha", 1);
    ASSERT_TRUE(store.synchronize());
    EXPECT_EQ(fileText(path_ + ".damaged/inside"), "kept");
    EXPECT_EQ(SettingsStore(path_).floatForKey("alpha"), 1.0F);
}

TEST_F(SettingsStoreTest, ALinkIsWrittenThrough) {
    putFile(folder_ / "real.json", R"({"a": 1})");
    std::filesystem::create_symlink("real.json", path_);
    SettingsStore store(path_);
    EXPECT_EQ(store.floatForKey("a"), 1.0F);
    store.setFloat("b", 2);
    ASSERT_TRUE(store.synchronize());
    EXPECT_TRUE(std::filesystem::is_symlink(path_));
    EXPECT_THAT(SettingsStore(folder_ / "real.json").keys(), ElementsAre("a", "b"));
}

TEST_F(SettingsStoreTest, ADanglingLinkAndALoopOfLinksEndInAFile) {
    std::filesystem::create_symlink("deep/er/real.json", path_);
    SettingsStore dangling(path_);
    dangling.setFloat("a", 1);
    ASSERT_TRUE(dangling.synchronize());
    EXPECT_EQ(SettingsStore(folder_ / "deep/er/real.json").floatForKey("a"), 1.0F);

    const std::string loop = folder_ / "loop.json";
    std::filesystem::create_symlink("loop.json", loop);
    SettingsStore looping(loop);
    looping.setFloat("a", 1);
    ASSERT_TRUE(looping.synchronize());
    EXPECT_EQ(SettingsStore(loop).floatForKey("a"), 1.0F);
    EXPECT_TRUE(std::filesystem::is_symlink(loop + ".damaged"));
}

TEST_F(SettingsStoreTest, ANamedPipeInItsPlaceDoesNotHoldUsUp) {
    ASSERT_EQ(::mkfifo(path_.c_str(), 0600), 0);
    SettingsStore store(path_);
    store.setFloat("a", 1);
    ASSERT_TRUE(store.synchronize());
    EXPECT_EQ(SettingsStore(path_).floatForKey("a"), 1.0F);
    EXPECT_TRUE(std::filesystem::is_fifo(path_ + ".damaged"));
}

TEST_F(SettingsStoreTest, AHugeFileIsKeptAndNotRead) {
    putFile(path_, "{\"a\": 1}" + std::string(10 << 20, ' '));
    SettingsStore store(path_);
    EXPECT_FALSE(store.contains("a"));
    store.setFloat("a", 2);
    ASSERT_TRUE(store.synchronize());
    EXPECT_EQ(std::filesystem::file_size(path_ + ".damaged"), (10U << 20) + 8);
}

TEST_F(SettingsStoreTest, AnEmptyFileHoldsNothingThatWouldHaveToBeKept) {
    putFile(path_, "");
    SettingsStore store(path_);
    store.setFloat("a", 1);
    ASSERT_TRUE(store.synchronize());
    EXPECT_THAT(folder_.names(), ElementsAre("settings.json", "settings.json.lock"));
}

TEST_F(SettingsStoreTest, AReadOnlyFileStaysAndMemoryGoesOn) {
    putFile(path_, R"({"a": 1})");
    test::giveToAnOrdinaryUser(folder_.path().c_str());
    test::giveToAnOrdinaryUser(path_.c_str());
    ::chmod(path_.c_str(), 0444);
    EXPECT_TRUE(test::holdsForAnOrdinaryUser([&] {
        SettingsStore store(path_);
        store.setFloat("a", 2);
        const Result<void> written = store.synchronize();
        return !written && written.error().message == "Permission denied" &&
               store.floatForKey("a") == 2.0F && store.hasUnsavedChanges();
    }));
    EXPECT_EQ(fileText(path_), R"({"a": 1})");
}

TEST_F(SettingsStoreTest, AFileThatMayNotBeReadIsKept) {
    putFile(path_, R"({"a": 1})");
    test::giveToAnOrdinaryUser(folder_.path().c_str());
    test::giveToAnOrdinaryUser(path_.c_str());
    ::chmod(path_.c_str(), 0200);
    EXPECT_TRUE(test::holdsForAnOrdinaryUser([&] {
        SettingsStore store(path_);
        store.setFloat("b", 2);
        return !store.contains("a") && bool(store.synchronize());
    }));
    EXPECT_EQ(fileText(path_ + ".damaged"), R"({"a": 1})");
}

TEST_F(SettingsStoreTest, AThousandCopiesAreEnoughAndKeepNobodyFromSaving) {
    putFile(path_, "broken");
    putFile(path_ + ".damaged", "");
    for (int i = 2; i <= 1000; ++i) putFile(path_ + ".damaged-" + std::to_string(i), "");
    SettingsStore store(path_);
    store.setFloat("a", 1);
    ASSERT_TRUE(store.synchronize());
    EXPECT_EQ(fileText(path_ + ".damaged-1000"), "broken");
    EXPECT_EQ(fileText(path_ + ".damaged-999"), "");
    EXPECT_EQ(SettingsStore(path_).floatForKey("a"), 1.0F);
}

TEST_F(SettingsStoreTest, WritesThatFailMakeNoMoreThanOneCopy) {
    putFile(path_, "broken");
    {
        test::RefusingFileSystem full({{"write", ENOSPC}});
        SettingsStore store(path_, full);
        store.setFloat("a", 1);
        for (int i = 0; i < 5; ++i) EXPECT_FALSE(store.synchronize());
    }
    SettingsStore store(path_);
    store.setFloat("a", 1);
    ASSERT_TRUE(store.synchronize());
    EXPECT_THAT(folder_.names(),
                ElementsAre("settings.json", "settings.json.damaged", "settings.json.lock"));
    EXPECT_EQ(fileText(path_ + ".damaged"), "broken");
}

TEST_F(SettingsStoreTest, ADeviceInTheirPlaceIsLeftAlone) {
    // One of the test's own where it may make it; for anybody else the system's cannot be lost.
    const std::string device = folder_ / "device";
    const bool made = ::mknod(device.c_str(), S_IFCHR | 0600, makedev(1, 7)) == 0;
    const std::string target = made ? device : "/dev/full";
    std::filesystem::create_symlink(target, path_);
    SettingsStore store(path_);
    store.setFloat("a", 1);
    const Result<void> refused = store.synchronize();
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().message, "There is a device in place of the settings");
    EXPECT_EQ(store.floatForKey("a"), 1.0F);
    EXPECT_TRUE(std::filesystem::is_character_file(target));
    EXPECT_FALSE(std::filesystem::exists(target + ".lock"));
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
    test::RefusingFileSystem noLocks({{"flock", ENOLCK}});
    SettingsStore store(path_, noLocks);
    store.setFloat("a", 1);
    EXPECT_TRUE(store.synchronize());
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
}

}  // namespace
}  // namespace skarnel
