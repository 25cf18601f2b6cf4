#include "storage/safe_file.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <csignal>
#include <thread>

#include "storage/fake_file_systems.h"
#include "storage/run_as_nobody.h"
#include "storage/temporary_folder.h"

namespace skarnel {
namespace {

using test::bytesOf;
using test::fileText;
using test::putFile;
using test::TemporaryFolder;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

mode_t modeOf(const std::string& path) {
    struct stat status = {};
    return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
}

/// The code of a failure, or nothing when it went well.
std::optional<ErrorCode> codeOf(const Result<void>& result) {
    return result ? std::nullopt : std::optional<ErrorCode>(result.error().code);
}

TEST(WriteFileSafely, MakesANewFileWithExactlyTheBytes) {
    const TemporaryFolder folder;
    ASSERT_TRUE(writeFileSafely(folder / "new", bytesOf("one\0two"), Overwrite::Refuse));
    EXPECT_EQ(fileText(folder / "new"), std::string("one\0two"));
    EXPECT_THAT(folder.names(), ElementsAre("new"));
}

TEST(WriteFileSafely, WritesAnEmptyFile) {
    const TemporaryFolder folder;
    ASSERT_TRUE(writeFileSafely(folder / "empty", {}, Overwrite::Refuse));
    EXPECT_EQ(fileText(folder / "empty"), "");
}

TEST(WriteFileSafely, RefusesToOverwriteUnlessAllowed) {
    const TemporaryFolder folder;
    putFile(folder / "old", "old");
    const Result<void> refused = writeFileSafely(folder / "old", bytesOf("new"), Overwrite::Refuse);
    EXPECT_EQ(codeOf(refused), ErrorCode::AlreadyExists);
    EXPECT_EQ(fileText(folder / "old"), "old");
    ASSERT_TRUE(writeFileSafely(folder / "old", bytesOf("new"), Overwrite::Allow));
    EXPECT_EQ(fileText(folder / "old"), "new");
    EXPECT_THAT(folder.names(), ElementsAre("old"));
}

TEST(WriteFileSafely, RefusesAlsoWhenTheFileAppearsWhileWeWrite) {
    // Looking first is not enough: the name is taken between the look and the last step.
    class LateComer final : public test::InterceptedFileSystem {
      public:
        explicit LateComer(std::string path) : path_(std::move(path)) {}

      private:
        int before(const std::string& call, const std::string&) override {
            if (call == "renameNoReplace") putFile(path_, "theirs");
            return 0;
        }
        std::string path_;
    };
    const TemporaryFolder folder;
    LateComer fileSystem(folder / "name");
    const Result<void> refused =
        writeFileSafely(folder / "name", bytesOf("ours"), Overwrite::Refuse, fileSystem);
    EXPECT_EQ(codeOf(refused), ErrorCode::AlreadyExists);
    EXPECT_EQ(fileText(folder / "name"), "theirs");
    EXPECT_THAT(folder.names(), ElementsAre("name"));
}

TEST(WriteFileSafely, ADanglingLinkCountsAsThereWhenRefusing) {
    const TemporaryFolder folder;
    std::filesystem::create_symlink("nowhere", folder / "link");
    EXPECT_EQ(codeOf(writeFileSafely(folder / "link", bytesOf("x"), Overwrite::Refuse)),
              ErrorCode::AlreadyExists);
}

TEST(WriteFileSafely, FollowsALinkAndReplacesItsTarget) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder / "deep");
    putFile(folder / "deep/real", "old");
    std::filesystem::create_symlink("deep/real", folder / "second");
    std::filesystem::create_symlink(folder / "second", folder / "first");
    ASSERT_TRUE(writeFileSafely(folder / "first", bytesOf("new"), Overwrite::Allow));
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "first"));
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "second"));
    EXPECT_EQ(fileText(folder / "deep/real"), "new");
}

TEST(WriteFileSafely, MakesTheTargetOfADanglingLink) {
    const TemporaryFolder folder;
    std::filesystem::create_symlink("later", folder / "link");
    ASSERT_TRUE(writeFileSafely(folder / "link", bytesOf("x"), Overwrite::Allow));
    EXPECT_EQ(fileText(folder / "later"), "x");
}

TEST(WriteFileSafely, ALoopOfLinksIsAFailureWithItsCause) {
    const TemporaryFolder folder;
    std::filesystem::create_symlink("b", folder / "a");
    std::filesystem::create_symlink("a", folder / "b");
    const Result<void> looped = writeFileSafely(folder / "a", bytesOf("x"), Overwrite::Allow);
    ASSERT_FALSE(looped);
    EXPECT_EQ(looped.error().message, "Too many levels of symbolic links");
}

TEST(WriteFileSafely, KeepsThePermissionsOfAReplacedFile) {
    const TemporaryFolder folder;
    putFile(folder / "private", "old");
    ::chmod((folder / "private").c_str(), 0640);
    ASSERT_TRUE(writeFileSafely(folder / "private", bytesOf("new"), Overwrite::Allow));
    EXPECT_EQ(modeOf(folder / "private"), 0640U);
}

TEST(WriteFileSafely, GivesANewFileWhatTheMaskLeaves) {
    const TemporaryFolder folder;
    const mode_t before = ::umask(027);
    ASSERT_TRUE(writeFileSafely(folder / "new", bytesOf("x"), Overwrite::Refuse));
    ::umask(before);
    EXPECT_EQ(modeOf(folder / "new"), 0640U);
}

TEST(WriteFileSafely, KeepsTheOwnerWhenRootSaves) {
    if (::geteuid() != 0) GTEST_SKIP() << "only root may give a file away";
    const TemporaryFolder folder;
    putFile(folder / "theirs", "old");
    test::giveToAnOrdinaryUser((folder / "theirs").c_str());
    ASSERT_TRUE(writeFileSafely(folder / "theirs", bytesOf("new"), Overwrite::Allow));
    struct stat status = {};
    ASSERT_EQ(::stat((folder / "theirs").c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, test::kNobody);
    EXPECT_EQ(status.st_gid, test::kNobody);
}

TEST(WriteFileSafely, AReadOnlyFileIsNotReplaced) {
    const TemporaryFolder folder;
    test::giveToAnOrdinaryUser(folder.path().c_str());
    putFile(folder / "fixed", "old");
    test::giveToAnOrdinaryUser((folder / "fixed").c_str());
    ::chmod((folder / "fixed").c_str(), 0444);
    EXPECT_TRUE(test::holdsForAnOrdinaryUser([&] {
        const Result<void> refused =
            writeFileSafely(folder / "fixed", bytesOf("new"), Overwrite::Allow);
        return !refused && refused.error().code == ErrorCode::CannotWrite &&
               refused.error().message == "Permission denied";
    }));
    EXPECT_EQ(fileText(folder / "fixed"), "old");
}

TEST(WriteFileSafely, AFolderThatMayNotBeWrittenIsNamedAsTheCause) {
    const TemporaryFolder folder;
    test::giveToAnOrdinaryUser(folder.path().c_str());
    ::chmod(folder.path().c_str(), 0555);
    EXPECT_TRUE(test::holdsForAnOrdinaryUser([&] {
        const Result<void> refused =
            writeFileSafely(folder / "new", bytesOf("new"), Overwrite::Allow);
        return !refused && refused.error().message == "Permission denied";
    }));
    EXPECT_THAT(folder.names(), IsEmpty());
}

TEST(WriteFileSafely, AFolderThatMayOnlyBeWrittenIsEnough) {
    const TemporaryFolder folder;
    test::giveToAnOrdinaryUser(folder.path().c_str());
    ::chmod(folder.path().c_str(), 0333);
    EXPECT_TRUE(test::holdsForAnOrdinaryUser(
        [&] { return bool(writeFileSafely(folder / "new", bytesOf("new"), Overwrite::Refuse)); }));
    EXPECT_EQ(fileText(folder / "new"), "new");
}

TEST(WriteFileSafely, AMissingFolderIsNamedAsTheCause) {
    const TemporaryFolder folder;
    const Result<void> missing =
        writeFileSafely(folder / "no/such", bytesOf("x"), Overwrite::Refuse);
    ASSERT_FALSE(missing);
    EXPECT_EQ(missing.error().code, ErrorCode::NotFound);
    EXPECT_EQ(missing.error().message, "The folder does not exist");
}

TEST(WriteFileSafely, AFolderOrASocketOrNoNameIsRefused) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder / "folder");
    const Result<void> isFolder =
        writeFileSafely(folder / "folder", bytesOf("x"), Overwrite::Allow);
    ASSERT_FALSE(isFolder);
    EXPECT_EQ(isFolder.error().message, "It is a folder");

    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    (folder / "socket").copy(address.sun_path, sizeof(address.sun_path) - 1);
    ASSERT_EQ(::bind(socket, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
    const Result<void> isSocket =
        writeFileSafely(folder / "socket", bytesOf("x"), Overwrite::Allow);
    ASSERT_FALSE(isSocket);
    EXPECT_EQ(isSocket.error().message, "It is not an ordinary file");
    ::close(socket);

    EXPECT_EQ(codeOf(writeFileSafely("", bytesOf("x"), Overwrite::Allow)),
              ErrorCode::InvalidArgument);
}

TEST(WriteFileSafely, WritesThroughDevicesAndReportsAFullOne) {
    EXPECT_TRUE(writeFileSafely("/dev/null", bytesOf("x"), Overwrite::Refuse));
    const Result<void> full = writeFileSafely("/dev/full", bytesOf("x"), Overwrite::Allow);
    ASSERT_FALSE(full);
    EXPECT_EQ(full.error().code, ErrorCode::CannotWrite);
    EXPECT_EQ(full.error().message, "No space left on device");
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
}

TEST(WriteFileSafely, WritesThroughANamedPipe) {
    const TemporaryFolder folder;
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    std::string received;
    std::thread reader([&] { received = fileText(folder / "pipe"); });
    EXPECT_TRUE(writeFileSafely(folder / "pipe", bytesOf("through"), Overwrite::Refuse));
    reader.join();
    EXPECT_EQ(received, "through");
    EXPECT_TRUE(std::filesystem::is_fifo(folder / "pipe"));
}

TEST(WriteFileSafely, APipeThatNothingReadsIsRefused) {
    const TemporaryFolder folder;
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    const Result<void> refused =
        writeFileSafely(folder / "pipe", bytesOf("nobody"), Overwrite::Allow);
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().message, "Nothing reads from this pipe");
}

TEST(WriteFileSafely, AStreamThatCannotBeMadeToWaitIsAFailure) {
    test::RefusingFileSystem failing({{"setBlocking", EIO}});
    const Result<void> refused =
        writeFileSafely("/dev/null", bytesOf("x"), Overwrite::Allow, failing);
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().message, "Input/output error");
}

TEST(WriteFileSafely, AFileSizeLimitIsAFailureAndTheOldFileStays) {
    const TemporaryFolder folder;
    putFile(folder / "picture", "old");
    rlimit before = {};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit small = {1000, before.rlim_max};
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    const Result<void> refused =
        writeFileSafely(folder / "picture", std::vector<std::uint8_t>(5000, 7), Overwrite::Allow);
    ::setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().message, "File too large");
    EXPECT_EQ(fileText(folder / "picture"), "old");
    EXPECT_THAT(folder.names(), ElementsAre("picture"));
}

TEST(WriteFileSafely, GoesOnAfterShortWrites) {
    const TemporaryFolder folder;
    test::ShortWritingFileSystem fileSystem(3);
    ASSERT_TRUE(
        writeFileSafely(folder / "new", bytesOf("0123456789"), Overwrite::Refuse, fileSystem));
    EXPECT_EQ(fileText(folder / "new"), "0123456789");
    EXPECT_EQ(fileSystem.writes(), 4);  // 3 + 3 + 3 + 1
}

TEST(WriteFileSafely, GivesUpWhenWritesMakeNoProgress) {
    const TemporaryFolder folder;
    test::ShortWritingFileSystem fileSystem(0);
    const Result<void> stuck =
        writeFileSafely(folder / "new", bytesOf("x"), Overwrite::Refuse, fileSystem);
    ASSERT_FALSE(stuck);
    EXPECT_EQ(stuck.error().message, "Nothing more could be written");
    EXPECT_THAT(folder.names(), IsEmpty());
}

TEST(WriteFileSafely, WithoutAnExclusiveRenameASecondLinkDoesTheSame) {
    const TemporaryFolder folder;
    test::RefusingFileSystem fileSystem({{"renameNoReplace", EINVAL}});
    ASSERT_TRUE(writeFileSafely(folder / "new", bytesOf("x"), Overwrite::Refuse, fileSystem));
    EXPECT_EQ(fileText(folder / "new"), "x");
    EXPECT_THAT(folder.names(), ElementsAre("new"));
    EXPECT_EQ(fileSystem.count("link"), 1);
}

TEST(WriteFileSafely, WithoutLinksEitherItLooksFirst) {
    const TemporaryFolder folder;
    test::RefusingFileSystem fileSystem({{"renameNoReplace", ENOSYS}, {"link", EPERM}});
    ASSERT_TRUE(writeFileSafely(folder / "new", bytesOf("x"), Overwrite::Refuse, fileSystem));
    EXPECT_EQ(fileText(folder / "new"), "x");
    EXPECT_EQ(codeOf(writeFileSafely(folder / "new", bytesOf("y"), Overwrite::Refuse, fileSystem)),
              ErrorCode::AlreadyExists);
    EXPECT_THAT(folder.names(), ElementsAre("new"));
}

TEST(WriteFileSafely, FileSystemsWithoutLocksModesOrFolderFlushesAreServed) {
    const TemporaryFolder folder;
    test::RefusingFileSystem noLocks({{"flock", ENOLCK}});
    EXPECT_TRUE(writeFileSafely(folder / "a", bytesOf("a"), Overwrite::Refuse, noLocks));
    test::RefusingFileSystem noModes({{"fchmod", EPERM}});
    EXPECT_TRUE(writeFileSafely(folder / "b", bytesOf("b"), Overwrite::Refuse, noModes));
    class NoFolderFlush final : public test::InterceptedFileSystem {
        int before(const std::string& call, const std::string&) override {
            return call == "fsync" && ++flushes_ == 2 ? -EINVAL : 0;
        }
        int flushes_ = 0;
    } noFlush;
    EXPECT_TRUE(writeFileSafely(folder / "c", bytesOf("c"), Overwrite::Refuse, noFlush));
    EXPECT_THAT(folder.names(), ElementsAre("a", "b", "c"));
}

TEST(WriteFileSafely, ACleanerThatIsQuickerThanOurLockCostsOnlyAnotherName) {
    // The cleaner takes the fresh file away just before we lock it.
    class QuickCleaner final : public test::InterceptedFileSystem {
      public:
        int opens = 0;

      private:
        int before(const std::string& call, const std::string& path) override {
            if (call == "open") {
                opens += path.ends_with(".part") ? 1 : 0;
                last_ = path;
            }
            if (call == "flock" && opens == 1) real_.unlink(last_.c_str());
            return 0;
        }
        std::string last_;
    } fileSystem;
    const TemporaryFolder folder;
    ASSERT_TRUE(writeFileSafely(folder / "new", bytesOf("x"), Overwrite::Refuse, fileSystem));
    EXPECT_EQ(fileSystem.opens, 2);
    EXPECT_THAT(folder.names(), ElementsAre("new"));
}

TEST(WriteFileSafely, TakenTemporaryNamesAreTriedEightTimes) {
    class AlwaysTaken final : public test::InterceptedFileSystem {
        int before(const std::string& call, const std::string& path) override {
            return call == "open" && path.ends_with(".part") ? -EEXIST : 0;
        }
    } fileSystem;
    const TemporaryFolder folder;
    const Result<void> refused =
        writeFileSafely(folder / "new", bytesOf("x"), Overwrite::Refuse, fileSystem);
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().message, "No free name for a temporary file");
}

TEST(WriteFileSafely, AFileThatIsShorterThanWhatWasWrittenIsAFailure) {
    class Shrinking final : public test::InterceptedFileSystem {
        int before(const std::string&, const std::string&) override { return 0; }
        int fstat(int descriptor, struct stat& status) override {
            const int result = real_.fstat(descriptor, status);
            if (status.st_size > 0) --status.st_size;
            return result;
        }
    } fileSystem;
    const TemporaryFolder folder;
    const Result<void> refused =
        writeFileSafely(folder / "new", bytesOf("x"), Overwrite::Refuse, fileSystem);
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().message, "The file does not have the size that was written");
    EXPECT_THAT(folder.names(), IsEmpty());
}

TEST(WriteFileSafely, AFlushOfTheFolderThatFailsIsSaid) {
    class FailingFolder final : public test::InterceptedFileSystem {
        int before(const std::string& call, const std::string&) override {
            return call == "fsync" && ++flushes_ == 2 ? -EIO : 0;
        }
        int flushes_ = 0;
    } fileSystem;
    const TemporaryFolder folder;
    const Result<void> result =
        writeFileSafely(folder / "new", bytesOf("x"), Overwrite::Refuse, fileSystem);
    ASSERT_FALSE(result);
    EXPECT_THAT(result.error().message, HasSubstr("folder could not be flushed"));
    EXPECT_THAT(result.error().message, HasSubstr("Input/output error"));
    EXPECT_EQ(fileText(folder / "new"), "x");
}

TEST(FolderOfPath, IsWhatStandsBeforeTheLastSlash) {
    EXPECT_EQ(folderOfPath("/a/b"), "/a");
    EXPECT_EQ(folderOfPath("/a"), "/");
    EXPECT_EQ(folderOfPath("a/b/c"), "a/b");
    EXPECT_EQ(folderOfPath("a"), ".");
}

TEST(MakeFolders, MakesMissingParentsPrivately) {
    const TemporaryFolder folder;
    ASSERT_TRUE(makeFolders(folder / "a/b/c"));
    ASSERT_TRUE(makeFolders(folder / "a/b/c"));
    EXPECT_EQ(modeOf(folder / "a/b/c"), 0700U);
    EXPECT_TRUE(makeFolders("."));
}

TEST(MakeFolders, AFileInTheWayIsAFailure) {
    const TemporaryFolder folder;
    putFile(folder / "a", "file");
    EXPECT_FALSE(makeFolders(folder / "a/b"));
}

}  // namespace
}  // namespace skarnel
