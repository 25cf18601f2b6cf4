// Files that say they have gigabytes, most of them holes: no more of them is looked at than the
// picture that their head promises can have.
#include <fcntl.h>
#include <gtest/gtest.h>

#include <chrono>

#include "decoder/opened_file.h"
#include "imaging/io/file_builders.h"
#include "imaging/io/pictures.h"

namespace skarnel {
namespace {

using namespace skarnel::testing;

class SparseFile : public ::testing::TestWithParam<std::string_view> {
  protected:
    void SetUp() override {
        if (kSanitized) GTEST_SKIP() << "a sanitizer's run-time needs system calls of its own";
    }
    /// Noise, so that no format makes next to nothing of it.
    Bytes picture() const { return *encodeImage(randomValidPicture(300, 200, 5), GetParam()); }
};

TEST_P(SparseFile, WithAWholePictureInFrontIsReadNoFurther) {
    const Outcome outcome = openWithHoles(picture(), io::kMaxFileBytes);
    EXPECT_TRUE(outcome.opened);
    expectLittleWork(outcome);
}

TEST_P(SparseFile, WithHalfAPictureInFrontCostsLittle) {
    const Bytes whole = picture();
    expectLittleWork(openWithHoles(ByteView(whole).first(whole.size() / 2), io::kMaxFileBytes));
}

TEST_P(SparseFile, WithAHeadAloneCostsLittle) {
    const Outcome outcome = openWithHoles(ByteView(picture()).first(30), io::kMaxFileBytes);
    // To a bitmap a hole is a black stretch.
    EXPECT_EQ(outcome.opened, GetParam() == kUTTypeBMP);
    expectLittleWork(outcome);
}

INSTANTIATE_TEST_SUITE_P(Formats, SparseFile,
                         ::testing::Values(kUTTypeJPEG, kUTTypePNG, kUTTypeTIFF, kUTTypeBMP,
                                           kUTTypeWebP, kUTTypeJPEG2000),
                         [](const auto& row) {
                             return std::string(
                                 imageTypeWithIdentifier(row.param)->preferredExtension);
                         });

/// One pixel of grey, and tags that nobody knows with 60 million bytes each behind all others.
Bytes tiffOfLongTags(std::uint16_t tags) {
    ByteSink out(false);
    out.text("II").u16(42).u32(10).u8(5).u8(0).u16(std::uint64_t{9} + tags);
    const auto entry = [&out](std::uint16_t tag, std::uint16_t type, std::uint32_t count,
                              std::uint32_t value) {
        out.u16(tag).u16(type).u32(count).u32(value);
    };
    constexpr std::uint16_t kByte = 1, kShort = 3, kLong = 4;
    for (const std::uint16_t tag : {256, 257}) entry(tag, kShort, 1, 1);
    entry(258, kShort, 1, 8);
    for (const std::uint16_t tag : {259, 262}) entry(tag, kShort, 1, 1);
    entry(273, kLong, 1, 8);
    for (const std::uint16_t tag : {277, 278}) entry(tag, kShort, 1, 1);
    entry(279, kLong, 1, 1);
    for (std::uint16_t i = 0; i < tags; ++i)
        entry(static_cast<std::uint16_t>(65000 + i), kByte, 60'000'000, 4096);
    return out.u32(0).bytes;
}

// The decoder of HEVC waits for ever for a thread that could not be made. There is a size between
// what it takes to be loaded and what its thread's stack takes, and it never sleeps.
TEST(FewThreads, EndTheHelperInsteadOfItsSleep) {
    if (kSanitized) GTEST_SKIP() << "a sanitizer's run-time needs system calls of its own";
    if (!imageTypeWithIdentifier(kUTTypeHEIF)->canRead) GTEST_SKIP() << "no library for HEIF";
    const Bytes file = *io::readAll(
        io::FileDescriptor(::open(LATE_FILES "/lossy.heic", O_RDONLY | O_CLOEXEC)).number());
    constexpr std::chrono::seconds kPatience{20};
    int withoutMemory = 0;
    for (std::uint64_t megabytes = 1; megabytes <= 16; ++megabytes) {
        const io::FileDescriptor picture = memoryFile(file);
        const pid_t child = ::fork();
        if (child == 0) {
            const rlimit limit{megabytes << 20U, megabytes << 20U};
            ::setrlimit(RLIMIT_DATA, &limit);
            const auto start = std::chrono::steady_clock::now();
            const auto decoded =
                io::decodeBehindWall(DECODER_PROGRAM, picture.number(), {}, kPatience);
            const bool slept = std::chrono::steady_clock::now() - start >= kPatience;
            if (slept) ::_exit(3);
            if (!decoded && decoded.error().code == ErrorCode::OutOfMemory) ::_exit(2);
            ::_exit(decoded ? 0 : 1);
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        EXPECT_NE(WEXITSTATUS(status), 3) << megabytes << " MB: it slept";
        withoutMemory += WEXITSTATUS(status) == 2 ? 1 : 0;
    }
    EXPECT_GT(withoutMemory, 0);
}

// libtiff leaves out a tag that it finds no memory for, which might have been of the picture.
TEST(LongTags, ThatTheLibraryDidWithoutForLackOfMemoryMakeNoPicture) {
    if (kSanitized) GTEST_SKIP() << "a sanitizer's run-time needs system calls of its own";
    EXPECT_TRUE(openWithHoles(tiffOfLongTags(1), 70'000'000).opened);
    const Outcome tooMany = openWithHoles(tiffOfLongTags(6), 70'000'000);
    EXPECT_FALSE(tooMany.opened);
    expectLittleWork(tooMany);
}

}  // namespace
}  // namespace skarnel
