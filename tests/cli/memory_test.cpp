// How much memory a render takes.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "cli/pictures.h"
#include "cli/process.h"
#include "imaging/io/image_io.h"
#include "storage/temporary_folder.h"

namespace skarnel {
namespace {

using test::TemporaryFolder;

constexpr int kWidth = 1800;
constexpr int kHeight = 1200;
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

/// The most memory in megabytes that a process has held so far; 0 when it is gone.
double peakOfProcess(pid_t process) {
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    for (std::string word; status >> word;) {
        double kilobytes = 0;
        if (word == "VmHWM:" && status >> kilobytes) return kilobytes * 1024 / kMegabyte;
    }
    return 0;
}

std::vector<pid_t> childrenOf(pid_t process) {
    const std::string number = std::to_string(process);
    std::ifstream list("/proc/" + number + "/task/" + number + "/children");
    std::vector<pid_t> children;
    for (pid_t child = 0; list >> child;) children.push_back(child);
    return children;
}

/// The most memory that the program and the helpers beside it were seen to hold, each counted with
/// the most that it ever held. A helper's last moments may be missed, the program's own never.
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
    double most = 0;
    while (::wait4(child, &status, WNOHANG, &usage) == 0) {
        double sum = peakOfProcess(child);
        for (const pid_t helper : childrenOf(child)) sum += peakOfProcess(helper);
        most = std::max(most, sum);
        ::usleep(2000);
    }
    EXPECT_EQ(status, 0);
    return std::max(most, static_cast<double>(usage.ru_maxrss) * 1024 / kMegabyte);
}

struct Row {
    const char* name;
    std::vector<std::string> options;
};

class Memory : public testing::TestWithParam<Row> {};

TEST_P(Memory, StaysWithinSourceTwiceTheResultAndAFixedPart) {
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
    std::vector<std::string> arguments = {source, "--quiet", "-o", folder / "out"};
    arguments.insert(arguments.end(), GetParam().options.begin(), GetParam().options.end());
    const double peak = peakOf(arguments);
    EXPECT_LE(peak, most);
    RecordProperty("megabytes", std::to_string(peak));
}

INSTANTIATE_TEST_SUITE_P(
    Formats, Memory,
    testing::Values(Row{"Tiff", {"--format", "tiff"}}, Row{"Png", {"--format", "png"}},
                    Row{"Jpeg", {"--format", "jpeg"}}, Row{"Bmp", {"--format", "bmp"}},
                    Row{"Jpeg2000", {"--format", "jp2"}}, Row{"WebP", {"--format", "webp"}},
                    Row{"LossyWebP", {"--format", "webp", "--quality", "80"}}),
    [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace skarnel
