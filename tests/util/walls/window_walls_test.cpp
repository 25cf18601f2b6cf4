#include "util/walls/window_walls.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>

#include "util/walls/in_child.h"

namespace skarnel {
namespace {

using ::testing::Contains;
using ::testing::Field;
using ::testing::Not;
namespace fs = std::filesystem;

auto changeBelow(const std::string& path) {
    return ::testing::AllOf(Field(&FileGrant::path, path),
                            Field(&FileGrant::access, FileAccess::Change));
}

TEST(WindowWalls, TheSystemsFoldersAreLeftOutAndAllOthersKeepTheirChanges) {
    char pattern[] = "/tmp/skarnel-root-XXXXXX";
    const fs::path root = ::mkdtemp(pattern);
    for (const char* name : {"etc", "usr", "bin", "lib64", "home", "tmp", "media", "data"}) {
        fs::create_directory(root / name);
    }
    const auto grants = windowGrants({}, root);
    for (const char* name : {"home", "tmp", "media", "data", "usr/local"}) {
        EXPECT_THAT(grants, Contains(changeBelow(root / name))) << name;
    }
    for (const char* name : {"etc", "usr", "bin", "lib64"}) {
        EXPECT_THAT(grants, Not(Contains(changeBelow(root / name)))) << name;
    }
    fs::remove_all(root);
}

TEST(WindowWalls, ChangingFilesIsNotTakenAwayWhereNothingCouldBeGrantedAgain) {
    const FileAccess both = FileAccess::Execute | FileAccess::Change;
    EXPECT_EQ(windowLoses(1000, "/"), both);
    EXPECT_EQ(windowLoses(0, "/"), FileAccess::Execute);
    EXPECT_EQ(windowLoses(1000, "/no/such/root"), FileAccess::Execute);
}

TEST(WindowWalls, OnlyTheNamedProgramsCanBeStarted) {
    if (landlockVersion() == 0) GTEST_SKIP() << "this kernel has no Landlock";
    const auto start = [](const char* program, const std::vector<std::string>& named) {
        return testing::exitStatusOfChild([&] {
            if (!raiseWindowWalls(named)) return 200;
            ::execl(program, program, static_cast<char*>(nullptr));
            return errno;
        });
    };
    EXPECT_EQ(start("/usr/bin/true", {"/usr/bin/true"}), 0);
    EXPECT_EQ(start("/usr/bin/true", {"/usr/bin/false"}), EACCES);
    EXPECT_EQ(start("/bin/sh", {"/usr/bin/true"}), EACCES);
}

TEST(WindowWalls, AnOrdinaryUserKeepsTheirFoldersAndLosesTheSystems) {
    if (landlockVersion() == 0) GTEST_SKIP() << "this kernel has no Landlock";
    const std::string kept = fs::temp_directory_path() / "skarnel-walls-kept";
    const auto tryToWrite = [&](const std::string& path) {
        return testing::exitStatusOfChild([&] {
            // The files' own permissions must not be what denies: the wall is raised for an
            // ordinary user, and the super-user's power over permissions is kept until then.
            const auto raised =
                restrictFileAccess(FileAccess::Execute | FileAccess::Change, windowGrants({}));
            if (!raised) return 200;
            const int file = ::open(path.c_str(), O_CREAT | O_WRONLY, 0600);
            return file >= 0 ? 0 : errno;
        });
    };
    EXPECT_EQ(tryToWrite(kept), 0);
    fs::remove(kept);
    EXPECT_EQ(tryToWrite("/usr/share/skarnel-walls-denied"), EACCES);
    EXPECT_EQ(tryToWrite("/etc/skarnel-walls-denied"), EACCES);
}

}  // namespace
}  // namespace skarnel
