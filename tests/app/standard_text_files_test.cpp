// Writing temporary files: exclusive, private, whole or reported.
#include "app/standard_text_files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "platform/attributed_text.h"
#include "storage/every_fault.h"
#include "storage/left_overs.h"
#include "storage/temporary_folder.h"
#include "util/log/system_error.h"
#include "util/log/system_log.h"

namespace skarnel {
namespace {

unsigned modeOf(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
}

TEST(StandardTextFiles, ANewFileIsForTheUserAloneWhateverTheMask) {
    const test::TemporaryFolder folder;
    const mode_t before = ::umask(0);
    const TextWriteOutcome outcome = StandardTextFiles().writeStringToFile(
        u"caf\u00E9", folder / "a.html", Atomically::No, kEncodingUTF8);
    ::umask(before);
    EXPECT_TRUE(outcome.written);
    EXPECT_FALSE(outcome.error);
    EXPECT_EQ(modeOf(folder / "a.html"), 0600U);
    EXPECT_EQ(test::fileText(folder / "a.html"), "caf\xC3\xA9");
}

TEST(StandardTextFiles, AFileThatIsThereIsReplacedAndKeepsItsPermissions) {
    const test::TemporaryFolder folder;
    test::putFile(folder / "a", "12345");
    ASSERT_EQ(::chmod((folder / "a").c_str(), 0640), 0);
    EXPECT_TRUE(StandardTextFiles().writeDataToFile(Bytes{'9'}, folder / "a", Atomically::No));
    EXPECT_EQ(test::fileText(folder / "a"), "9");
    EXPECT_EQ(modeOf(folder / "a"), 0640U);
}

TEST(StandardTextFiles, ALinkIsNeverFollowed) {
    const test::TemporaryFolder folder;
    test::putFile(folder / "victim", "victim");
    ASSERT_EQ(::symlink((folder / "victim").c_str(), (folder / "link").c_str()), 0);
    const ScopedLogCapture log;
    EXPECT_FALSE(StandardTextFiles().writeDataToFile(Bytes{'9'}, folder / "link", Atomically::No));
    EXPECT_EQ(test::fileText(folder / "victim"), "victim");
    EXPECT_NE(log.text().find("Couldn't write " + (folder / "link")), std::string::npos);
}

TEST(StandardTextFiles, AFolderThatIsNotThereIsAnErrorWithItsCause) {
    const test::TemporaryFolder folder;
    const ScopedLogCapture log;
    const TextWriteOutcome outcome = StandardTextFiles().writeStringToFile(
        u"a", folder / "no/such", Atomically::No, kEncodingUTF8);
    EXPECT_FALSE(outcome.written);
    ASSERT_TRUE(outcome.error);
    EXPECT_EQ(outcome.error->message, "No such file or directory");
}

TEST(StandardTextFiles, ATextThatTheEncodingCannotHoldIsAnErrorAndLeavesNoFile) {
    const test::TemporaryFolder folder;
    const TextWriteOutcome outcome = StandardTextFiles().writeStringToFile(
        u"\u4E2D", folder / "a", Atomically::No, kEncodingASCII);
    EXPECT_FALSE(outcome.written);
    EXPECT_TRUE(outcome.error);
    EXPECT_TRUE(folder.names().empty());
}

TEST(StandardTextFiles, AFailedWriteLeavesNoNewFileBehind) {
    const test::TemporaryFolder folder;
    const ScopedLogCapture log;
    for (const bool inWrite : {true, false}) {
        test::RefusingFileSystem failing({{inWrite ? "write" : "close", ENOSPC}});
        const TextWriteOutcome outcome = StandardTextFiles(failing).writeStringToFile(
            u"a", folder / "a", Atomically::No, kEncodingUTF8);
        EXPECT_FALSE(outcome.written);
        ASSERT_TRUE(outcome.error);
        EXPECT_EQ(outcome.error->message, "No space left on device");
        EXPECT_TRUE(folder.names().empty());
    }
}

const std::string kUntrimmed(5000, 'u');
const std::string kTrimmed(3000, 't');

/// The file as it was or as it shall be, whatever fails, and nothing beside it after a cleaning.
void failEveryCall(const std::string& before) {
    const auto write = [](const std::string& path, FileSystem& fileSystem) {
        return StandardTextFiles(fileSystem)
            .writeDataToFile(test::bytesOf(kTrimmed), path, Atomically::No);
    };
    const int calls = test::callsOf([&](FileSystem& healthy) {
        const test::TemporaryFolder folder;
        if (!before.empty()) test::putFile(folder / "page.tif", before);
        EXPECT_TRUE(write(folder / "page.tif", healthy));
    });
    ASSERT_GE(calls, 6);  // look, open, lock, write, close, rename
    test::forEachFault(calls, [&](const test::Fault& fault) {
        const test::TemporaryFolder folder;
        const std::string path = folder / "page.tif";
        if (!before.empty()) test::putFile(path, before);
        const ScopedLogCapture log;
        test::FaultyFileSystem faulty(fault.call, fault.error, fault.repeat);
        const bool written = write(path, faulty);
        const std::string old = before.empty() ? "(none)" : before;
        EXPECT_EQ(test::fileText(path), written ? kTrimmed : old);
        if (!written) {
            const int cause = fault.error > 0 ? fault.error : ENOSPC;
            EXPECT_EQ(log.text(), "Couldn't write " + path + ": " + describeError(cause) + "\n");
        }
        removeLeftOvers(folder.path());
        EXPECT_EQ(folder.names().size(), written || !before.empty() ? 1U : 0U);
    });
}

TEST(StandardTextFiles, WhicheverCallFailsAFileThatIsThereIsWhole) {
    failEveryCall(kUntrimmed);
}

TEST(StandardTextFiles, WhicheverCallFailsANewFileIsWholeOrNotThere) {
    failEveryCall("");
}

TEST(StandardTextFiles, OnAFileSystemWithoutLocksOrSomebodyElsesLockTheFileIsWritten) {
    const test::TemporaryFolder folder;
    for (const int error : {ENOLCK, EWOULDBLOCK}) {
        test::RefusingFileSystem noLocks({{"flock", error}});
        EXPECT_TRUE(
            StandardTextFiles(noLocks).writeDataToFile(Bytes{'4'}, folder / "a", Atomically::No));
    }
}

TEST(StandardTextFiles, AFolderInPlaceOfTheFileStays) {
    const test::TemporaryFolder folder;
    std::filesystem::create_directory(folder / "a");
    const ScopedLogCapture log;
    EXPECT_FALSE(StandardTextFiles().writeDataToFile(Bytes{'4'}, folder / "a", Atomically::No));
    EXPECT_NE(log.text().find("It is not an ordinary file"), std::string::npos);
    EXPECT_TRUE(std::filesystem::is_directory(folder / "a"));
    EXPECT_EQ(folder.names().size(), 1U);
}

TEST(StandardTextFiles, AtomicWritesReplaceTheFile) {
    const test::TemporaryFolder folder;
    test::putFile(folder / "a", "123");
    EXPECT_TRUE(StandardTextFiles().writeDataToFile(Bytes{'4'}, folder / "a", Atomically::Yes));
    EXPECT_EQ(test::fileText(folder / "a"), "4");
}

}  // namespace
}  // namespace skarnel
