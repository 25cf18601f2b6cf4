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

/// Notes what the disk is told to begin with.
class FlushNotingFileSystem final : public test::InterceptedFileSystem {
  public:
    void beginFlush(int, std::uint64_t offset, std::uint64_t count) override {
        noted.emplace_back(offset, count);
    }
    std::vector<std::pair<std::uint64_t, std::uint64_t>> noted;

  private:
    int before(const std::string&, const std::string&) override { return 0; }
};

TEST(WriteFileSafely, LetsTheDiskBeginWithALargeFileBeforeItIsWhole) {
    const TemporaryFolder folder;
    std::vector<std::uint8_t> bytes((std::size_t{9} << 20) + 7);
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<std::uint8_t>(i * i >> 7);
    FlushNotingFileSystem fileSystem;
    ASSERT_TRUE(writeFileSafely(folder / "large", bytes, Overwrite::Refuse, fileSystem));
    EXPECT_EQ(fileText(folder / "large"), std::string(bytes.begin(), bytes.end()));
    constexpr std::uint64_t kPiece = 4 << 20;
    using Piece = std::pair<std::uint64_t, std::uint64_t>;
    EXPECT_THAT(fileSystem.noted, ElementsAre(Piece(0, kPiece), Piece(kPiece, kPiece)));
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

/// Shows the replaced file as another user's or group's, and refuses to give ours to them.
class OthersFile final : public test::InterceptedFileSystem {
  public:
    explicit OthersFile(uid_t users, gid_t groups) : users_(users), groups_(groups) {}
    std::vector<std::pair<uid_t, gid_t>> attempts;

  private:
    int before(const std::string&, const std::string&) override { return 0; }
    int stat(const char* path, struct stat& status) override {
        const int result = real_.stat(path, status);
        status.st_uid = ::geteuid() + users_;
        status.st_gid = ::getegid() + groups_;
        return result;
    }
    int fchown(int, uid_t user, gid_t group) override {
        attempts.emplace_back(user, group);
        return -EPERM;
    }
    uid_t users_;
    gid_t groups_;
};

TEST(WriteFileSafely, WhereTheOwnerCannotBeKeptTheGroupIsTried) {
    const TemporaryFolder folder;
    const uid_t user = ::geteuid();
    const gid_t group = ::getegid();
    constexpr auto kSame = static_cast<uid_t>(-1);
    const struct {
        uid_t users;
        gid_t groups;
        std::vector<std::pair<uid_t, gid_t>> attempts;
    } rows[] = {
        {0, 0, {}},
        {1, 0, {{user + 1, group}, {kSame, group}}},
        {0, 1, {{user, group + 1}, {kSame, group + 1}}},
    };
    putFile(folder / "theirs", "old");
    // The folder's group would be the file's where that bit is set.
    for (const auto& row : rows) {
        OthersFile fileSystem(row.users, row.groups);
        ASSERT_TRUE(
            writeFileSafely(folder / "theirs", bytesOf("new"), Overwrite::Allow, fileSystem));
        EXPECT_EQ(fileSystem.attempts, row.attempts);
        EXPECT_EQ(fileText(folder / "theirs"), "new");
    }
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

/// Fails one call, and does not wait.
class HastyFileSystem final : public test::InterceptedFileSystem {
  public:
    HastyFileSystem(std::string call, int error) : call_(std::move(call)), error_(error) {}
    int pauses = 0;

  private:
    int before(const std::string& call, const std::string&) override {
        return call == call_ ? -error_ : 0;
    }
    void pause(std::chrono::milliseconds) override { ++pauses; }
    std::string call_;
    int error_;
};

TEST(WriteFileSafely, ADeviceThatCannotBeOpenedOrClosedIsAFailureWithItsCause) {
    const auto reason = [](const std::string& call, int error) {
        HastyFileSystem failing(call, error);
        const Result<void> written =
            writeFileSafely("/dev/null", bytesOf("x"), Overwrite::Allow, failing);
        return written ? "written" : written.error().message;
    };
    EXPECT_EQ(reason("open", EACCES), "Permission denied");
    EXPECT_EQ(reason("open", ENXIO), "No such device or address");
    EXPECT_EQ(reason("close", EIO), "Input/output error");
    EXPECT_EQ(reason("close", EINTR), "written") << "a signal takes nothing back";
    EXPECT_EQ(reason("write", EIO), "Input/output error");
}

TEST(WriteFileSafely, ADeviceThatIsNotReadyIsAskedForASecond) {
    HastyFileSystem failing("open", ENXIO);
    EXPECT_FALSE(writeFileSafely("/dev/null", bytesOf("x"), Overwrite::Allow, failing));
    EXPECT_EQ(failing.pauses, 50);  // of 20 ms
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
