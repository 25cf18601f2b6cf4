// Opening and reading files, pipes and what only looks like a file.
#include "imaging/io/read_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <thread>
#include <utility>

#include "imaging/io/pictures.h"

namespace skarnel {
namespace {

using namespace skarnel::testing;

/// Gone, with what lies in it, at the end of the test.
class Folder {
  public:
    Folder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "readXXXXXX").string();
        path_ = ::mkdtemp(pattern.data());
    }
    ~Folder() { std::filesystem::remove_all(path_); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    std::string path(const char* name) const { return (path_ / name).string(); }

  private:
    std::filesystem::path path_;
};

TEST(OpenPicture, TellsWhatIsNotThereFromWhatIsNoFile) {
    const Folder folder;
    std::ofstream(folder.path("file")) << "x";
    EXPECT_TRUE(io::openPicture(folder.path("file")));
    ASSERT_EQ(::mkfifo(folder.path("pipe").c_str(), 0600), 0);
    std::filesystem::create_symlink("loop", folder.path("loop"));
    for (const auto& [path, code] : {
             std::pair{folder.path("none"), ErrorCode::NotFound},
             std::pair{folder.path("file/below"), ErrorCode::NotFound},
             std::pair{folder.path("loop"), ErrorCode::CannotRead},
             std::pair{folder.path("."), ErrorCode::CannotRead},
             std::pair{folder.path("pipe"), ErrorCode::CannotRead},
             std::pair{std::string("/dev/null"), ErrorCode::CannotRead},
         }) {
        const auto opened = io::openPicture(path);
        ASSERT_FALSE(opened) << path;
        EXPECT_EQ(opened.error().code, code) << path;
    }
}

io::FileDescriptor memoryFile(const Bytes& bytes) {
    io::FileDescriptor file(::memfd_create("test", MFD_CLOEXEC));
    EXPECT_EQ(::pwrite(file.number(), bytes.data(), bytes.size(), 0),
              static_cast<ssize_t>(bytes.size()));
    return file;
}

/// The first bytes of a BMP, then as many more as asked for.
Bytes longBytes(std::size_t size) {
    Bytes bytes(size);
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<std::uint8_t>(i * 7 + i / 1000);
    bytes[0] = 'B';
    bytes[1] = 'M';
    return bytes;
}

TEST(ReadAll, OfAFileBeginsWhereItStands) {
    const Bytes bytes = longBytes(200);
    const io::FileDescriptor file = memoryFile(bytes);
    EXPECT_EQ(*io::readAll(file.number()), bytes);
    ASSERT_EQ(::lseek(file.number(), 190, SEEK_SET), 190);
    EXPECT_EQ(*io::readAll(file.number()), Bytes(bytes.begin() + 190, bytes.end()));
    ASSERT_EQ(::lseek(file.number(), 300, SEEK_SET), 300);
    EXPECT_EQ(*io::readAll(file.number()), Bytes()) << "behind its end";
}

TEST(ReadAll, StopsAtOnceWhereNoPictureBegins) {
    const io::FileDescriptor file = memoryFile(Bytes(1000, 'x'));
    const auto read = io::readAll(file.number());
    ASSERT_FALSE(read);
    EXPECT_EQ(read.error().code, ErrorCode::UnknownFormat);
    EXPECT_EQ(::lseek(file.number(), 0, SEEK_CUR), 64);
    EXPECT_EQ(*io::readAll(memoryFile(Bytes(63, 'x')).number()), Bytes(63, 'x'))
        << "too short to know";
}

TEST(ReadAll, OfAFileAboveTheLimitIsRefusedUnread) {
    const io::FileDescriptor file = memoryFile(longBytes(100));
    ASSERT_EQ(::ftruncate(file.number(), (off_t{8} << 30) + 1), 0);
    const auto read = io::readAll(file.number());
    ASSERT_FALSE(read);
    EXPECT_EQ(read.error().code, ErrorCode::TooLarge);
    EXPECT_EQ(::lseek(file.number(), 0, SEEK_CUR), 0);
}

/// What is read of a pipe that somebody fills meanwhile.
Result<Bytes> throughPipe(const Bytes& bytes, std::size_t maxBytes = std::size_t{1} << 33) {
    int ends[2];
    EXPECT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    io::FileDescriptor out(ends[0]);
    std::thread writer([&bytes, end = ends[1]] {
        std::size_t at = 0;
        while (at < bytes.size()) {
            const ssize_t count = ::write(end, bytes.data() + at, bytes.size() - at);
            if (count < 0) break;
            at += static_cast<std::size_t>(count);
        }
        ::close(end);
    });
    auto read = io::readAll(out.number(), maxBytes);
    out = io::FileDescriptor();
    writer.join();
    return read;
}

TEST(ReadAll, OfAPipeGoesOnToItsEnd) {
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{3} << 20}) {
        const Bytes bytes = size < 2 ? Bytes(size, 7) : longBytes(size);
        const auto read = throughPipe(bytes);
        ASSERT_TRUE(read) << size;
        EXPECT_TRUE(*read == bytes) << size;
    }
}

TEST(ReadAll, OfAPipeAboveTheLimitIsRefused) {
    const auto previous = std::signal(SIGPIPE, SIG_IGN);
    const auto read = throughPipe(longBytes(std::size_t{4} << 20), std::size_t{1} << 20);
    std::signal(SIGPIPE, previous);
    ASSERT_FALSE(read);
    EXPECT_EQ(read.error().code, ErrorCode::TooLarge);
}

TEST(ReadAll, WithoutADescriptorToReadIsAnError) {
    const auto closed = io::readAll(-1);
    ASSERT_FALSE(closed);
    EXPECT_EQ(closed.error().code, ErrorCode::CannotRead);
    const io::FileDescriptor folder(::open("/", O_RDONLY | O_CLOEXEC));
    EXPECT_FALSE(io::readAll(folder.number()));
}

volatile std::sig_atomic_t ticks = 0;
int lateEnd = -1;

/// Fills and ends the pipe at the third tick; the reads before that were interrupted.
void tick(int) {
    ticks = ticks + 1;
    if (ticks != 3) return;
    (void)!::write(lateEnd, "BM!", 3);
    ::close(lateEnd);
}

TEST(ReadAll, GoesOnAfterASignal) {
    int ends[2];
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    const io::FileDescriptor out(ends[0]);
    lateEnd = ends[1];
    ticks = 0;
    struct sigaction action {};
    action.sa_handler = tick;  // without SA_RESTART, so that a read is interrupted
    struct sigaction previous {};
    ASSERT_EQ(::sigaction(SIGALRM, &action, &previous), 0);
    const itimerval often{{0, 20'000}, {0, 20'000}};
    ::setitimer(ITIMER_REAL, &often, nullptr);
    const auto read = io::readAll(out.number());
    const itimerval never{};
    ::setitimer(ITIMER_REAL, &never, nullptr);
    ::sigaction(SIGALRM, &previous, nullptr);
    ASSERT_TRUE(read) << read.error().message;
    EXPECT_EQ(*read, (Bytes{'B', 'M', '!'}));
    EXPECT_GE(ticks, 3);
}

}  // namespace
}  // namespace skarnel
