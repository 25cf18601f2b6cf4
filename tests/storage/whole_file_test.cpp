#include "storage/whole_file.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <optional>
#include <string_view>
#include <thread>

#include "storage/fake_file_systems.h"
#include "storage/temporary_folder.h"

namespace skarnel {
namespace {

using test::putFile;
using test::TemporaryFolder;
using Bytes = std::vector<std::uint8_t>;

std::string textOf(const Bytes& bytes) {
    return {bytes.begin(), bytes.end()};
}

std::optional<ErrorCode> codeOf(const Result<Bytes>& bytes) {
    if (bytes) return std::nullopt;
    return bytes.error().code;
}

TEST(ReadWholeFile, GivesAllBytes) {
    const TemporaryFolder folder;
    const std::string text(200'000, 'q');
    putFile(folder / "big", text);
    const auto bytes = readWholeFile(folder / "big", 200'000);
    ASSERT_TRUE(bytes);
    EXPECT_EQ(std::string(bytes->begin(), bytes->end()), text);
    EXPECT_LT(bytes->capacity(), text.size() + 100);
}

TEST(ReadWholeFile, RefusesMoreThanTheLimitFromFilesAndStreams) {
    const TemporaryFolder folder;
    for (const std::size_t size : {std::size_t{11}, std::size_t{100}, std::size_t{70'000}}) {
        putFile(folder / "big", std::string(size, 'q'));
        EXPECT_EQ(codeOf(readWholeFile(folder / "big", size - 1)), ErrorCode::TooLarge) << size;
        EXPECT_TRUE(readWholeFile(folder / "big", size)) << size;
    }
    const int zeros = ::open("/dev/zero", O_RDONLY | O_CLOEXEC);
    EXPECT_EQ(codeOf(readDescriptor(zeros, 1'000'000)), ErrorCode::TooLarge);
    ::close(zeros);
}

TEST(ReadWholeFile, AFileWithoutASizeIsReadToItsEnd) {
    const auto bytes = readWholeFile("/proc/self/status", 100'000);
    ASSERT_TRUE(bytes);
    EXPECT_THAT(textOf(*bytes), testing::StartsWith("Name:"));
    EXPECT_EQ(codeOf(readWholeFile("/proc/self/status", 100)), ErrorCode::TooLarge);
}

TEST(ReadWholeFile, TheLimitMayHangOnHowTheFileBegins) {
    const TemporaryFolder folder;
    putFile(folder / "file", std::string(200, 'a') + std::string(100'000, 'b'));
    std::size_t seen = 0;
    const auto limit = [&](std::uint64_t bytes) {
        return [&seen, bytes](std::span<const std::uint8_t> start) -> Result<std::uint64_t> {
            seen = start.size();
            if (start.front() != 'a') return Error{ErrorCode::Unsupported, "Begins otherwise"};
            return bytes;
        };
    };
    EXPECT_TRUE(readWholeFile(folder / "file", limit(100'200)));
    EXPECT_EQ(seen, 64U);
    EXPECT_EQ(codeOf(readWholeFile(folder / "file", limit(100'199))), ErrorCode::TooLarge);
    putFile(folder / "file", "other");
    EXPECT_EQ(codeOf(readWholeFile(folder / "file", limit(100))), ErrorCode::Unsupported);
    EXPECT_EQ(seen, 5U);
}

TEST(ReadWholeFile, RefusesDevices) {
    for (const char* device : {"/dev/zero", "/dev/null", "/dev/full"}) {
        const auto bytes = readWholeFile(device, 100);
        ASSERT_FALSE(bytes) << device;
        EXPECT_EQ(bytes.error().message, "It is not an ordinary file");
    }
}

TEST(ReadWholeFile, RefusesAPipeThatNobodyWritesTo) {
    const TemporaryFolder folder;
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    const auto bytes = readWholeFile(folder / "pipe", 100);
    ASSERT_FALSE(bytes);
    EXPECT_EQ(bytes.error().code, ErrorCode::CannotRead);
    EXPECT_EQ(bytes.error().message, "Nothing comes through this pipe");
}

TEST(ReadWholeFile, ReadsAPipeWhoseWriterTakesItsTime) {
    const TemporaryFolder folder;
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    // Opened for both directions, a pipe waits for nobody; the reader finds a writer who is silent.
    const int writer = ::open((folder / "pipe").c_str(), O_RDWR | O_CLOEXEC);
    std::thread slow([&] {
        for (const std::string_view part : {"through ", "in parts"}) {
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            EXPECT_EQ(::write(writer, part.data(), part.size()), ssize_t(part.size()));
        }
        ::close(writer);
    });
    const auto bytes = readWholeFile(folder / "pipe", 100);
    slow.join();
    ASSERT_TRUE(bytes) << bytes.error().message;
    EXPECT_EQ(textOf(*bytes), "through in parts");
}

TEST(ReadWholeFile, ReadsAPipeInWhichSomethingLiesAlready) {
    const TemporaryFolder folder;
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    /// The writer goes once its text was found.
    class LeavingWriter final : public test::InterceptedFileSystem {
      public:
        explicit LeavingWriter(const std::string& path)
            : writer_(::open(path.c_str(), O_RDWR | O_CLOEXEC)) {
            EXPECT_EQ(::write(writer_, "ready", 5), 5);
        }

      private:
        int before(const std::string& call, const std::string&) override {
            if (call == "setBlocking") ::close(writer_);
            return 0;
        }
        int writer_;
    } leaving(folder / "pipe");
    const auto bytes = readWholeFile(folder / "pipe", 100, leaving);
    ASSERT_TRUE(bytes) << bytes.error().message;
    EXPECT_EQ(textOf(*bytes), "ready");
}

TEST(ReadDescriptor, AStreamOfAFewBytesHasItsLimitToo) {
    for (const std::uint64_t most : {4U, 5U}) {
        int ends[2];
        ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
        ASSERT_EQ(::write(ends[1], "12345", 5), 5);
        ::close(ends[1]);
        const auto bytes = readDescriptor(ends[0], most);
        ::close(ends[0]);
        EXPECT_EQ(codeOf(bytes), most < 5 ? std::optional(ErrorCode::TooLarge) : std::nullopt);
    }
}

TEST(ReadWholeFile, RefusesADisk) {
    class Disk final : public test::InterceptedFileSystem {
        int before(const std::string&, const std::string&) override { return 0; }
        int fstat(int descriptor, struct stat& status) override {
            const int result = real_.fstat(descriptor, status);
            status.st_mode = S_IFBLK | 0600;
            return result;
        }
    } disk;
    const TemporaryFolder folder;
    putFile(folder / "disk", "sectors");
    const auto bytes = readWholeFile(folder / "disk", 100, disk);
    ASSERT_FALSE(bytes);
    EXPECT_EQ(bytes.error().message, "It is not an ordinary file");
}

TEST(ReadWholeFile, APipeThatFailsIsAFailure) {
    const TemporaryFolder folder;
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    const int writer = ::open((folder / "pipe").c_str(), O_RDWR | O_CLOEXEC);
    for (const char* call : {"fstat", "read", "setBlocking"}) {
        test::RefusingFileSystem failing({{call, EIO}});
        const auto bytes = readWholeFile(folder / "pipe", 100, failing);
        ASSERT_FALSE(bytes) << call;
        EXPECT_EQ(bytes.error().message, "Input/output error") << call;
    }
    ::close(writer);
}

TEST(ReadDescriptor, ADescriptorWhoseKindIsUnknownIsReadAsAStream) {
    const TemporaryFolder folder;
    putFile(folder / "file", std::string(300, 'x'));
    const int file = ::open((folder / "file").c_str(), O_RDONLY | O_CLOEXEC);
    test::RefusingFileSystem failing({{"fstat", EIO}});
    const auto bytes = readDescriptor(file, 300, failing);
    ::close(file);
    ASSERT_TRUE(bytes);
    EXPECT_EQ(textOf(*bytes), std::string(300, 'x'));
}

TEST(ReadWholeFile, TellsAMissingFileFromOneThatCannotBeRead) {
    const TemporaryFolder folder;
    const auto missing = readWholeFile(folder / "missing", 100);
    ASSERT_FALSE(missing);
    EXPECT_EQ(missing.error().code, ErrorCode::NotFound);
    EXPECT_EQ(missing.error().message, "No such file or directory");
    const auto isFolder = readWholeFile(folder.path(), 100);
    ASSERT_FALSE(isFolder);
    EXPECT_EQ(isFolder.error().code, ErrorCode::CannotRead);
    EXPECT_EQ(isFolder.error().message, "It is a folder");
}

TEST(ReadWholeFile, AReadThatFailsInTheMiddleIsAFailure) {
    const TemporaryFolder folder;
    putFile(folder / "file", "text");
    test::RefusingFileSystem failing({{"read", EIO}});
    const auto bytes = readWholeFile(folder / "file", 100, failing);
    ASSERT_FALSE(bytes);
    EXPECT_EQ(bytes.error().message, "Input/output error");
    // Behind the first 64 bytes, which tell what the file is.
    class FailingLater final : public test::InterceptedFileSystem {
        int before(const std::string& call, const std::string&) override {
            return call == "read" && ++reads_ == 2 ? -EIO : 0;
        }
        int reads_ = 0;
    } failingLater;
    putFile(folder / "file", std::string(300, 'x'));
    const auto half = readWholeFile(folder / "file", 1000, failingLater);
    ASSERT_FALSE(half);
    EXPECT_EQ(half.error().message, "Input/output error");
}

}  // namespace
}  // namespace skarnel
