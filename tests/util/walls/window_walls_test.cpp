#include "util/walls/window_walls.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pwd.h>

#include <algorithm>
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
    const auto grants = windowGrants({}, {}, root);
    for (const char* name : {"home", "tmp", "media", "data", "usr/local"}) {
        EXPECT_THAT(grants, Contains(changeBelow(root / name))) << name;
    }
    for (const char* name : {"etc", "usr", "bin", "lib64"}) {
        EXPECT_THAT(grants, Not(Contains(changeBelow(root / name)))) << name;
    }
    fs::remove_all(root);
}

TEST(WindowWalls, AHomeAmongTheSystemsFoldersKeepsItsChanges) {
    char pattern[] = "/tmp/skarnel-root-XXXXXX";
    const fs::path root = fs::canonical(::mkdtemp(pattern));
    fs::create_directories(root / "usr/people/somebody");
    fs::create_directories(root / "usr/share");
    fs::create_directories(root / "home/me");
    fs::create_directory_symlink(root / "usr/people", root / "home/people");
    const auto grantsOf = [&](const fs::path& own) { return windowGrants({}, {own}, root); };
    const auto home = changeBelow(root / "usr/people/somebody");
    EXPECT_THAT(grantsOf(root / "usr/people/somebody"), Contains(home));
    EXPECT_THAT(grantsOf(root / "usr/people/somebody/.config/none"), Contains(home));
    EXPECT_THAT(grantsOf(root / "home/people/somebody"), Contains(home)) << "by way of a link";
    const std::size_t without = windowGrants({}, {}, root).size();
    for (const fs::path& other :
         {root, root / "usr", root / "etc/none", root / "home/me", fs::path("/"), fs::path("/usr"),
          fs::path("usr/people"), fs::path()})
        EXPECT_EQ(grantsOf(other).size(), without) << other;
    fs::remove_all(root);
}

TEST(WindowWalls, OwnFoldersAreTheAccountsAndTheSurroundings) {
    const auto status = testing::exitStatusOfChild([] {
        ::setenv("HOME", "/usr/people/somebody", 1);
        ::setenv("XDG_STATE_HOME", "/etc/state", 1);
        ::unsetenv("XDG_CACHE_HOME");
        const auto own = ownFolders();
        const auto has = [&](const char* folder) { return std::ranges::count(own, folder) != 0; };
        const passwd* const account = ::getpwuid(::geteuid());
        return has("/usr/people/somebody") && has("/etc/state") &&
                       (account == nullptr || has(account->pw_dir))
                   ? 0
                   : 1;
    });
    EXPECT_EQ(status, 0);
}

TEST(WindowWalls, SettingsAreKeptInAHomeAmongTheSystemsFolders) {
    if (landlockVersion() == 0) GTEST_SKIP() << "this kernel has no Landlock";
    const fs::path folder = "/usr/share/skarnel-walls-home";
    std::error_code denied;
    if (!fs::create_directory(folder, denied)) GTEST_SKIP() << "only for who may write there";
    const auto status = testing::exitStatusOfChild([&] {
        ::setenv("HOME", folder.c_str(), 1);
        const auto raised = restrictFileAccess(FileAccess::Execute | FileAccess::Change,
                                               windowGrants({}, ownFolders()));
        if (!raised) return 200;
        const int file = ::open((folder / "settings").c_str(), O_CREAT | O_WRONLY, 0600);
        return file >= 0 ? 0 : errno;
    });
    fs::remove_all(folder);
    EXPECT_EQ(status, 0);
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
