// Writing temporary files: exclusive, private, whole or reported.
#include "app/standard_text_files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/attributed_text.h"
#include "storage/temporary_folder.h"
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

TEST(StandardTextFiles, AFileThatIsThereIsWrittenOverInPlaceAndKeepsItsPermissions) {
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

/// The operating system with one call that fails.
class FailingWrites final : public FileSystem {
  public:
    int open(const char* path, int flags, mode_t mode) override {
        return real().open(path, flags, mode);
    }
    int close(int descriptor) override {
        const int result = real().close(descriptor);
        return closeError != 0 ? -closeError : result;
    }
    ssize_t read(int d, void* bytes, std::size_t n) override { return real().read(d, bytes, n); }
    ssize_t write(int d, const void* bytes, std::size_t n) override {
        return writeError != 0 ? -writeError : real().write(d, bytes, n);
    }
    int fsync(int d) override { return real().fsync(d); }
    int fstat(int d, struct stat& s) override { return real().fstat(d, s); }
    int fchmod(int d, mode_t m) override { return real().fchmod(d, m); }
    int fchown(int d, uid_t u, gid_t g) override { return real().fchown(d, u, g); }
    int flock(int d, int o) override { return real().flock(d, o); }
    int setBlocking(int d) override { return real().setBlocking(d); }
    int stat(const char* p, struct stat& s) override { return real().stat(p, s); }
    int lstat(const char* p, struct stat& s) override { return real().lstat(p, s); }
    int canWrite(const char* p) override { return real().canWrite(p); }
    int readlink(const char* p, std::string& t) override { return real().readlink(p, t); }
    int list(const char* f, std::vector<std::string>& n) override { return real().list(f, n); }
    int mkdir(const char* p, mode_t m) override { return real().mkdir(p, m); }
    int link(const char* a, const char* b) override { return real().link(a, b); }
    int unlink(const char* p) override { return real().unlink(p); }
    int rename(const char* a, const char* b) override { return real().rename(a, b); }
    int renameNoReplace(const char* a, const char* b) override {
        return real().renameNoReplace(a, b);
    }
    mode_t umask() override { return real().umask(); }
    void pause(std::chrono::milliseconds time) override { real().pause(time); }

    int writeError = 0;
    int closeError = 0;

  private:
    static FileSystem& real() { return systemFileSystem(); }
};

TEST(StandardTextFiles, AFailedWriteLeavesNoNewFileBehind) {
    const test::TemporaryFolder folder;
    const ScopedLogCapture log;
    for (const bool inWrite : {true, false}) {
        FailingWrites failing;
        (inWrite ? failing.writeError : failing.closeError) = ENOSPC;
        const TextWriteOutcome outcome = StandardTextFiles(failing).writeStringToFile(
            u"a", folder / "a", Atomically::No, kEncodingUTF8);
        EXPECT_FALSE(outcome.written);
        ASSERT_TRUE(outcome.error);
        EXPECT_EQ(outcome.error->message, "No space left on device");
        EXPECT_TRUE(folder.names().empty());
    }
}

TEST(StandardTextFiles, AtomicWritesReplaceTheFile) {
    const test::TemporaryFolder folder;
    test::putFile(folder / "a", "123");
    EXPECT_TRUE(StandardTextFiles().writeDataToFile(Bytes{'4'}, folder / "a", Atomically::Yes));
    EXPECT_EQ(test::fileText(folder / "a"), "4");
}

}  // namespace
}  // namespace skarnel
