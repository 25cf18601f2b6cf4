// What lies in place of the settings and is none: kept aside, moved aside or left alone.
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

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

TEST_F(DamagedSettings, AFileThatCouldNotBeReadAtTheStartIsKeptEvenIfItCanBeLater) {
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

TEST_F(DamagedSettings, AFileThatCannotBeReadForAMomentLosesNoKeyThatWasReadBefore) {
    class Moment final : public test::InterceptedFileSystem {
      public:
        bool fails = false;

      private:
        int before(const std::string& call, const std::string&) override {
            return call == "read" && fails ? -EIO : 0;
        }
    } fileSystem;
    putFile(path_, R"({"alpha": 12, "gradient": 3, "offset": 4})");
    SettingsStore store(path_, fileSystem);
    fileSystem.fails = true;
    store.setFloat("start", 5);
    store.removeObject("offset");
    ASSERT_TRUE(store.synchronize());
    ASSERT_TRUE(store.reload());
    EXPECT_THAT(store.keys(), ElementsAre("alpha", "gradient", "start"));
    const SettingsStore next(path_);
    EXPECT_THAT(next.keys(), ElementsAre("alpha", "gradient", "start"));
    EXPECT_EQ(next.floatForKey("alpha"), 12.0F);
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
