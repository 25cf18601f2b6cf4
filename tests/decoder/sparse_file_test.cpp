// Files that say they have gigabytes, most of them holes: no more of them is looked at than the
// picture that their head promises can have.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "imaging/io/decoder_wall.h"
#include "imaging/io/pictures.h"
#include "imaging/io/read_file.h"

namespace skarnel {
namespace {

using namespace skarnel::testing;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif

struct Outcome {
    bool opened = false;
    double processorSeconds = 0;  // of the opening process and its helper
    long peakMegabytes = 0;       // of the larger of the two
};

/// Opens these bytes, followed by holes up to that size.
Outcome openWithHoles(ByteView head, std::uint64_t size = io::kMaxFileBytes) {
    const io::FileDescriptor file(::memfd_create("sparse", MFD_CLOEXEC));
    EXPECT_EQ(::pwrite(file.number(), head.data(), head.size(), 0),
              static_cast<ssize_t>(head.size()));
    EXPECT_EQ(::ftruncate(file.number(), static_cast<off_t>(size)), 0);
    const pid_t child = ::fork();
    if (child == 0) ::_exit(io::decodeBehindWall(DECODER_PROGRAM, file.number(), {}) ? 0 : 1);
    int status = 0;
    rusage used{};
    ::wait4(child, &status, 0, &used);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
    };
    return {status == 0, seconds(used.ru_utime) + seconds(used.ru_stime), used.ru_maxrss / 1024};
}

class SparseFile : public ::testing::TestWithParam<std::string_view> {
  protected:
    void SetUp() override {
        if (kSanitized) GTEST_SKIP() << "a sanitizer's run-time needs system calls of its own";
    }
    /// Noise, so that no format makes next to nothing of it.
    Bytes picture() const { return *encodeImage(randomValidPicture(300, 200, 5), GetParam()); }

    static void expectLittleWork(const Outcome& outcome) {
        EXPECT_LT(outcome.processorSeconds, 2);
        EXPECT_LT(outcome.peakMegabytes, 300);
    }
};

TEST_P(SparseFile, WithAWholePictureInFrontIsReadNoFurther) {
    const Outcome outcome = openWithHoles(picture());
    EXPECT_TRUE(outcome.opened);
    expectLittleWork(outcome);
}

TEST_P(SparseFile, WithHalfAPictureInFrontCostsLittle) {
    const Bytes whole = picture();
    expectLittleWork(openWithHoles(ByteView(whole).first(whole.size() / 2)));
}

TEST_P(SparseFile, WithAHeadAloneCostsLittle) {
    const Outcome outcome = openWithHoles(ByteView(picture()).first(30));
    // To a bitmap a hole is a black stretch.
    EXPECT_EQ(outcome.opened, GetParam() == kUTTypeBMP);
    expectLittleWork(outcome);
}

// The picture states 80 x 64 pixels. Its transparency, or the picture itself, is an overlay that
// says of itself 26,990 x 26,213 or 9,000 x 9,000, for which the library would take 2 GB or half a
// one.
TEST(Overlay, LargerThanThePictureStatesIsRefusedBeforeThereIsMemoryForIt) {
    if (kSanitized) GTEST_SKIP() << "a sanitizer's run-time needs system calls of its own";
    for (const char* name : {"overlaid-alpha.heic", "overlaid.heic"}) {
        std::ifstream file(std::filesystem::path(BOMB_FILES) / name, std::ios::binary);
        const Bytes bytes{std::istreambuf_iterator<char>(file), {}};
        ASSERT_EQ(bytes.size(), 2130U) << name;
        const Outcome outcome = openWithHoles(bytes, bytes.size());
        EXPECT_FALSE(outcome.opened) << name;
        EXPECT_LT(outcome.processorSeconds, 2) << name;
        EXPECT_LT(outcome.peakMegabytes, 300) << name;
    }
}

INSTANTIATE_TEST_SUITE_P(Formats, SparseFile,
                         ::testing::Values(kUTTypeJPEG, kUTTypePNG, kUTTypeTIFF, kUTTypeBMP,
                                           kUTTypeWebP, kUTTypeJPEG2000),
                         [](const auto& row) {
                             return std::string(
                                 imageTypeWithIdentifier(row.param)->preferredExtension);
                         });

}  // namespace
}  // namespace skarnel
