#include "util/misc/find_folder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "util/string/nsstring_extensions.h"

namespace skarnel {
namespace {

namespace fs = std::filesystem;

/// Keeps the user's own folders out of the tests.
class FindFolder : public ::testing::Test {
  protected:
    void SetUp() override {
        std::string pattern = (fs::temp_directory_path() / "skarnel-folder-XXXXXX").string();
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        folder_ = fs::canonical(pattern);
        keep("HOME", home_);
        keep("XDG_DATA_HOME", dataHome_);
        setenv("HOME", folder_.c_str(), 1);
        unsetenv("XDG_DATA_HOME");
    }
    void TearDown() override {
        restore("HOME", home_);
        restore("XDG_DATA_HOME", dataHome_);
        fs::remove_all(folder_);
    }

    static std::string pathOf(const FSRef& reference) {
        return NSStringExtensions::stringWithFSRef(&reference).value_or(NSString()).description();
    }
    static OSStatus find(bool create, FSRef* reference) {
        return FSFindFolder(kUserDomain, kApplicationSupportFolderType, create, reference);
    }

    fs::path folder_;

  private:
    static void keep(const char* name, std::optional<std::string>& value) {
        if (const char* found = std::getenv(name)) value = found;
    }
    static void restore(const char* name, const std::optional<std::string>& value) {
        if (value)
            setenv(name, value->c_str(), 1);
        else
            unsetenv(name);
    }
    std::optional<std::string> home_;
    std::optional<std::string> dataHome_;
};

TEST_F(FindFolder, ApplicationSupportIsTheDataFolderOfTheHome) {
    FSRef reference;
    EXPECT_EQ(find(false, &reference), -43) << "it is not there yet";
    EXPECT_EQ(find(true, &reference), 0);
    EXPECT_EQ(pathOf(reference), (folder_ / ".local/share").string());
    EXPECT_EQ(find(false, &reference), 0);
}

TEST_F(FindFolder, AMissingFolderIsMadeForTheUserAlone) {
    FSRef reference;
    ASSERT_EQ(find(true, &reference), 0);
    for (const char* name : {".local", ".local/share"}) {
        struct stat status {};
        ASSERT_EQ(stat((folder_ / name).c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 0777, 0700U) << name;
    }
}

TEST_F(FindFolder, FollowsTheDataHomeWhereItIsAbsolute) {
    setenv("XDG_DATA_HOME", (folder_ / "data").c_str(), 1);
    FSRef reference;
    EXPECT_EQ(find(true, &reference), 0);
    EXPECT_EQ(pathOf(reference), (folder_ / "data").string());
    setenv("XDG_DATA_HOME", "relative", 1);
    EXPECT_EQ(find(true, &reference), 0);
    EXPECT_EQ(pathOf(reference), (folder_ / ".local/share").string());
}

TEST_F(FindFolder, KnowsNoOtherFolder) {
    FSRef reference{"before", 1, 2};
    EXPECT_EQ(FSFindFolder(-32766, kApplicationSupportFolderType, true, &reference), -43);
    EXPECT_EQ(FSFindFolder(kUserDomain, 0x6465736b, true, &reference), -43);  // 'desk'
    EXPECT_EQ(reference, (FSRef{"before", 1, 2}));
}

TEST_F(FindFolder, AFileInItsPlaceIsNoFolder) {
    std::ofstream(folder_ / "file") << "x";
    setenv("XDG_DATA_HOME", (folder_ / "file").c_str(), 1);
    FSRef reference;
    EXPECT_EQ(find(true, &reference), -43);
    EXPECT_FALSE(GetOurApplicationSupportFolder(reference));
}

TEST_F(FindFolder, HasThePlatformsNumbers) {
    EXPECT_EQ(kUserDomain, -32763);
    EXPECT_EQ(kApplicationSupportFolderType, 0x61737570U);
}

TEST_F(FindFolder, OurFolderIsMadeAndTheCallersReferenceStaysAsItWas) {
    FSRef reference{"before", 1, 2};
    EXPECT_TRUE(GetOurApplicationSupportFolder(reference));
    EXPECT_EQ(reference, (FSRef{"before", 1, 2}));
    EXPECT_TRUE(fs::is_directory(folder_ / ".local/share"));
    EXPECT_TRUE(GetOurApplicationSupportFolder(reference)) << "also when it exists";
}

TEST_F(FindFolder, OurFolderIsNotFoundWhereItCannotBeMade) {
    setenv("XDG_DATA_HOME", "/proc/none/data", 1);
    FSRef reference;
    EXPECT_FALSE(GetOurApplicationSupportFolder(reference));
}

TEST_F(FindFolder, OurFolderIsNotFoundWhereItsPathIsNoText) {
    const std::string path = (folder_ / "\xFF").string();
    if (mkdir(path.c_str(), 0700) != 0) GTEST_SKIP() << "the file system takes UTF-8 only";
    setenv("XDG_DATA_HOME", path.c_str(), 1);
    FSRef reference;
    EXPECT_EQ(find(false, &reference), 0) << "the folder is there";
    EXPECT_FALSE(GetOurApplicationSupportFolder(reference));
}

TEST_F(FindFolder, TheDisplayNameIsTheLastPartOfThePath) {
    std::ofstream(folder_ / "\xC3\xA9 photo.jpg") << "x";
    FSRef reference;
    ASSERT_EQ(FSPathMakeRef((folder_ / "\xC3\xA9 photo.jpg").c_str(), &reference, nullptr), 0);
    EXPECT_EQ(GetObjectDisplayName(reference), u"\u00E9 photo.jpg"_ns);
    ASSERT_EQ(FSPathMakeRef("/", &reference, nullptr), 0);
    EXPECT_EQ(GetObjectDisplayName(reference), u"/"_ns);
}

TEST_F(FindFolder, ThereIsNoDisplayNameOfWhatIsGone) {
    EXPECT_EQ(GetObjectDisplayName(FSRef{}), std::nullopt);
    FSRef reference;
    fs::create_directory(folder_ / "a");
    ASSERT_EQ(FSPathMakeRef((folder_ / "a").c_str(), &reference, nullptr), 0);
    fs::remove(folder_ / "a");
    EXPECT_EQ(GetObjectDisplayName(reference), std::nullopt);
}

}  // namespace
}  // namespace skarnel
