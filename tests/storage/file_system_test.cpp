#include "storage/file_system.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "storage/temporary_folder.h"

namespace skarnel {
namespace {

TEST(FileSystem, AFailureIsTheNegativeErrorNumber) {
    FileSystem& system = systemFileSystem();
    constexpr int kNone = -1;
    struct stat status = {};
    std::string target;
    std::vector<std::string> names;
    EXPECT_EQ(system.open("", O_RDONLY, 0), -ENOENT);
    EXPECT_EQ(system.close(kNone), -EBADF);
    EXPECT_EQ(system.fstat(kNone, status), -EBADF);
    EXPECT_EQ(system.setBlocking(kNone), -EBADF);
    EXPECT_EQ(system.readlink("/", target), -EINVAL);
    EXPECT_EQ(system.list("/no/such/folder", names), -ENOENT);
}

TEST(FileSystem, ADescriptorIsMadeToBlock) {
    int ends[2];
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC | O_NONBLOCK), 0);
    EXPECT_EQ(systemFileSystem().setBlocking(ends[0]), 0);
    EXPECT_EQ(::fcntl(ends[0], F_GETFL) & O_NONBLOCK, 0);
    EXPECT_EQ(::fcntl(ends[1], F_GETFL) & O_NONBLOCK, O_NONBLOCK);
    ::close(ends[0]);
    ::close(ends[1]);
}

TEST(Uninterrupted, GivesUpAfterAHundredTries) {
    int calls = 0;
    EXPECT_EQ(uninterrupted([&] { return ++calls < 3 ? -EINTR : 7; }), 7);
    EXPECT_EQ(calls, 3);
    calls = 0;
    EXPECT_EQ(uninterrupted([&] { return ++calls, -EINTR; }), -EINTR);
    EXPECT_EQ(calls, 100);
    calls = 0;
    EXPECT_EQ(uninterrupted([&] { return ++calls, -EIO; }), -EIO);
    EXPECT_EQ(calls, 1);
}

}  // namespace
}  // namespace skarnel
