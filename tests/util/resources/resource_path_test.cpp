#include "util/resources/resource_path.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace skarnel {
namespace {

namespace fs = std::filesystem;
using ::testing::EndsWith;

/// Two folders, "first" and "second", under a fresh one that goes away at the end.
class ResourcePath : public ::testing::Test {
  protected:
    ResourcePath() {
        std::string pattern = (fs::temp_directory_path() / "resource-path-XXXXXX").string();
        root = ::mkdtemp(pattern.data());
        fs::create_directories(root / "first");
        fs::create_directories(root / "second" / "icons");
    }
    ~ResourcePath() override { fs::remove_all(root); }

    void put(const std::string& name) const { std::ofstream(root / name) << "x"; }

    [[nodiscard]] std::vector<std::string> folders() const {
        return {(root / "first").string(), (root / "second").string()};
    }

    fs::path root;
};

TEST_F(ResourcePath, TheFirstFolderThatHasTheFileWins) {
    put("first/a.png");
    put("second/a.png");
    EXPECT_EQ(findResource("a.png", folders()), (root / "first/a.png").string());
}

TEST_F(ResourcePath, LaterFoldersAreAskedToo) {
    put("second/icons/open.svg");
    EXPECT_EQ(findResource("icons/open.svg", folders()), (root / "second/icons/open.svg").string());
}

TEST_F(ResourcePath, AFileThatIsNowhereGivesNone) {
    EXPECT_EQ(findResource("a.png", folders()), std::nullopt);
}

TEST_F(ResourcePath, AFolderIsNoResource) {
    EXPECT_EQ(findResource("icons", folders()), std::nullopt);
}

TEST_F(ResourcePath, NamesThatAreEmptyAbsoluteOrLeadOutGiveNone) {
    put("first/a.png");
    EXPECT_EQ(findResource("", folders()), std::nullopt);
    EXPECT_EQ(findResource((root / "first/a.png").string(), folders()), std::nullopt);
    EXPECT_EQ(findResource("../first/a.png", folders()), std::nullopt);
}

TEST_F(ResourcePath, TheEnvironmentIsAskedFirst) {
    ::setenv("SKARNEL_RESOURCES", "/chosen/folder", 1);
    EXPECT_EQ(resourceFolders().front(), "/chosen/folder");
    ::setenv("SKARNEL_RESOURCES", "", 1);
    EXPECT_THAT(resourceFolders().front(), EndsWith("/share/skarnel"));
    ::unsetenv("SKARNEL_RESOURCES");
    EXPECT_THAT(resourceFolders().front(), EndsWith("/share/skarnel"));
}

}  // namespace
}  // namespace skarnel
