// The lock that programs of one user share, and what may lie in its place.
#include "storage/shared_file.h"

#include <gmock/gmock.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include "storage/fake_file_systems.h"
#include "storage/run_as_nobody.h"
#include "storage/safe_file.h"
#include "storage/settings_store.h"
#include "storage/temporary_folder.h"
#include "util/log/system_log.h"

namespace skarnel {
namespace {

using test::fileText;
using test::putFile;
using test::TemporaryFolder;
using testing::ElementsAre;
using testing::HasSubstr;

using std::chrono::milliseconds;
using std::chrono::minutes;

constexpr milliseconds kShort{20};

class FileLockTest : public testing::Test {
  protected:
    bool take(FileSystem& fileSystem = systemFileSystem()) const {
        LockPatience patience(kShort);
        return bool(FileLock(fileSystem).take(lock_, patience));
    }

    const TemporaryFolder folder_;
    const std::string lock_ = folder_ / "a.lock";
    const ScopedLogCapture log_;
};

TEST_F(FileLockTest, ANewLockIsPrivateAndLastsForTheNextOne) {
    ASSERT_TRUE(take());
    struct stat made = {};
    ASSERT_EQ(::lstat(lock_.c_str(), &made), 0);
    EXPECT_EQ(made.st_mode, S_IFREG | 0600U);
    ASSERT_TRUE(take());
    struct stat again = {};
    ASSERT_EQ(::lstat(lock_.c_str(), &again), 0);
    EXPECT_EQ(again.st_ino, made.st_ino);
    EXPECT_EQ(log_.text(), "");
}

TEST_F(FileLockTest, ALinkToAnOrdinaryFileIsTakenAsItIs) {
    putFile(folder_ / "elsewhere", "kept");
    std::filesystem::create_symlink("elsewhere", lock_);
    ASSERT_TRUE(take());
    EXPECT_THAT(folder_.names(), ElementsAre("a.lock", "elsewhere"));
    EXPECT_EQ(fileText(folder_ / "elsewhere"), "kept");
}

TEST_F(FileLockTest, WhatCanBeNoLockIsMovedAsideAndANewLockIsMade) {
    const struct {
        const char* name;
        std::function<void()> put;
        std::filesystem::file_type kept;
    } rows[] = {
        {"folder",
         [&] {
             std::filesystem::create_directory(lock_);
             putFile(lock_ + "/inside", "kept");
         },
         std::filesystem::file_type::directory},
        {"loop", [&] { std::filesystem::create_symlink("a.lock", lock_); },
         std::filesystem::file_type::symlink},
        {"link to nothing", [&] { std::filesystem::create_symlink("no/where", lock_); },
         std::filesystem::file_type::symlink},
        {"pipe", [&] { ASSERT_EQ(::mkfifo(lock_.c_str(), 0600), 0); },
         std::filesystem::file_type::fifo},
        {"socket",
         [&] {
             sockaddr_un address{AF_UNIX, {}};
             ASSERT_LT(lock_.copy(address.sun_path, sizeof(address.sun_path)),
                       sizeof(address.sun_path));
             const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
             ASSERT_EQ(::bind(socket, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
             ::close(socket);
         },
         std::filesystem::file_type::socket},
    };
    std::string expected;
    int number = 0;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        std::filesystem::remove(lock_);
        row.put();
        EXPECT_TRUE(take());
        EXPECT_TRUE(std::filesystem::is_regular_file(std::filesystem::symlink_status(lock_)));
        ++number;
        const std::string kept =
            lock_ + ".damaged" + (number > 1 ? "-" + std::to_string(number) : "");
        EXPECT_EQ(std::filesystem::symlink_status(kept).type(), row.kept);
        expected += lock_ + ": It cannot be used as a lock, and is kept beside the new one\n";
        EXPECT_EQ(log_.text(), expected);
    }
    EXPECT_EQ(fileText(lock_ + ".damaged/inside"), "kept");
}

TEST_F(FileLockTest, WithoutAnExclusiveRenameItMovesAsideAllTheSame) {
    test::RefusingFileSystem plain({{"renameNoReplace", EINVAL}});
    std::filesystem::create_directory(lock_);
    EXPECT_TRUE(take(plain));
    EXPECT_THAT(folder_.names(), ElementsAre("a.lock", "a.lock.damaged"));
}

TEST_F(FileLockTest, ALockThatMayNotBeOpenedIsMovedAside) {
    putFile(lock_, "somebody's");
    ::chmod(lock_.c_str(), 0000);
    test::giveToAnOrdinaryUser(folder_.path().c_str());  // the file stays ours, root's
    EXPECT_TRUE(test::holdsForAnOrdinaryUser([&] {
        const ScopedLogCapture log;
        return take() && take() && log.text().find("cannot be used as a lock") != std::string::npos;
    }));
    ::chmod((lock_ + ".damaged").c_str(), 0600);
    EXPECT_EQ(fileText(lock_ + ".damaged"), "somebody's");
    EXPECT_EQ(fileText(lock_), "");
}

TEST_F(FileLockTest, InAFolderThatMayNotBeWrittenTheCauseIsGivenAndNothingMoves) {
    std::filesystem::create_directory(lock_);
    ::chmod(folder_.path().c_str(), 0555);
    EXPECT_TRUE(test::holdsForAnOrdinaryUser([&] {
        LockPatience patience(kShort);
        FileLock lock;
        const Result<void> refused = lock.take(lock_, patience);
        FileLock missing;
        const Result<void> noNewOne = missing.take(folder_ / "b.lock", patience);
        return !refused && refused.error().message == "Is a directory" && !noNewOne &&
               noNewOne.error().message == "Permission denied";
    }));
    EXPECT_THAT(folder_.names(), ElementsAre("a.lock"));
    ::chmod(folder_.path().c_str(), 0755);
}

TEST_F(FileLockTest, AFailureThatIsNotTheFilesOwnMovesNothing) {
    putFile(lock_, "kept");
    for (const int error : {EIO, EMFILE, ENOMEM, EROFS, EINTR}) {
        SCOPED_TRACE(error);
        test::RefusingFileSystem unopened({{"open", error}});
        EXPECT_FALSE(take(unopened));
        test::RefusingFileSystem unknown({{"fstat", error}});
        EXPECT_FALSE(take(unknown));
    }
    EXPECT_THAT(folder_.names(), ElementsAre("a.lock"));
    EXPECT_EQ(log_.text(), "");
}

TEST_F(FileLockTest, ARefusalThatPassesMovesNothing) {
    putFile(lock_, "kept");
    test::FaultyFileSystem once(0, EACCES, test::Repeat::Once);
    EXPECT_TRUE(take(once));
    EXPECT_THAT(folder_.names(), ElementsAre("a.lock"));
    EXPECT_EQ(log_.text(), "");
}

/// A folder of somebody else's, and what is given to whom.
class SomebodysFolder final : public test::InterceptedFileSystem {
  public:
    static constexpr uid_t kUser = 4711;
    static constexpr gid_t kGroup = 4712;
    std::vector<std::pair<uid_t, gid_t>> given;

  private:
    int before(const std::string&, const std::string&) override { return 0; }
    int stat(const char* path, struct stat& status) override {
        const int result = real_.stat(path, status);
        if (S_ISDIR(status.st_mode)) {
            status.st_uid = kUser;
            status.st_gid = kGroup;
        }
        return result;
    }
    int fchown(int, uid_t user, gid_t group) override {
        given.emplace_back(user, group);
        return 0;
    }
};

TEST_F(FileLockTest, ALockMadeInSomebodysFolderIsGivenToThemAndAnOldOneIsNot) {
    SomebodysFolder theirs;
    ASSERT_TRUE(take(theirs));
    EXPECT_THAT(theirs.given,
                ElementsAre(std::pair(SomebodysFolder::kUser, SomebodysFolder::kGroup)));
    // A name that they gave to a file of somebody else's: it is not theirs for that.
    theirs.given.clear();
    ASSERT_TRUE(take(theirs));
    EXPECT_TRUE(theirs.given.empty());
}

TEST_F(FileLockTest, SettingsMadeInSomebodysFolderAreGivenToThemAndOldOnesAreNot) {
    SomebodysFolder theirs;
    SettingsStore store(folder_ / "made/here/settings.json", theirs);
    store.setFloat("alpha", 1);
    ASSERT_TRUE(store.synchronize());
    // Two folders, the lock and the file; the fake one says that folders are theirs already.
    EXPECT_EQ(theirs.given,
              std::vector(4, std::pair(SomebodysFolder::kUser, SomebodysFolder::kGroup)));
    theirs.given.clear();
    store.setFloat("alpha", 2);
    ASSERT_TRUE(store.synchronize());
    EXPECT_TRUE(theirs.given.empty());
    ASSERT_TRUE(
        writeFileSafely(folder_ / "picture", test::bytesOf("x"), Overwrite::Refuse, theirs));
    EXPECT_TRUE(theirs.given.empty());
}

TEST_F(FileLockTest, SettingsWhoseNewFolderCannotBeGivenAwayAreWritten) {
    class Unopened final : public test::InterceptedFileSystem {
        int before(const std::string& call, const std::string& path) override {
            return call == "open" && path.ends_with("/made") ? -EACCES : 0;
        }
    } unopened;
    SettingsStore store(folder_ / "made/settings.json", unopened);
    store.setFloat("alpha", 1);
    EXPECT_TRUE(store.synchronize());
}

TEST_F(FileLockTest, SettingsThatRootMakesAreTheUsersOwn) {
    if (::geteuid() != 0) GTEST_SKIP() << "only root makes files for others";
    test::giveToAnOrdinaryUser(folder_.path().c_str());
    const std::string path = folder_ / "config/skarnel/settings.json";
    SettingsStore store(path);
    store.setFloat("alpha", 1);
    ASSERT_TRUE(store.synchronize());
    EXPECT_TRUE(test::holdsForAnOrdinaryUser([&] {
        SettingsStore theirs(path);
        const bool seen = theirs.contains("alpha");
        theirs.setFloat("alpha", 2);
        return seen && bool(theirs.synchronize());
    }));
    EXPECT_EQ(SettingsStore(path).floatForKey("alpha"), 2.0F);
}

TEST_F(FileLockTest, ALockInTheOwnFolderIsGivenToNobody) {
    test::RefusingFileSystem counting({});
    ASSERT_TRUE(take(counting));
    EXPECT_EQ(counting.count("fchown"), 0);
}

TEST_F(FileLockTest, TheLockThatRootMakesOpensForTheFoldersOwner) {
    if (::geteuid() != 0) GTEST_SKIP() << "only root makes files for others";
    test::giveToAnOrdinaryUser(folder_.path().c_str());
    ASSERT_TRUE(take());
    EXPECT_TRUE(test::holdsForAnOrdinaryUser([&] { return take(); }));
    EXPECT_THAT(folder_.names(), ElementsAre("a.lock"));
}

TEST_F(FileLockTest, WhileAnotherProgramMovesWhatIsInTheWayNothingIsTouched) {
    std::filesystem::create_directory(lock_);
    const int turn = ::open(folder_.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ASSERT_EQ(::flock(turn, LOCK_EX), 0);
    LockPatience patience(milliseconds(150));
    FileLock waiting;
    const Result<void> refused = waiting.take(lock_, patience);
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().message, "Another program keeps the settings locked");
    EXPECT_EQ(patience.ofNextTry(), LockPatience::kAfterRefusal);
    EXPECT_THAT(folder_.names(), ElementsAre("a.lock"));
    ::close(turn);
    EXPECT_TRUE(take());
    test::RefusingFileSystem noLocks({{"flock", EOPNOTSUPP}});
    std::filesystem::remove(lock_);
    std::filesystem::create_directory(lock_);
    EXPECT_TRUE(take(noLocks));
    EXPECT_THAT(folder_.names(), ElementsAre("a.lock", "a.lock.damaged", "a.lock.damaged-2"));
}

TEST(LockPatience, IsShortFromOneRefusalUntilALockIsHad) {
    LockPatience patience(milliseconds(5000));
    EXPECT_EQ(patience.ofNextTry(), milliseconds(5000));
    patience.noteTry(true);
    EXPECT_EQ(patience.ofNextTry(), milliseconds(100));
    patience.noteTry(true);
    EXPECT_EQ(patience.ofNextTry(), milliseconds(100));
    patience.noteTry(false);
    EXPECT_EQ(patience.ofNextTry(), milliseconds(5000));
    LockPatience shorter(milliseconds(20));
    shorter.noteTry(true);
    EXPECT_EQ(shorter.ofNextTry(), milliseconds(20));
}

TEST_F(FileLockTest, WhoWasRefusedOnceHardlyWaitsTheNextTime) {
    const int holder = ::open(lock_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    ASSERT_EQ(::flock(holder, LOCK_EX), 0);
    LockPatience first(milliseconds(150));
    EXPECT_FALSE(FileLock().take(lock_, first));
    EXPECT_EQ(first.ofNextTry(), LockPatience::kAfterRefusal);
    LockPatience patience(minutes(10));  // would end the test
    patience.noteTry(true);
    EXPECT_FALSE(FileLock().take(lock_, patience));
    EXPECT_EQ(patience.ofNextTry(), LockPatience::kAfterRefusal);
    ::close(holder);
    EXPECT_TRUE(FileLock().take(lock_, patience));
    EXPECT_EQ(patience.ofNextTry(), minutes(10));
}

TEST_F(FileLockTest, ProgramsThatFindAFolderInThePlaceOfTheLockMoveItOnceAndLoseNoKey) {
    constexpr int kPrograms = 12;
    const std::string path = folder_ / "settings.json";
    std::filesystem::create_directory(path + ".lock");
    std::vector<pid_t> programs;
    for (int i = 0; i < kPrograms; ++i) {
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            setSystemLogSink([](std::string_view) {});
            SettingsStore store(path);
            store.setLockPatience(minutes(1));  // a slow disk must not decide
            store.setFloat("key" + std::to_string(i), 1);
            ::_exit(store.synchronize() ? 0 : 1);
        }
        programs.push_back(child);
    }
    for (const pid_t each : programs) {
        int status = -1;
        ASSERT_EQ(::waitpid(each, &status, 0), each);
        EXPECT_EQ(status, 0);
    }
    EXPECT_EQ(SettingsStore(path).keys().size(), static_cast<std::size_t>(kPrograms));
    EXPECT_THAT(folder_.names(),
                ElementsAre("settings.json", "settings.json.lock", "settings.json.lock.damaged"));
}

}  // namespace
}  // namespace skarnel
