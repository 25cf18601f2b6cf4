// The permissions of a new file: what the process's mask leaves, or what the folder's access list
// says of new files.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <vector>

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

bool writeNew(const std::string& path) {
    return bool(writeFileSafely(path, bytesOf("x"), Overwrite::Refuse));
}

bool replace(const std::string& path) {
    return bool(writeFileSafely(path, bytesOf("x"), Overwrite::Allow));
}

TEST(FileMask, HoldsForANewFileAndAReplacedOneKeepsWhatItHas) {
    for (const mode_t mask : kMasks) {
        SCOPED_TRACE(mask);
        const TemporaryFolder folder;
        test::putFile(folder / "old", "old");
        ASSERT_EQ(::chmod((folder / "old").c_str(), 0604), 0);
        const mode_t before = ::umask(mask);
        const bool made = writeNew(folder / "new");
        const bool replaced = replace(folder / "old");
        ::umask(before);
        ASSERT_TRUE(made && replaced);
        EXPECT_EQ(modeOf(folder / "new"), 0666 & ~mask);
        EXPECT_EQ(modeOf(folder / "old"), 0604U);
        EXPECT_EQ(folder.names().size(), 2U);
    }
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
    return writeNew(folder / "new") ? Written : NotWritten;
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

/// The folder says of its new files: the user and one group may read and write, nobody else may
/// do anything.
bool shareWithAGroup(const TemporaryFolder& folder) {
    struct Entry {
        std::uint16_t tag;
        std::uint16_t permissions;
        std::uint32_t who;
    };
    constexpr std::uint32_t kNobodyInParticular = 0xFFFFFFFF;
    const struct {
        std::uint32_t version = 2;
        Entry entries[5] = {{0x01, 6, kNobodyInParticular},   // the owner
                            {0x04, 0, kNobodyInParticular},   // the owner's group
                            {0x08, 6, 4712},                  // one group by its number
                            {0x10, 6, kNobodyInParticular},   // the most that groups may do
                            {0x20, 0, kNobodyInParticular}};  // all others
    } list;
    return ::setxattr(folder.path().c_str(), "system.posix_acl_default", &list, sizeof list, 0) ==
           0;
}

TEST(FileMask, GivesWayToTheAccessListOfTheFolder) {
    const TemporaryFolder folder;
    if (!shareWithAGroup(folder)) GTEST_SKIP() << "no access lists on this file system";
    const mode_t before = ::umask(022);
    const bool made = writeNew(folder / "new");
    test::putFile(folder / "by an ordinary write", "x");
    ::umask(before);
    ASSERT_TRUE(made);
    EXPECT_EQ(modeOf(folder / "by an ordinary write"), 0660U);
    EXPECT_EQ(modeOf(folder / "new"), 0660U) << "the group's bits are the most that groups may do";
}

}  // namespace
}  // namespace skarnel
