// The bytes of a file, whichever way they are had.
#include "imaging/io/mapped_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <string>

namespace skarnel::io {
namespace {

constexpr std::string_view kText =
    "BM is how a bitmap begins; more than sixty-four bytes are needed here.";

FileDescriptor fileOf(std::string_view text) {
    FileDescriptor file(::memfd_create("test", MFD_CLOEXEC));
    EXPECT_EQ(::pwrite(file.number(), text.data(), text.size(), 0),
              static_cast<ssize_t>(text.size()));
    return file;
}

std::string textOf(MappedFile& file) {
    const auto bytes = file.read();
    return bytes ? std::string(bytes->begin(), bytes->end()) : bytes.error().message;
}

TEST(MappedFile, IsMappedWhereItIsAFile) {
    const FileDescriptor descriptor = fileOf(kText);
    MappedFile file(descriptor.number());
    EXPECT_EQ(file.mappedBytes(), kText.size());
    EXPECT_EQ(textOf(file), kText);
}

TEST(MappedFile, IsReadFromItsPositionOn) {
    const FileDescriptor descriptor = fileOf("xx" + std::string(kText));
    ASSERT_EQ(::lseek(descriptor.number(), 2, SEEK_SET), 2);
    MappedFile file(descriptor.number());
    EXPECT_EQ(file.mappedBytes(), 0U);
    EXPECT_EQ(textOf(file), kText);
}

TEST(MappedFile, IsReadWhereItIsAPipe) {
    int ends[2];
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    ASSERT_EQ(::write(ends[1], kText.data(), kText.size()), static_cast<ssize_t>(kText.size()));
    ::close(ends[1]);
    const FileDescriptor descriptor(ends[0]);
    MappedFile file(descriptor.number());
    EXPECT_EQ(textOf(file), kText);
}

TEST(MappedFile, IsEmptyWhereTheFileIs) {
    const FileDescriptor descriptor = fileOf("");
    MappedFile file(descriptor.number());
    EXPECT_EQ(textOf(file), "");
}

TEST(MappedFile, OfADescriptorThatIsNoneIsAnError) {
    MappedFile file(-1);
    EXPECT_EQ(file.mappedBytes(), 0U);
    EXPECT_FALSE(file.read());
}

TEST(MappedFile, IsRefusedAboveTheLimit) {
    const FileDescriptor descriptor(::memfd_create("test", MFD_CLOEXEC));
    ASSERT_EQ(::ftruncate(descriptor.number(), static_cast<off_t>(kMaxFileBytes) + 1), 0);
    MappedFile file(descriptor.number());
    EXPECT_EQ(file.mappedBytes(), 0U);
    const auto bytes = file.read();
    ASSERT_FALSE(bytes);
    EXPECT_EQ(bytes.error().code, ErrorCode::TooLarge);
}

}  // namespace
}  // namespace skarnel::io
