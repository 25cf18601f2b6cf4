// A watched folder.
#include <gmock/gmock.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>

#include <cstdio>
#include <fstream>

#include "cli/pictures.h"
#include "cli/process.h"
#include "cli/watching.h"
#include "storage/temporary_folder.h"

namespace skarnel {
namespace {

using test::Finished;
using test::Process;
using test::TemporaryFolder;
using testing::HasSubstr;

bool hasLines(const Finished& so, int count) {
    return std::count(so.out.begin(), so.out.end(), '\n') >= count;
}

TEST(Watch, RendersWhatAppearsAndEndsWith130) {
    const TemporaryFolder folder;
    const TemporaryFolder elsewhere;
    test::putPicture(folder / "before.png", 10, 10);
    Process process({"--watch", folder.path(), "--format", "png"});
    test::waitUntilWatching(process);
    test::putPicture(folder / "written.png", 10, 10);
    ASSERT_TRUE(process.readUntil([](const Finished& so) { return hasLines(so, 1); }));
    test::putPicture(elsewhere / "moved.jpg", 10, 10, kUTTypeJPEG);
    std::filesystem::rename(elsewhere / "moved.jpg", folder / "moved.jpg");
    ASSERT_TRUE(process.readUntil([](const Finished& so) { return hasLines(so, 2); }));
    test::putFile(folder / "notes.txt", "no picture");
    test::putPicture(folder / ".hidden.png", 10, 10);
    test::putPicture(folder / "last.png", 10, 10);
    ASSERT_TRUE(process.readUntil([](const Finished& so) { return hasLines(so, 3); }));
    process.signal(SIGINT);
    const Finished finished = process.finish();
    EXPECT_EQ(finished.exitCode, 130);
    EXPECT_EQ(finished.out, folder / "written Reflection.png\n" +
                                (folder / "moved Reflection.png\n") +
                                (folder / "last Reflection.png\n"));
    EXPECT_EQ(finished.err, "");
}

TEST(Watch, WritesIntoAnotherFolderAndNamesBadFiles) {
    const TemporaryFolder folder;
    const TemporaryFolder results;
    Process process({"--watch", folder.path(), "-o", results.path()});
    test::waitUntilWatching(process);
    test::putFile(folder / "bad.png", "no picture");
    test::putPicture(folder / "good.png", 10, 10);
    ASSERT_TRUE(process.readUntil([](const Finished& so) { return hasLines(so, 1); }));
    process.signal(SIGTERM);
    const Finished finished = process.finish();
    EXPECT_EQ(finished.exitCode, 143);
    EXPECT_THAT(finished.err, HasSubstr("bad.png: "));
    EXPECT_EQ(finished.out, results / "good Reflection.tiff\n");
}

/// What --watch prints for one picture when its results go to `into`, another name of the folder.
std::string printedForOnePicture(const TemporaryFolder& folder, const std::string& into) {
    Process process({"--watch", folder.path(), "-o", into});
    test::waitUntilWatching(process);
    test::putPicture(folder / "first.png", 10, 10);
    EXPECT_TRUE(process.readUntil([](const Finished& so) { return hasLines(so, 1); }));
    // The result's events come before the next picture's.
    test::putPicture(folder / "second.png", 10, 10);
    EXPECT_TRUE(process.readUntil([](const Finished& so) { return hasLines(so, 2); }));
    process.signal(SIGINT);
    return process.finish().out;
}

TEST(Watch, ItsOwnResultsAreNoPicturesHoweverTheFolderIsNamed) {
    for (const bool linked : {false, true}) {
        const TemporaryFolder parent;
        const TemporaryFolder folder;
        std::filesystem::create_directory_symlink(folder.path(), parent / "link");
        const std::string into = linked ? parent / "link" : folder.path() + "/.";
        EXPECT_EQ(printedForOnePicture(folder, into),
                  into + "/first Reflection.tiff\n" + into + "/second Reflection.tiff\n");
    }
}

TEST(Watch, WithoutAFolderToWriteToItDoesNotBegin) {
    const TemporaryFolder folder;
    test::putFile(folder / "file.png", "no folder");
    for (const char* name : {"missing/", "file.png"}) {
        const Finished refused = test::render({"--watch", folder.path(), "-o", folder / name});
        EXPECT_EQ(refused.exitCode, 2);
        EXPECT_THAT(refused.err, HasSubstr("needs a folder to write to"));
    }
}

TEST(Watch, ALinkIsAPictureAtOnce) {
    const TemporaryFolder folder;
    const TemporaryFolder elsewhere;
    const TemporaryFolder results;
    test::putPicture(elsewhere / "photo.png", 10, 10);
    Process process({"--watch", folder.path(), "-o", results.path()});
    test::waitUntilWatching(process);
    std::filesystem::create_hard_link(elsewhere / "photo.png", folder / "hard.png");
    ASSERT_TRUE(process.readUntil([](const Finished& so) { return hasLines(so, 1); }));
    std::filesystem::create_symlink(elsewhere / "photo.png", folder / "soft.png");
    ASSERT_TRUE(process.readUntil([](const Finished& so) { return hasLines(so, 2); }));
    process.signal(SIGINT);
    const Finished finished = process.finish();
    EXPECT_EQ(finished.out,
              results / "hard Reflection.tiff\n" + (results / "soft Reflection.tiff\n"));
    EXPECT_EQ(finished.err, "");
}

TEST(Watch, OfTwoThatProposeOneNameTheSecondIsRefused) {
    const TemporaryFolder folder;
    const TemporaryFolder elsewhere;
    const TemporaryFolder results;
    test::putPicture(elsewhere / "a.png", 10, 10);
    test::putPicture(elsewhere / "a.bmp", 10, 10, kUTTypeBMP);
    Process process({"--watch", folder.path(), "-o", results.path(), "--force", "--json"});
    test::waitUntilWatching(process);
    test::halt(process);  // so that both come together
    std::filesystem::rename(elsewhere / "a.png", folder / "a.png");
    std::filesystem::rename(elsewhere / "a.bmp", folder / "a.bmp");
    process.signal(SIGCONT);
    ASSERT_TRUE(process.readUntil([](const Finished& so) { return hasLines(so, 2); }));
    process.signal(SIGINT);
    EXPECT_EQ(results.names(), std::vector<std::string>{"a Reflection.tiff"});
}

TEST(Watch, AResultThatSomebodyReplacedIsAPicture) {
    const TemporaryFolder folder;
    Process process({"--watch", folder.path(), "--format", "png"});
    test::waitUntilWatching(process);
    test::putPicture(folder / "a.png", 10, 10);
    ASSERT_TRUE(process.readUntil([](const Finished& so) { return hasLines(so, 1); }));
    test::putPicture(folder / "a Reflection.png", 12, 12);
    ASSERT_TRUE(process.readUntil([](const Finished& so) { return hasLines(so, 2); }));
    process.signal(SIGINT);
    EXPECT_EQ(process.finish().out,
              folder / "a Reflection.png\n" + (folder / "a Reflection Reflection.png\n"));
}

/// More events than the kernel keeps, while the process cannot read them.
void overflowQueue(const Process& process, const TemporaryFolder& folder) {
    test::halt(process);
    const int most = std::stoi(test::kernelText("/proc/sys/fs/inotify/max_queued_events"));
    // By turns: the kernel counts equal events in a row as one.
    for (int i = 0; i < most + 2; ++i) test::putFile(folder / (i % 2 == 0 ? "a" : "b"), "");
}

TEST(Watch, WhereEventsAreLostItLooksAtTheFolder) {
    const TemporaryFolder folder;
    const TemporaryFolder results;
    test::putPicture(folder / "old.png", 10, 10);
    Process process({"--watch", folder.path(), "-o", results.path()});
    test::waitUntilWatching(process);
    test::putPicture(folder / "first.png", 10, 10);
    ASSERT_TRUE(process.readUntil([](const Finished& so) { return hasLines(so, 1); }));
    overflowQueue(process, folder);
    const Bytes picture = *encodeImage(test::gradientPicture(10, 10), kUTTypePNG);
    std::ofstream slow(folder / "slow.png", std::ios::binary);
    slow.write(reinterpret_cast<const char*>(picture.data()), 40).flush();
    test::putPicture(folder / "lost.png", 10, 10);
    process.signal(SIGCONT);
    ASSERT_TRUE(process.readUntil([](const Finished& so) { return hasLines(so, 2); }));
    // What was still being written is taken when it is whole.
    slow.write(reinterpret_cast<const char*>(picture.data()) + 40,
               static_cast<std::streamsize>(picture.size()) - 40);
    slow.close();
    ASSERT_TRUE(process.readUntil([](const Finished& so) { return hasLines(so, 3); }));
    process.signal(SIGINT);
    const Finished finished = process.finish();
    EXPECT_EQ(finished.out, results / "first Reflection.tiff\n" +
                                (results / "lost Reflection.tiff\n") +
                                (results / "slow Reflection.tiff\n"));
    EXPECT_EQ(finished.err, "");
}

TEST(Watch, AResultThatCannotBeWrittenDoesNotEndIt) {
    const TemporaryFolder folder;
    const TemporaryFolder results;
    Process process({"--watch", folder.path(), "-o", results.path(), "--compression", "none"}, [] {
        // Stands for a full disk: 60,000 bytes are enough for the small result alone.
        const rlimit limit = {60'000, RLIM_INFINITY};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    });
    test::waitUntilWatching(process);
    test::putPicture(folder / "large.png", 100, 100);  // 100 x 200 pixels of 4 bytes
    test::putPicture(folder / "small.png", 10, 10);
    ASSERT_TRUE(process.readUntil([](const Finished& so) { return hasLines(so, 1); }));
    process.signal(SIGINT);
    const Finished finished = process.finish();
    EXPECT_EQ(finished.exitCode, 130);
    EXPECT_THAT(finished.err, HasSubstr("File too large"));
    EXPECT_EQ(results.names(), std::vector<std::string>{"small Reflection.tiff"});
}

TEST(Watch, AFolderThatIsUnmountedOrMovedIsAFailure) {
    const TemporaryFolder parent;
    std::filesystem::create_directory(parent / "disk");
    const std::string disk = parent / "disk";
    // A view of the file system that only this child and its program have.
    const pid_t child = ::fork();
    if (child == 0) {
        const bool mounted =
            (::unshare(CLONE_NEWNS) == 0 || ::unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0) &&
            ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
            ::mount("tmpfs", disk.c_str(), "tmpfs", 0, "size=64k") == 0;
        if (!mounted) ::_exit(77);
        Process process({"--watch", disk});
        test::waitUntilWatching(process);
        ::umount(disk.c_str());
        const Finished finished = process.finish();
        test::putFile(parent / "seen", std::to_string(finished.exitCode) + " " + finished.err);
        ::_exit(0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    // Where nothing may be mounted, the other half of the test remains.
    if (WEXITSTATUS(status) != 77) {
        EXPECT_THAT(test::fileText(parent / "seen"), testing::StartsWith("1 "));
        EXPECT_THAT(test::fileText(parent / "seen"), HasSubstr("no longer there"));
    }
    Process process({"--watch", disk});
    test::waitUntilWatching(process);
    std::filesystem::rename(disk, parent / "elsewhere");
    const Finished finished = process.finish();
    EXPECT_EQ(finished.exitCode, 1);
    EXPECT_THAT(finished.err, HasSubstr("no longer there"));
}

TEST(Watch, AFolderThatIsNotThereOrGoesAwayIsAFailure) {
    const TemporaryFolder parent;
    const Finished missing = test::render({"--watch", parent / "missing"});
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_THAT(missing.err, HasSubstr("No such file or directory"));
    std::filesystem::create_directory(parent / "folder");
    Process process({"--watch", parent / "folder"});
    test::waitUntilWatching(process);
    std::filesystem::remove(parent / "folder");
    const Finished gone = process.finish();
    EXPECT_EQ(gone.exitCode, 1);
    EXPECT_THAT(gone.err, HasSubstr("no longer there"));
}

}  // namespace
}  // namespace skarnel
