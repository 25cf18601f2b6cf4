// Files and places that are not what they should be: a message with the file and the cause, exit
// code 1, nothing half done.
#include <gmock/gmock.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include "cli/pictures.h"
#include "cli/process.h"
#include "storage/run_as_nobody.h"
#include "storage/temporary_folder.h"

namespace skarnel {
namespace {

using test::Finished;
using test::render;
using test::TemporaryFolder;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class BadInput : public testing::Test {
  protected:
    BadInput() { test::putPicture(folder_ / "good.png", 30, 20); }

    /// Renders a file of these bytes; expects a failure that names it, and no result.
    std::string failure(const std::string& name, const std::string& bytes) {
        test::putFile(folder_ / name, bytes);
        const Finished finished = render({folder_ / name, "-o", out_});
        EXPECT_EQ(finished.exitCode, 1) << name;
        EXPECT_EQ(finished.out, "") << name;
        EXPECT_THAT(finished.err,
                    testing::StartsWith("skarnel-render: " + (folder_ / name) + ": "));
        EXPECT_FALSE(std::filesystem::exists(out_)) << name;
        return finished.err;
    }

    const TemporaryFolder folder_;
    const std::string out_ = folder_ / "out.png";
};

TEST_F(BadInput, FilesThatAreNoPictures) {
    EXPECT_THAT(failure("empty.png", ""), testing::Not(IsEmpty()));
    failure("text.jpg", "this is no picture");
    failure("zeros.tiff", std::string(10'000, '\0'));
    failure("noise.bmp", std::string(10'000, '\xa7'));
}

/// Wherever memory runs out, be it for the report: a result or a message, never a crash.
TEST_F(BadInput, LittleMemoryEndsCleanly) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "a sanitizer needs memory of its own";
#endif
    int failures = 0;
    for (rlim_t megabytes = 8; megabytes <= 128; megabytes += 4) {
        test::Process process({folder_ / "good.png", "-o", out_, "--force", "--json"}, [&] {
            const rlimit limit{megabytes << 20U, megabytes << 20U};
            ::setrlimit(RLIMIT_AS, &limit);
        });
        const Finished finished = process.finish();
        // 127: the loader had no memory for the program itself.
        EXPECT_THAT(finished.exitCode, testing::AnyOf(0, 1, 127)) << megabytes << " MB";
        failures += finished.exitCode == 0 ? 0 : 1;
    }
    EXPECT_GT(failures, 0) << "nothing was refused";
}

TEST_F(BadInput, EveryTruncationOfEveryFormat) {
    for (const std::string_view type : {kUTTypePNG, kUTTypeJPEG, kUTTypeBMP}) {
        const std::string whole = test::textOf(*encodeImage(test::gradientPicture(40, 30), type));
        for (const std::size_t part : {std::size_t{1}, std::size_t{8}, std::size_t{30},
                                       whole.size() / 4, whole.size() / 2, whole.size() - 20}) {
            SCOPED_TRACE(std::string(type) + " " + std::to_string(part));
            failure("cut", whole.substr(0, part));
        }
    }
}

TEST_F(BadInput, HeadersThatLieAboutTheSize) {
    // The width and height of a PNG stand at bytes 16 to 23; its check goes wrong as well, which
    // some readers would overlook.
    std::string png = test::textOf(*encodeImage(test::gradientPicture(4, 4), kUTTypePNG));
    for (const std::string& size :
         {std::string(8, '\0'), std::string("\x7f\xff\xff\xff\x7f\xff\xff\xff"),
          std::string("\xff\xff\xff\xff\xff\xff\xff\xff")}) {
        png.replace(16, 8, size);
        failure("lying.png", png);
    }
    // A bitmap's width and height stand at bytes 18 to 25, without any check.
    std::string bmp = test::textOf(*encodeImage(test::gradientPicture(4, 4), kUTTypeBMP));
    for (const std::string& size :
         {std::string(8, '\0'), std::string("\xff\xff\xff\x7f\xff\xff\xff\x7f"),
          std::string("\x60\xea\0\0\x60\xea\0\0", 8)}) {
        bmp.replace(18, 8, size);
        failure("lying.bmp", bmp);
    }
}

TEST_F(BadInput, APictureLargerThanTheLimit) {
    const Finished finished = render({folder_ / "good.png", "-o", out_, "--max-pixels", "500"});
    EXPECT_EQ(finished.exitCode, 1);
    EXPECT_THAT(finished.err, HasSubstr("good.png"));
}

TEST_F(BadInput, SettingsThatWouldTakeAllMemory) {
    const Finished finished =
        render({folder_ / "good.png", "-o", out_, "--perspective-width", "1e8"});
    EXPECT_EQ(finished.exitCode, 1);
    EXPECT_THAT(finished.err, HasSubstr("megapixels"));
    EXPECT_EQ(render({folder_ / "good.png", "-o", out_, "--perspective-height", "0"}).exitCode, 1);
    EXPECT_EQ(render({folder_ / "good.png", "-o", out_, "--offset", "3e38"}).exitCode, 1);
    EXPECT_FALSE(std::filesystem::exists(out_));
}

TEST_F(BadInput, MemoryThatIsNotThereEndsInAMessage) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer itself needs more address space";
#endif
    test::putPicture(folder_ / "large.png", 3000, 3000);
    const Finished finished = render({folder_ / "large.png", "-o", out_}, {}, [] {
        const rlimit limit = {100 << 20, 100 << 20};
        ::setrlimit(RLIMIT_AS, &limit);
    });
    EXPECT_EQ(finished.exitCode, 1) << finished.err;
    EXPECT_THAT(finished.err, HasSubstr("large.png"));
    EXPECT_FALSE(std::filesystem::exists(out_));
}

TEST_F(BadInput, AFolderAndAMissingFileAsPictures) {
    const Finished isFolder = render({folder_.path(), "-o", out_});
    EXPECT_EQ(isFolder.exitCode, 1);
    EXPECT_THAT(isFolder.err, HasSubstr(folder_.path() + ": "));
    const Finished missing = render({folder_ / "missing.png", "-o", out_});
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_THAT(missing.err, HasSubstr("No such file or directory"));
    const Finished nothing = render({"", "-o", out_});
    EXPECT_EQ(nothing.exitCode, 1);
}

TEST_F(BadInput, AFileThatMayNotBeRead) {
    ::chmod((folder_ / "good.png").c_str(), 0);
    ::chmod(folder_.path().c_str(), 0777);
    const Finished finished = render({folder_ / "good.png", "-o", out_}, {}, [] {
        if (::geteuid() == 0 && ::setuid(test::kNobody) != 0) ::_exit(126);
    });
    EXPECT_EQ(finished.exitCode, 1);
    EXPECT_THAT(finished.err, HasSubstr("good.png: Permission denied"));
}

TEST_F(BadInput, AnOutputFolderThatDoesNotExist) {
    const Finished finished = render({folder_ / "good.png", "-o", folder_ / "no/such/out.png"});
    EXPECT_EQ(finished.exitCode, 1);
    EXPECT_THAT(finished.err, HasSubstr("no/such/out.png: The folder does not exist"));
    EXPECT_EQ(render({folder_ / "good.png", "-o", folder_ / "missing/"}).exitCode, 1);
}

TEST_F(BadInput, AnOutputFolderThatMayNotBeWritten) {
    std::filesystem::create_directory(folder_ / "fixed");
    ::chmod((folder_ / "fixed").c_str(), 0555);
    ::chmod(folder_.path().c_str(), 0755);
    const Finished finished =
        render({folder_ / "good.png", "-o", folder_ / "fixed/out.png"}, {}, [] {
            if (::geteuid() == 0 && ::setuid(test::kNobody) != 0) ::_exit(126);
        });
    EXPECT_EQ(finished.exitCode, 1);
    EXPECT_THAT(finished.err, HasSubstr("fixed/out.png: Permission denied"));
}

TEST_F(BadInput, AFileInPlaceOfAnOutputFolder) {
    const Finished finished = render({folder_ / "good.png", "-o", folder_ / "good.png/out.png"});
    EXPECT_EQ(finished.exitCode, 1);
    EXPECT_THAT(finished.err, HasSubstr("Not a directory"));
}

TEST_F(BadInput, AnOutputFolderTakesTheResultUnderItsSaveName) {
    std::filesystem::create_directory(folder_ / "results");
    const Finished finished = render({folder_ / "good.png", "-o", folder_ / "results"});
    EXPECT_EQ(finished.exitCode, 0);
    EXPECT_EQ(finished.out, folder_ / "results/good Reflection.tiff\n");
}

TEST_F(BadInput, AFullDeviceAndALimitOnFileSizes) {
    const Finished device =
        render({folder_ / "good.png", "-o", "/dev/full", "--format", "png", "--force"});
    EXPECT_EQ(device.exitCode, 1);
    EXPECT_THAT(device.err, HasSubstr("/dev/full: No space left on device"));
    test::putFile(out_, "old");
    test::putPicture(folder_ / "good.png", 600, 400);
    const Finished limited =
        render({folder_ / "good.png", "-o", out_, "--force", "--compression", "0"}, {}, [] {
            // Enough for the decoder (960,000 bytes), not for the result (1,920,000).
            const rlimit limit = {1'500'000, RLIM_INFINITY};
            ::setrlimit(RLIMIT_FSIZE, &limit);
        });
    EXPECT_EQ(limited.exitCode, 1);
    EXPECT_THAT(limited.err, HasSubstr("out.png: File too large"));
    EXPECT_EQ(test::fileText(out_), "old");
    EXPECT_THAT(folder_.names(), ElementsAre("good.png", "out.png"));
}

TEST_F(BadInput, AFullDiskLeavesTheOldFileAndNothingElse) {
    std::filesystem::create_directory(folder_ / "disk");
    const std::string disk = folder_ / "disk";
    const std::string listing = folder_ / "listing";
    // A disk of 64 KB in a view of the file system that only the child has.
    const pid_t child = ::fork();
    if (child == 0) {
        const bool mounted =
            (::unshare(CLONE_NEWNS) == 0 || ::unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0) &&
            ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
            ::mount("tmpfs", disk.c_str(), "tmpfs", 0, "size=64k") == 0;
        if (!mounted) ::_exit(77);
        test::putFile(disk + "/out.tiff", "old");
        test::putPicture(folder_ / "large.png", 300, 300);  // 720,000 bytes as a raw TIFF
        const Finished finished = render(
            {folder_ / "large.png", "-o", disk + "/out.tiff", "--force", "--compression", "none"});
        std::string names;
        for (const auto& entry : std::filesystem::directory_iterator(disk)) {
            names += entry.path().filename().string() + " ";
        }
        test::putFile(listing, std::to_string(finished.exitCode) + " " + names +
                                   test::fileText(disk + "/out.tiff") + "\n" + finished.err);
        ::_exit(0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    if (WEXITSTATUS(status) == 77) GTEST_SKIP() << "a small disk cannot be mounted here";
    const std::string seen = test::fileText(listing);
    EXPECT_THAT(seen, testing::StartsWith("1 out.tiff old\n"));
    EXPECT_THAT(seen, HasSubstr("out.tiff: No space left on device"));
}

}  // namespace
}  // namespace skarnel
