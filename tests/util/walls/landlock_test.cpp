#include "util/walls/landlock.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>

#include "util/walls/in_child.h"

namespace skarnel {
namespace {

using testing::exitStatusOfChild;
namespace fs = std::filesystem;

class Landlock : public ::testing::Test {
  protected:
    void SetUp() override {
        if (landlockVersion() == 0) GTEST_SKIP() << "this kernel has no Landlock";
        char pattern[] = "/tmp/skarnel-walls-XXXXXX";
        root_ = ::mkdtemp(pattern);
        fs::create_directory(root_ / "open");
        fs::create_directory(root_ / "closed");
        std::ofstream(root_ / "closed/file") << "kept";
        std::ofstream(root_ / "open/file") << "kept";
    }
    void TearDown() override {
        if (!root_.empty()) fs::remove_all(root_);
    }
    fs::path root_;
};

int errorOf(int result) {
    return result >= 0 ? 0 : errno;
}

TEST_F(Landlock, ChangesAreDeniedEverywhereButBelowAGrant) {
    const auto act = [&](const std::function<int()>& change) {
        return exitStatusOfChild([&] {
            if (!restrictFileAccess(FileAccess::Change, {{root_ / "open", FileAccess::Change}})) {
                return 200;
            }
            return errorOf(change());
        });
    };
    const std::string closedFile = root_ / "closed/file";
    const std::string openFile = root_ / "open/file";
    const std::string moved = root_ / "open/moved";
    EXPECT_EQ(act([&] { return ::open(closedFile.c_str(), O_WRONLY); }), EACCES);
    EXPECT_EQ(act([&] { return ::truncate(closedFile.c_str(), 0); }), EACCES);
    EXPECT_EQ(act([&] { return ::unlink(closedFile.c_str()); }), EACCES);
    EXPECT_EQ(act([&] { return ::mkdir((root_ / "closed/new").c_str(), 0700); }), EACCES);
    EXPECT_EQ(act([&] { return ::open((root_ / "closed/new").c_str(), O_CREAT | O_WRONLY, 0600); }),
              EACCES);
    EXPECT_EQ(act([&] { return ::open(openFile.c_str(), O_WRONLY); }), 0);
    EXPECT_EQ(act([&] { return ::rename(openFile.c_str(), moved.c_str()); }), 0);
    EXPECT_TRUE(fs::exists(closedFile));
    EXPECT_EQ(fs::file_size(closedFile), 4U);
}

TEST_F(Landlock, WhatIsNotTakenAwayStays) {
    EXPECT_EQ(exitStatusOfChild([&] {
                  if (!restrictFileAccess(FileAccess::Change, {})) return 200;
                  return errorOf(::open((root_ / "closed/file").c_str(), O_RDONLY));
              }),
              0);
}

TEST_F(Landlock, ReadingCanBeTakenAwayToo) {
    EXPECT_EQ(exitStatusOfChild([&] {
                  if (!restrictFileAccess(FileAccess::Read, {})) return 200;
                  return errorOf(::open((root_ / "closed/file").c_str(), O_RDONLY));
              }),
              EACCES);
}

TEST_F(Landlock, AProgramThatIsNotGrantedCannotBeStarted) {
    EXPECT_EQ(exitStatusOfChild([] {
                  if (!restrictFileAccess(FileAccess::Execute, {})) return 200;
                  ::execl("/bin/true", "true", static_cast<char*>(nullptr));
                  return errno;
              }),
              EACCES);
}

TEST_F(Landlock, AGrantThatDoesNotExistIsPassedOver) {
    EXPECT_EQ(exitStatusOfChild([] {
                  const auto raised = restrictFileAccess(FileAccess::Change,
                                                         {{"/no/such/place", FileAccess::Change}});
                  return raised ? 0 : 1;
              }),
              0);
}

TEST_F(Landlock, NoNewPrivilegesIsSet) {
    EXPECT_EQ(exitStatusOfChild([] {
                  if (!restrictFileAccess(FileAccess::Execute, {})) return 200;
                  return ::prctl(PR_GET_NO_NEW_PRIVS, 0, 0, 0, 0);
              }),
              1);
}

}  // namespace
}  // namespace skarnel
