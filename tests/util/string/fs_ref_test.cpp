#include "util/string/fs_ref.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <fstream>

namespace skarnel {
namespace {

namespace fs = std::filesystem;

class FSRefTest : public ::testing::Test {
  protected:
    void SetUp() override {
        std::string pattern = (fs::temp_directory_path() / "skarnel-fsref-XXXXXX").string();
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        folder_ = fs::canonical(pattern);
    }
    void TearDown() override { fs::remove_all(folder_); }

    std::string make(const std::string& name) {
        std::ofstream(folder_ / name) << "x";
        return (folder_ / name).string();
    }

    fs::path folder_;
};

TEST_F(FSRefTest, NamesAnExistingItemByItsResolvedPath) {
    const std::string path = make("a");
    fs::create_symlink(path, folder_ / "link");
    FSRef direct;
    FSRef linked;
    bool isDirectory = true;
    EXPECT_EQ(FSPathMakeRef(path.c_str(), &direct, &isDirectory), 0);
    EXPECT_FALSE(isDirectory);
    EXPECT_EQ(FSPathMakeRef((folder_ / "." / "link").c_str(), &linked, nullptr), 0);
    EXPECT_EQ(direct, linked);
    std::array<char, 4098> buffer;
    EXPECT_EQ(FSRefMakePath(linked, buffer.data(), buffer.size()), 0);
    EXPECT_EQ(std::string(buffer.data()), path);
}

TEST_F(FSRefTest, KnowsAFolder) {
    FSRef reference;
    bool isDirectory = false;
    EXPECT_EQ(FSPathMakeRef(folder_.c_str(), &reference, &isDirectory), 0);
    EXPECT_TRUE(isDirectory);
}

TEST_F(FSRefTest, AMissingItemChangesNothing) {
    FSRef reference{"before", 1, 2};
    bool isDirectory = true;
    EXPECT_EQ(FSPathMakeRef((folder_ / "none").c_str(), &reference, &isDirectory), -43);
    EXPECT_EQ(FSPathMakeRef("", &reference, &isDirectory), -43);
    EXPECT_EQ(reference, (FSRef{"before", 1, 2}));
    EXPECT_TRUE(isDirectory);
}

TEST_F(FSRefTest, AnItemThatIsGoneOrReplacedHasNoPath) {
    const std::string path = make("a");
    FSRef reference;
    ASSERT_EQ(FSPathMakeRef(path.c_str(), &reference, nullptr), 0);
    std::array<char, 4098> buffer;
    fs::rename(path, folder_ / "kept");
    EXPECT_EQ(FSRefMakePath(reference, buffer.data(), buffer.size()), -43);
    make("a");
    EXPECT_EQ(FSRefMakePath(reference, buffer.data(), buffer.size()), -43)
        << "another file has come to stand there";
    EXPECT_EQ(FSRefMakePath(FSRef{}, buffer.data(), buffer.size()), -43);
}

TEST_F(FSRefTest, APathThatDoesNotFitWithItsZeroIsRefused) {
    const std::string path = make("a");
    FSRef reference;
    ASSERT_EQ(FSPathMakeRef(path.c_str(), &reference, nullptr), 0);
    std::vector<char> buffer(path.size() + 1, '!');
    EXPECT_EQ(FSRefMakePath(reference, buffer.data(), path.size()), -2110);
    EXPECT_EQ(buffer[0], '!');
    EXPECT_EQ(FSRefMakePath(reference, buffer.data(), path.size() + 1), 0);
}

}  // namespace
}  // namespace skarnel
