// The permissions of a new file: what the process's mask leaves, also where nothing tells it.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "storage/fake_file_systems.h"
#include "storage/safe_file.h"
#include "storage/temporary_folder.h"
#include "util/walls/without_proc.h"

namespace skarnel {
namespace {

using test::bytesOf;
using test::TemporaryFolder;

constexpr mode_t kMasks[] = {0077, 0027, 0022, 0};

mode_t modeOf(const std::string& path) {
    struct stat status = {};
    return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
}

bool writeNew(const std::string& path, FileSystem& fileSystem) {
    return bool(writeFileSafely(path, bytesOf("x"), Overwrite::Refuse, fileSystem));
}

bool replace(const std::string& path, FileSystem& fileSystem) {
    return bool(writeFileSafely(path, bytesOf("x"), Overwrite::Allow, fileSystem));
}

/// A new file gets what each mask leaves, and a replaced one keeps what it has.
void expectTheMaskHolds(FileSystem& fileSystem) {
    for (const mode_t mask : kMasks) {
        SCOPED_TRACE(mask);
        const TemporaryFolder folder;
        test::putFile(folder / "old", "old");
        ASSERT_EQ(::chmod((folder / "old").c_str(), 0604), 0);
        const mode_t before = ::umask(mask);
        const bool made = writeNew(folder / "new", fileSystem);
        const bool replaced = replace(folder / "old", fileSystem);
        ::umask(before);
        ASSERT_TRUE(made && replaced);
        EXPECT_EQ(modeOf(folder / "new"), 0666 & ~mask);
        EXPECT_EQ(modeOf(folder / "old"), 0604U);
        EXPECT_EQ(folder.names().size(), 2U);
    }
}

TEST(FileMask, HoldsForANewFile) {
    expectTheMaskHolds(systemFileSystem());
}

TEST(FileMask, HoldsWhereNothingTellsIt) {
    class WithoutReports final : public test::InterceptedFileSystem {
        int before(const std::string&, const std::string&) override { return 0; }
        std::optional<mode_t> umask() override { return std::nullopt; }
    } fileSystem;
    expectTheMaskHolds(fileSystem);
}

/// What the child of the test below tells.
enum Outcome : int { Written, NotWritten, CannotBeTried };

Outcome writeWithoutProc(const TemporaryFolder& folder) {
    ::umask(077);
    if (!test::hideProc()) return CannotBeTried;
    // Who is mapped to nobody may not make any file.
    const std::string probe = folder / "probe";
    const int descriptor = ::open(probe.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
    if (descriptor < 0) return CannotBeTried;
    ::unlink(probe.c_str());
    return writeNew(folder / "new", systemFileSystem()) ? Written : NotWritten;
}

TEST(FileMask, HoldsInASystemWithoutProc) {
    const TemporaryFolder folder;
    const pid_t child = ::fork();
    if (child == 0) ::_exit(writeWithoutProc(folder));
    int status = -1;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    if (WEXITSTATUS(status) == CannotBeTried) GTEST_SKIP() << "/proc cannot be hidden here";
    ASSERT_EQ(WEXITSTATUS(status), Written);
    EXPECT_EQ(modeOf(folder / "new"), 0600U);
}

}  // namespace
}  // namespace skarnel
