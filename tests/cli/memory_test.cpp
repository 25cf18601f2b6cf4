// How much memory a render takes.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <random>

#include "cli/pictures.h"
#include "cli/process.h"
#include "imaging/io/image_io.h"
#include "storage/temporary_folder.h"

namespace skarnel {
namespace {

using test::TemporaryFolder;

constexpr int kWidth = 3000;
constexpr int kHeight = 2000;
constexpr double kMegabyte = 1024.0 * 1024.0;

/// Grain over a slope: nothing that an encoder could make small.
CGImage grain() {
    std::minstd_rand random(5);
    PixelBuffer buffer = *PixelBuffer::uninitialized(kWidth, kHeight);
    for (int y = 0; y < kHeight; ++y) {
        std::uint8_t* pixel = buffer.view().row(y);
        for (int x = 0; x < kWidth; ++x, pixel += 4) {
            const auto noise = static_cast<unsigned>(random());
            pixel[0] = static_cast<std::uint8_t>(x * 200 / kWidth + static_cast<int>(noise % 50));
            pixel[1] =
                static_cast<std::uint8_t>(y * 200 / kHeight + static_cast<int>(noise / 64 % 50));
            pixel[2] = static_cast<std::uint8_t>(noise / 4096);
            pixel[3] = 255;
        }
    }
    return CGImage(std::move(buffer));
}

/// The most memory that the program or its helper held at any time, in megabytes. What both hold
/// at the same time is the picture alone, which they share.
double peakOf(const std::vector<std::string>& arguments) {
    std::vector<std::string> all = {SKARNEL_RENDER};
    all.insert(all.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    for (std::string& argument : all) pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    const pid_t child = ::fork();
    if (child == 0) {
        ::execv(pointers[0], pointers.data());
        ::_exit(127);
    }
    int status = 0;
    rusage usage{};
    EXPECT_EQ(::wait4(child, &status, 0, &usage), child);
    EXPECT_EQ(status, 0);
    return static_cast<double>(usage.ru_maxrss) * 1024 / kMegabyte;
}

TEST(Memory, StaysWithinSourceTwiceTheResultAndAFixedPart) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "a sanitizer needs memory of its own";
#endif
    const TemporaryFolder folder;
    const auto picture =
        encodeImage(grain(), kUTTypeJPEG, {{std::string(kPropertyLossyQuality), 0.9}});
    ASSERT_TRUE(picture);
    const std::string source = folder / "grain.jpg";
    test::putBytes(source, *picture);
    // At the defaults the result is the picture and its mirror: twice the source.
    const double sourceMegabytes = 4.0 * kWidth * kHeight / kMegabyte;
    const double most = sourceMegabytes + 2.2 * 2 * sourceMegabytes + 64;
    for (const char* format : {"tiff", "png", "jpeg"}) {
        const std::vector<std::string> arguments = {source,         "--quiet",  "--force", "-o",
                                                    folder / "out", "--format", format};
        EXPECT_LE(peakOf(arguments), most) << format;
    }
}

}  // namespace
}  // namespace skarnel
