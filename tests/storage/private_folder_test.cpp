#include "storage/private_folder.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>

#include "storage/fake_file_systems.h"
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
    // Neighbours of the digits and letters: / cannot stand in a name.
    for (const char* name :
         {"skarnel-text-", "skarnel-text-abcde", "skarnel-text-abcd.f", "skarnel-text-abcd:f",
          "skarnel-text-abcd@f", "skarnel-text-abcd[f", "skarnel-text-abcd`f",
          "skarnel-text-abcd{f", "skarnel-test-abcdef", "other-text--abcdef"}) {
        std::filesystem::create_directory(parent_ / name);
    }
    test::putFile(parent_ / "skarnel-text-aFileX", "");
    std::filesystem::create_directory_symlink("skarnel-test-abcdef",
                                              parent_ / "skarnel-text-aLinkX");
    const PrivateFolder second;
    EXPECT_NE(living.path(), second.path());
    EXPECT_TRUE(std::filesystem::is_directory(living.path()));
    EXPECT_EQ(parent_.names().size(), 14U);
}

TEST_F(PrivateFolderTest, InAnotherDirectoryTakesAwayThoseOfItsOwnPrefixAlone) {
    const test::TemporaryFolder parent;
    for (const char* name :
         {"pasted-abcdef", "cached-abcdef", "skarnel-text-abcdef", "pasted-more.txt"})
        std::filesystem::create_directory(parent / name);
    const PrivateFolder living(parent.path(), "pasted-");
    EXPECT_TRUE(std::filesystem::path(living.path()).filename().string().starts_with("pasted-"));
    EXPECT_EQ(std::filesystem::path(living.path()).parent_path(), parent.path());
    EXPECT_FALSE(std::filesystem::exists(parent / "pasted-abcdef"));
    std::filesystem::create_directory(parent / "pasted-ABC123");
    removeAbandonedFolders(parent.path(), "pasted-");
    EXPECT_FALSE(std::filesystem::exists(parent / "pasted-ABC123"));
    EXPECT_TRUE(std::filesystem::exists(living.path()));
    EXPECT_TRUE(std::filesystem::exists(parent / "cached-abcdef"));  // as long as one of ours
    EXPECT_TRUE(std::filesystem::exists(parent / "skarnel-text-abcdef"));
    EXPECT_TRUE(std::filesystem::exists(parent / "pasted-more.txt"));
}

TEST_F(PrivateFolderTest, WithoutATemporaryDirectoryThereIsNone) {
    ::setenv("TMPDIR", (parent_ / "missing").c_str(), 1);
    EXPECT_EQ(PrivateFolder().path(), "");
    ::setenv("TMPDIR", "/proc", 1);
    EXPECT_EQ(PrivateFolder().path(), "");
}

TEST_F(PrivateFolderTest, EveryKindOfCharacterOfAnAbandonedNameIsKnown) {
    std::filesystem::create_directory(parent_ / "skarnel-text-09azAZ");
    const PrivateFolder folder;
    EXPECT_FALSE(std::filesystem::exists(parent_ / "skarnel-text-09azAZ"));
}

TEST_F(PrivateFolderTest, AParentThatCannotBeListedIsUsedAllTheSame) {
    std::filesystem::create_directory(parent_ / "skarnel-text-abcdef");
    test::RefusingFileSystem refusing({{"list", EACCES}});
    const PrivateFolder folder(refusing);
    EXPECT_NE(folder.path(), "");
    EXPECT_EQ(parent_.names().size(), 2U);
}

TEST_F(PrivateFolderTest, AFolderThatCannotBeMadeSureOfIsNeitherUsedNorLeft) {
    for (const char* call : {"open", "flock", "fstat", "lstat"}) {
        test::RefusingFileSystem refusing({{call, EIO}});
        const PrivateFolder folder(refusing);
        EXPECT_EQ(folder.path(), "") << call;
        EXPECT_EQ(refusing.count(call), 8) << call;
        EXPECT_THAT(parent_.names(), IsEmpty()) << call;
    }
}

/// Changes what the system tells about files.
class LyingFileSystem final : public test::InterceptedFileSystem {
  public:
    int otherOwners = 0;  // how many of the next looks at a descriptor show another user's file
    int otherFiles = 0;   // how many of the next looks at a name show another file

  private:
    int before(const std::string&, const std::string&) override { return 0; }
    int fstat(int descriptor, struct stat& status) override {
        const int result = real_.fstat(descriptor, status);
        if (otherOwners-- > 0) ++status.st_uid;
        return result;
    }
    int lstat(const char* path, struct stat& status) override {
        const int result = real_.lstat(path, status);
        if (otherFiles-- > 0) ++status.st_ino;
        return result;
    }
};

TEST_F(PrivateFolderTest, AnotherUsersFolderStaysThoughNobodyHoldsIt) {
    std::filesystem::create_directory(parent_ / "skarnel-text-abcdef");
    LyingFileSystem lying;
    lying.otherOwners = 1;
    const PrivateFolder folder(lying);
    EXPECT_TRUE(std::filesystem::exists(parent_ / "skarnel-text-abcdef"));
    EXPECT_EQ(parent_.names().size(), 2U);
}

TEST_F(PrivateFolderTest, AFolderThatAnotherProgramTookAwayIsTriedAnew) {
    LyingFileSystem lying;
    lying.otherFiles = 7;
    const PrivateFolder folder(lying);
    EXPECT_NE(folder.path(), "");
    EXPECT_EQ(parent_.names().size(), 1U);
    lying.otherFiles = 8;
    EXPECT_EQ(PrivateFolder(lying).path(), "");
    EXPECT_EQ(parent_.names().size(), 1U);
}

}  // namespace
}  // namespace skarnel
