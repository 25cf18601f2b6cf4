// What lies in place of the settings and is none: kept aside, moved aside or left alone.
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <cerrno>
#include <chrono>
#include <utility>
#include <vector>

#include "storage/fake_file_systems.h"
#include "storage/run_as_nobody.h"
#include "storage/settings_store.h"
#include "storage/temporary_folder.h"
#include "util/log/system_log.h"

namespace skarnel {
namespace {

using test::fileText;
using test::putFile;
using test::TemporaryFolder;
using testing::ElementsAre;

class DamagedSettings : public testing::Test {
  protected:
    const TemporaryFolder folder_;
    const std::string path_ = folder_ / "settings.json";
};

TEST_F(DamagedSettings, ADamagedFileIsKeptBeforeAnythingIsWritten) {
    putFile(path_, "{\"alpha\": 12");
    SettingsStore store(path_);
    EXPECT_THAT(folder_.names(), ElementsAre("settings.json"));  // reading never writes
    store.setFloat("alpha", 200);
    const ScopedLogCapture log;
    ASSERT_TRUE(store.synchronize());
    EXPECT_EQ(fileText(path_ + ".damaged"), "{\"alpha\": 12");
    EXPECT_EQ(log.text(), path_ + ": What could not be read is kept beside it\n");
    store.setFloat("alpha", 201);
    ASSERT_TRUE(store.synchronize());
    EXPECT_EQ(log.text(), path_ + ": What could not be read is kept beside it\n") << "told once";
    EXPECT_EQ(SettingsStore(path_).floatForKey("alpha"), 201.0F);
}

TEST_F(DamagedSettings, ASecondDamageIsKeptBesideTheFirst) {
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

TEST_F(DamagedSettings, DamageThatHappensWhileWeRunIsKeptToo) {
    SettingsStore store(path_);
    store.setFloat("a", 1);
    ASSERT_TRUE(store.synchronize());
    putFile(path_, "broken");
    store.setFloat("b", 2);
    ASSERT_TRUE(store.synchronize());
    EXPECT_EQ(fileText(path_ + ".damaged"), "broken");
}

/// A disk whose calls of one name fail for as long, or as often, as it is told.
class FailingDisk final : public test::InterceptedFileSystem {
  public:
    explicit FailingDisk(std::string call, int error = EIO)
        : call_(std::move(call)), error_(error) {}
    int failures = 1'000'000;
    std::vector<std::chrono::milliseconds> pauses;

  private:
    int before(const std::string& call, const std::string& path) override {
        if (call != call_ || failures == 0) return 0;
        if (call == "open" && !path.ends_with("settings.json")) return 0;
        --failures;
        return -error_;
    }
    void pause(std::chrono::milliseconds time) override { pauses.push_back(time); }

    std::string call_;
    int error_;
};

class SettingsOnAFailingDisk : public DamagedSettings {
  protected:
    void SetUp() override { putFile(path_, kText); }
    static constexpr auto kText = R"({"alpha": 12, "gradient": 3, "offset": 4})";
};

TEST_F(SettingsOnAFailingDisk, AreReadAtTheFourthTry) {
    for (const auto& [call, error] :
         {std::pair("read", EIO), {"open", EMFILE}, {"open", ENOMEM}, {"open", ESTALE}}) {
        FailingDisk disk(call, error);
        disk.failures = 3;
        EXPECT_EQ(SettingsStore(path_, disk).floatForKey("alpha"), 12.0F);
        EXPECT_EQ(disk.pauses, std::vector(3, std::chrono::milliseconds(20)));
        disk.failures = 4;
        EXPECT_FALSE(SettingsStore(path_, disk).contains("alpha"));
        EXPECT_EQ(disk.failures, 0);
    }
}

TEST_F(SettingsOnAFailingDisk, AreNotWaitedForWhereWaitingIsOfNoUse) {
    for (const int error : {EACCES, EPERM, EISDIR, ENXIO, ELOOP, ENOTDIR, ENAMETOOLONG}) {
        FailingDisk disk("open", error);
        EXPECT_FALSE(SettingsStore(path_, disk).contains("alpha"));
        EXPECT_TRUE(disk.pauses.empty());
    }
}

TEST_F(SettingsOnAFailingDisk, ComeBeforeTheDefaultsThatWereSetWithoutSeeingThem) {
    FailingDisk disk("read");
    SettingsStore store(path_, disk);
    std::vector<std::string> told;
    store.setFloat("alpha", 200);
    store.setFloat("start", 0);
    store.setObserver([&](const std::string& key) { told.push_back(key); });
    disk.failures = 0;
    ASSERT_TRUE(store.synchronize());
    EXPECT_THAT(told, ElementsAre("alpha", "gradient", "offset"));
    for (const SettingsStore& each : {store, SettingsStore(path_)}) {
        EXPECT_THAT(each.keys(), ElementsAre("alpha", "gradient", "offset", "start"));
        EXPECT_EQ(each.floatForKey("alpha"), 12.0F);
    }
    EXPECT_THAT(folder_.names(), ElementsAre("settings.json", "settings.json.lock"));
}

TEST_F(SettingsOnAFailingDisk, AreNotReplacedAndTakeTheUsersOwnChangesLater) {
    FailingDisk disk("read");
    SettingsStore store(path_, disk);
    for (const char* key : {"alpha", "gradient", "offset"}) store.setFloat(key, 200);
    for (int i = 0; i < 2; ++i) {
        const Result<void> refused = store.synchronize();
        ASSERT_FALSE(refused);
        EXPECT_EQ(refused.error().message, "Input/output error");
        EXPECT_EQ(fileText(path_), kText);
        // From now on it is the user who sets and removes.
        store.setFloat("gradient", 7);
        store.removeObject("offset");
        store.setBool("applyBackgroundColor", true);
    }
    disk.failures = 0;
    ASSERT_TRUE(store.synchronize());
    EXPECT_EQ(store.floatForKey("alpha"), 200.0F) << "the window has shown it";
    const SettingsStore next(path_);
    EXPECT_THAT(next.keys(), ElementsAre("alpha", "applyBackgroundColor", "gradient"));
    EXPECT_EQ(next.floatForKey("alpha"), 12.0F);
    EXPECT_EQ(next.floatForKey("gradient"), 7.0F);
    ASSERT_TRUE(store.reload());
    EXPECT_EQ(store.floatForKey("alpha"), 12.0F);
    EXPECT_THAT(folder_.names(), ElementsAre("settings.json", "settings.json.lock"));
}

TEST_F(SettingsOnAFailingDisk, LoseNoKeyThatWasReadBefore) {
    FailingDisk disk("read");
    disk.failures = 0;
    SettingsStore store(path_, disk);
    disk.failures = 1'000'000;
    store.setFloat("start", 5);
    store.removeObject("offset");
    EXPECT_FALSE(store.synchronize());
    EXPECT_FALSE(store.reload());
    EXPECT_EQ(fileText(path_), kText);
    EXPECT_THAT(store.keys(), ElementsAre("alpha", "gradient", "start"));
    disk.failures = 0;
    ASSERT_TRUE(store.reload());
    EXPECT_THAT(store.keys(), ElementsAre("alpha", "gradient", "start"));
    EXPECT_THAT(SettingsStore(path_).keys(), ElementsAre("alpha", "gradient", "start"));
    disk.failures = 1'000'000;
    const Result<void> unseen = store.reload();
    ASSERT_FALSE(unseen);
    EXPECT_EQ(unseen.error().message, "Input/output error");
}

TEST_F(DamagedSettings, DamageThatHappensWhileWeRunLosesNoKeyThatWasReadBefore) {
    putFile(path_, R"({"alpha": 12, "gradient": 3})");
    SettingsStore store(path_);
    putFile(path_, R"({"alpha": "much", "offset": 4})");
    for (int i = 0; i < 2; ++i) ASSERT_TRUE(store.reload());
    EXPECT_THAT(store.keys(), ElementsAre("alpha", "gradient", "offset"));
    putFile(path_, "broken");
    store.removeObject("gradient");
    ASSERT_TRUE(store.synchronize());
    EXPECT_THAT(SettingsStore(path_).keys(), ElementsAre("alpha", "offset"));
}

TEST_F(DamagedSettings, AFileThatIsGoneMeanwhileLeavesNothingToKeep) {
    putFile(path_, "broken");
    SettingsStore store(path_);
    std::filesystem::remove(path_);
    store.setFloat("a", 1);
    ASSERT_TRUE(store.synchronize());
    EXPECT_THAT(folder_.names(), ElementsAre("settings.json", "settings.json.lock"));
}

TEST_F(DamagedSettings, WrongTypesCountAsAbsentAndTheFileIsKept) {
    putFile(path_, R"({"alpha": "much", "offset": 3})");
    SettingsStore store(path_);
    EXPECT_FALSE(store.contains("alpha"));
    EXPECT_EQ(store.floatForKey("offset"), 3.0F);
    store.setFloat("alpha", 200);
    ASSERT_TRUE(store.synchronize());
    EXPECT_EQ(fileText(path_ + ".damaged"), R"({"alpha": "much", "offset": 3})");
    EXPECT_EQ(SettingsStore(path_).floatForKey("offset"), 3.0F);
}

TEST_F(DamagedSettings, AFolderInItsPlaceMovesAside) {
    std::filesystem::create_directory(path_);
    putFile(path_ + "/inside", "kept");
    SettingsStore store(path_);
    store.setFloat("alpha", 1);
    ASSERT_TRUE(store.synchronize());
    EXPECT_EQ(fileText(path_ + ".damaged/inside"), "kept");
    EXPECT_EQ(SettingsStore(path_).floatForKey("alpha"), 1.0F);
}

TEST_F(DamagedSettings, ASecondFolderInItsPlaceMovesBesideTheFirst) {
    for (const char* text : {"first", "second"}) {
        std::filesystem::remove(path_);
        std::filesystem::create_directory(path_);
        putFile(path_ + "/inside", text);
        SettingsStore store(path_);
        store.setFloat("alpha", 1);
        ASSERT_TRUE(store.synchronize());
    }
    EXPECT_EQ(fileText(path_ + ".damaged/inside"), "first");
    EXPECT_EQ(fileText(path_ + ".damaged-2/inside"), "second");
}

TEST_F(DamagedSettings, ALinkIsWrittenThrough) {
    putFile(folder_ / "real.json", R"({"a": 1})");
    std::filesystem::create_symlink("real.json", path_);
    SettingsStore store(path_);
    EXPECT_EQ(store.floatForKey("a"), 1.0F);
    store.setFloat("b", 2);
    ASSERT_TRUE(store.synchronize());
    EXPECT_TRUE(std::filesystem::is_symlink(path_));
    EXPECT_THAT(SettingsStore(folder_ / "real.json").keys(), ElementsAre("a", "b"));
}

TEST_F(DamagedSettings, ADanglingLinkAndALoopOfLinksEndInAFile) {
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

TEST_F(DamagedSettings, ANamedPipeInItsPlaceDoesNotHoldUsUp) {
    ASSERT_EQ(::mkfifo(path_.c_str(), 0600), 0);
    SettingsStore store(path_);
    store.setFloat("a", 1);
    ASSERT_TRUE(store.synchronize());
    EXPECT_EQ(SettingsStore(path_).floatForKey("a"), 1.0F);
    EXPECT_TRUE(std::filesystem::is_fifo(path_ + ".damaged"));
}

TEST_F(DamagedSettings, AHugeFileIsKeptAndNotRead) {
    putFile(path_, "{\"a\": 1}" + std::string(10 << 20, ' '));
    SettingsStore store(path_);
    EXPECT_FALSE(store.contains("a"));
    store.setFloat("a", 2);
    ASSERT_TRUE(store.synchronize());
    EXPECT_EQ(std::filesystem::file_size(path_ + ".damaged"), (10U << 20) + 8);
}

TEST_F(DamagedSettings, AnEmptyFileHoldsNothingThatWouldHaveToBeKept) {
    putFile(path_, "");
    SettingsStore store(path_);
    store.setFloat("a", 1);
    ASSERT_TRUE(store.synchronize());
    EXPECT_THAT(folder_.names(), ElementsAre("settings.json", "settings.json.lock"));
}

TEST_F(DamagedSettings, AReadOnlyFileStaysAndMemoryGoesOn) {
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

TEST_F(DamagedSettings, AFileThatMayNotBeReadIsKept) {
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

TEST_F(DamagedSettings, AThousandCopiesAreEnoughAndKeepNobodyFromSaving) {
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

TEST_F(DamagedSettings, AFileWhoseLastCopyCannotGiveWayIsNotReplaced) {
    putFile(path_, "broken");
    putFile(path_ + ".damaged", "");
    for (int i = 2; i <= 1000; ++i) putFile(path_ + ".damaged-" + std::to_string(i), "");
    test::RefusingFileSystem fixedNames({{"rename", EACCES}});
    SettingsStore store(path_, fixedNames);
    store.setFloat("a", 1);
    const Result<void> refused = store.synchronize();
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().message, "Permission denied");
    EXPECT_EQ(fixedNames.count("rename"), 1) << "the new file was not even tried";
    EXPECT_EQ(fileText(path_), "broken");
}

TEST_F(DamagedSettings, WritesThatFailMakeNoMoreThanOneCopy) {
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

TEST_F(DamagedSettings, ADeviceInTheirPlaceIsLeftAlone) {
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

TEST_F(DamagedSettings, ADiskInTheirPlaceIsLeftAlone) {
    class Disk final : public test::InterceptedFileSystem {
        int before(const std::string&, const std::string&) override { return 0; }
        int stat(const char* path, struct stat& status) override {
            const int result = real_.stat(path, status);
            status.st_mode = S_IFBLK | 0600;
            return result;
        }
    } disk;
    putFile(path_, "sectors");
    SettingsStore store(path_, disk);
    store.setFloat("a", 1);
    const Result<void> refused = store.synchronize();
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().message, "There is a device in place of the settings");
    EXPECT_EQ(fileText(path_), "sectors");
}

TEST_F(DamagedSettings, ADamagedFileThatCannotBeKeptIsNotReplaced) {
    putFile(path_, "broken");
    test::RefusingFileSystem neither({{"link", EPERM}, {"renameNoReplace", EACCES}});
    SettingsStore store(path_, neither);
    store.setFloat("a", 1);
    const Result<void> refused = store.synchronize();
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().message, "Permission denied");
    EXPECT_EQ(fileText(path_), "broken");
}

TEST_F(DamagedSettings, WithoutAnExclusiveRenameAFolderMovesAsideAllTheSame) {
    test::RefusingFileSystem plain({{"renameNoReplace", EINVAL}});
    for (const char* text : {"first", "second"}) {
        std::filesystem::remove(path_);
        std::filesystem::create_directory(path_);
        putFile(path_ + "/inside", text);
        SettingsStore store(path_, plain);
        store.setFloat("alpha", 1);
        ASSERT_TRUE(store.synchronize());
    }
    EXPECT_EQ(fileText(path_ + ".damaged/inside"), "first");
    EXPECT_EQ(fileText(path_ + ".damaged-2/inside"), "second");
}

TEST_F(DamagedSettings, WithoutLinksEitherADamagedFileMovesAside) {
    test::RefusingFileSystem plain({{"link", EPERM}, {"renameNoReplace", ENOSYS}});
    for (const char* damage : {"first", "second"}) {
        putFile(path_, damage);
        SettingsStore store(path_, plain);
        store.setFloat("alpha", 1);
        ASSERT_TRUE(store.synchronize());
    }
    EXPECT_EQ(fileText(path_ + ".damaged"), "first");
    EXPECT_EQ(fileText(path_ + ".damaged-2"), "second");
    EXPECT_EQ(SettingsStore(path_).floatForKey("alpha"), 1.0F);
}

TEST_F(DamagedSettings, ACopyThatOnlyLooksLikeTheDamagedFileDoesNotCountAsOne) {
    // A file of that name that cannot be looked at, lies on another disk, or is another file.
    class OtherCopy final : public test::InterceptedFileSystem {
      public:
        enum class Kind { Unreadable, OnAnotherDisk, AnotherFile };
        explicit OtherCopy(Kind kind) : kind_(kind) {}

      private:
        int before(const std::string&, const std::string&) override { return 0; }
        int lstat(const char* path, struct stat& status) override {
            const int result = real_.lstat(path, status);
            if (!std::string_view(path).ends_with(".damaged")) return result;
            if (kind_ == Kind::Unreadable) return -EIO;
            (kind_ == Kind::OnAnotherDisk ? status.st_dev : status.st_ino) += 1;
            return result;
        }
        Kind kind_;
    };
    for (const auto kind : {OtherCopy::Kind::Unreadable, OtherCopy::Kind::OnAnotherDisk,
                            OtherCopy::Kind::AnotherFile}) {
        const TemporaryFolder folder;
        const std::string path = folder / "settings.json";
        putFile(path, "broken");
        std::filesystem::create_hard_link(path, path + ".damaged");
        OtherCopy fileSystem(kind);
        SettingsStore store(path, fileSystem);
        store.setFloat("a", 1);
        ASSERT_TRUE(store.synchronize());
        EXPECT_EQ(fileText(path + ".damaged-2"), "broken");
    }
}

}  // namespace
}  // namespace skarnel
