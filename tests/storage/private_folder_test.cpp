#include "storage/private_folder.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>

#include "storage/temporary_folder.h"

namespace skarnel {
namespace {

using test::TemporaryFolder;
using testing::ElementsAre;
using testing::IsEmpty;

class PrivateFolderTest : public testing::Test {
  protected:
    PrivateFolderTest() { ::setenv("TMPDIR", parent_.path().c_str(), 1); }
    ~PrivateFolderTest() override { ::unsetenv("TMPDIR"); }

    const TemporaryFolder parent_;
};

TEST_F(PrivateFolderTest, IsTheUsersAloneAndGoesWithAllThatIsInIt) {
    {
        const PrivateFolder folder;
        struct stat status = {};
        ASSERT_EQ(::stat(folder.path().c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, 0700U);
        std::filesystem::create_directory(folder.path() + "/inner");
        test::putFile(folder.path() + "/inner/file", "x");
        EXPECT_EQ(parent_.names().size(), 1U);
    }
    EXPECT_THAT(parent_.names(), IsEmpty());
}

TEST_F(PrivateFolderTest, TakesAwayWhatAKilledProgramLeft) {
    const pid_t child = ::fork();
    if (child == 0) {
        const PrivateFolder folder;
        test::putFile(folder.path() + "/text1.html", "secret");
        ::_exit(folder.path().empty() ? 1 : 0);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_EQ(status, 0);
    ASSERT_EQ(parent_.names().size(), 1U);
    const PrivateFolder folder;
    EXPECT_EQ(parent_.names().size(), 1U);
    EXPECT_EQ(parent_ / parent_.names().front(), folder.path());
}

TEST_F(PrivateFolderTest, LeavesTheLivingAndTheForeignAlone) {
    const PrivateFolder living;
    for (const char* name : {"skarnel-text-", "skarnel-text-abcde", "skarnel-text-abcd.f",
                             "skarnel-test-abcdef", "other-text--abcdef"}) {
        std::filesystem::create_directory(parent_ / name);
    }
    test::putFile(parent_ / "skarnel-text-aFileX", "");
    std::filesystem::create_directory_symlink("skarnel-test-abcdef",
                                              parent_ / "skarnel-text-aLinkX");
    const PrivateFolder second;
    EXPECT_NE(living.path(), second.path());
    EXPECT_TRUE(std::filesystem::is_directory(living.path()));
    EXPECT_EQ(parent_.names().size(), 9U);
}

TEST_F(PrivateFolderTest, WithoutATemporaryDirectoryThereIsNone) {
    ::setenv("TMPDIR", (parent_ / "missing").c_str(), 1);
    EXPECT_EQ(PrivateFolder().path(), "");
    ::setenv("TMPDIR", "/proc", 1);
    EXPECT_EQ(PrivateFolder().path(), "");
}

}  // namespace
}  // namespace skarnel
