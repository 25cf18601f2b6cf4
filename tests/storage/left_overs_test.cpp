#include "storage/left_overs.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <system_error>
#include <thread>

#include "storage/fake_file_systems.h"
#include "storage/run_as_nobody.h"
#include "storage/safe_file.h"
#include "storage/temporary_folder.h"

namespace skarnel {
namespace {

using test::putFile;
using test::TemporaryFolder;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(LeftOvers, NamesAreHiddenRandomAndRecognised) {
    const std::string first = temporaryFilePath("/a/b");
    const std::string second = temporaryFilePath("/a/b");
    EXPECT_NE(first, second);
    EXPECT_EQ(first.substr(0, 14), "/a/b/.skarnel-");
    EXPECT_TRUE(isTemporaryFileName(first.substr(5)));
    EXPECT_EQ(temporaryFilePath("/").substr(0, 10), "/.skarnel-");
    EXPECT_TRUE(isTemporaryFileName(temporaryFilePath("")));
}

TEST(LeftOvers, NamesOfOthersAreNotRecognised) {
    EXPECT_FALSE(isTemporaryFileName(".skarnel-0123456789abcdef.tmp"));
    EXPECT_FALSE(isTemporaryFileName(".skarnel-0123456789abcdef.bart"));
    EXPECT_FALSE(isTemporaryFileName(".skarnel-0123456789ABCDEF.part"));
    EXPECT_FALSE(isTemporaryFileName("xskarnel-0123456789abcdef.part"));
    EXPECT_FALSE(isTemporaryFileName(".skarnel-0123456789abcde.part"));
    EXPECT_TRUE(isTemporaryFileName(".skarnel-0123456789abcdef.part"));
}

TEST(LeftOvers, AnAbandonedFileGoesAndEverythingElseStays) {
    const TemporaryFolder folder;
    putFile(temporaryFilePath(folder.path()), "half");
    putFile(folder / "picture.png", "mine");
    putFile(folder / ".skarnel-notes.part", "mine too");
    removeLeftOvers(folder.path());
    EXPECT_THAT(folder.names(), ElementsAre(".skarnel-notes.part", "picture.png"));
}

TEST(LeftOvers, AFileWhoseWriterLivesStays) {
    const TemporaryFolder folder;
    const std::string path = temporaryFilePath(folder.path());
    putFile(path, "half");
    const int descriptor = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_EQ(::flock(descriptor, LOCK_EX), 0);
    removeLeftOvers(folder.path());
    EXPECT_EQ(folder.names().size(), 1U);
    ::close(descriptor);
    removeLeftOvers(folder.path());
    EXPECT_THAT(folder.names(), IsEmpty());
}

TEST(LeftOvers, FoldersAndLinksOfThatNameStay) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(temporaryFilePath(folder.path()));
    putFile(folder / "kept", "kept");
    std::filesystem::create_symlink(folder / "kept", temporaryFilePath(folder.path()));
    ASSERT_EQ(::mkfifo(temporaryFilePath(folder.path()).c_str(), 0600), 0);
    removeLeftOvers(folder.path());
    EXPECT_EQ(folder.names().size(), 4U);
    EXPECT_EQ(test::fileText(folder / "kept"), "kept");
}

TEST(LeftOvers, AFolderThatCannotBeListedIsLeftAlone) {
    const TemporaryFolder folder;
    removeLeftOvers(folder / "missing");
    putFile(temporaryFilePath(folder.path()), "half");
    test::RefusingFileSystem refusing({{"list", EACCES}});
    removeLeftOvers(folder.path(), refusing);
    EXPECT_EQ(folder.names().size(), 1U);
}

TEST(LeftOvers, AFileOfAnotherUserOrOfOneThatIsNotKnownStays) {
    const TemporaryFolder folder;
    putFile(temporaryFilePath(folder.path()), "half");
    test::RefusingFileSystem refusing({{"fstat", EIO}});
    removeLeftOvers(folder.path(), refusing);
    class OtherOwner final : public test::InterceptedFileSystem {
        int before(const std::string&, const std::string&) override { return 0; }
        int fstat(int descriptor, struct stat& status) override {
            const int result = real_.fstat(descriptor, status);
            ++status.st_uid;
            return result;
        }
    } otherOwner;
    removeLeftOvers(folder.path(), otherOwner);
    EXPECT_EQ(folder.names().size(), 1U);
}

/// A disk whose folders are not listed before it is told so. Threads that nobody waits for use it:
/// it must not be destroyed.
class HangingDisk final : public test::InterceptedFileSystem {
  public:
    void goOn() { goOn_ = true; }
    bool isAsked() const { return asked_; }
    int list(const char* folder, std::vector<std::string>& names) override {
        asked_ = true;
        while (!goOn_) ::usleep(1000);
        return real_.list(folder, names);
    }

  private:
    int before(const std::string&, const std::string&) override { return 0; }
    std::atomic<bool> asked_ = false;
    std::atomic<bool> goOn_ = false;
};

template <typename Condition>
bool comesTrue(Condition condition) {
    for (int i = 0; i < 20'000 && !condition(); ++i) ::usleep(1000);
    return condition();
}

TEST(LeftOversApart, NobodyWaitsForAFolderThatHangs) {
    const TemporaryFolder folder;
    putFile(temporaryFilePath(folder.path()), "half");
    static auto& disk = *new HangingDisk;
    removeLeftOversApart(folder.path(), disk);
    ASSERT_TRUE(comesTrue([&] { return disk.isAsked(); }));
    EXPECT_EQ(folder.names().size(), 1U);
    disk.goOn();
    EXPECT_TRUE(comesTrue([&] { return folder.names().empty(); }));
}

TEST(LeftOversApart, NorDoesTheEndOfTheProcess) {
    const TemporaryFolder folder;
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        ::alarm(30);
        static auto& disk = *new HangingDisk;
        removeLeftOversApart(folder.path(), disk);
        std::exit(comesTrue([&] { return disk.isAsked(); }) ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

TEST(LeftOversApart, WithoutMemoryOrThreadsTheyStay) {
    class NoMemory final : public test::InterceptedFileSystem {
      public:
        std::atomic<bool> asked = false;

      private:
        int before(const std::string&, const std::string&) override {
            asked = true;
            throw std::bad_alloc();
        }
    };
    const TemporaryFolder folder;
    putFile(temporaryFilePath(folder.path()), "half");
    static auto& noMemory = *new NoMemory;
    removeLeftOversApart(folder.path(), noMemory);
    EXPECT_TRUE(comesTrue([&] { return noMemory.asked.load(); }));
    EXPECT_TRUE(test::holdsForAnOrdinaryUser([&] {
        const rlimit none = {0, 0};
        if (::setrlimit(RLIMIT_NPROC, &none) != 0) return false;
        removeLeftOversApart(folder.path(), noMemory);
        try {
            std::thread([] {}).join();
        } catch (const std::system_error&) {
            return true;
        }
        return false;
    }));
    EXPECT_EQ(folder.names().size(), 1U);
}

TEST(LeftOvers, TheFirstSafeWriteIntoAFolderSweepsItAndLaterOnesDoNotListItAgain) {
    const TemporaryFolder folder;
    putFile(temporaryFilePath(folder.path()), "half");
    test::RefusingFileSystem counting({});
    const auto bytes = test::bytesOf("whole");
    ASSERT_TRUE(writeFileSafely(folder / "a", bytes, Overwrite::Refuse, counting));
    EXPECT_THAT(folder.names(), ElementsAre("a"));
    ASSERT_TRUE(writeFileSafely(folder / "b", bytes, Overwrite::Refuse, counting));
    EXPECT_EQ(counting.count("list"), 1);
}

}  // namespace
}  // namespace skarnel
