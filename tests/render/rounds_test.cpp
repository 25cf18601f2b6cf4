// Rendering again and again, with pictures, sizes and settings that change, keeps neither memory
// nor descriptors.
#include <gtest/gtest.h>

#include <cstdio>
#include <vector>

#include "imaging/test_images.h"
#include "memory/process_size.h"
#include "render/reflection.h"
#include "storage/temporary_folder.h"

namespace skarnel {
namespace {

using skarnel::testing::kMemoryIsMeasurable;
using skarnel::testing::openDescriptors;
using skarnel::testing::residentBytes;

/// Every picture, size and setting comes round again after so many renders.
constexpr int kPeriod = 100;

void renderOnce(const std::vector<CGImage>& pictures, int number) {
    const int place = number % kPeriod;
    const CGImage& picture = pictures[static_cast<std::size_t>(place) % pictures.size()];
    RenderInputs inputs{static_cast<float>(place * 2), std::nullopt, static_cast<float>(place)};
    if (place % 3 == 0) inputs.background = DeviceColor{0.5, 0.25, 0.125, 1};
    const auto height = static_cast<float>(40 + place);
    const auto result = addReflectionToCGImage(picture, static_cast<float>(place % 30), height,
                                               static_cast<float>(place % 7), 0, 7, inputs);
    ASSERT_TRUE(result) << number;
}

TEST(RenderRounds, LeaveNothingBehind) {
    std::vector<CGImage> pictures;
    for (int i = 0; i < 20; ++i) pictures.push_back(test::validNoise(20 + 31 * i, 500 - 23 * i, 1));
    // Where memory cannot be measured there is only the sanitizer to listen to.
    const int period = kMemoryIsMeasurable ? kPeriod : kPeriod / 20;
    const int rounds = test::isLongRun() ? 10'000 : 3 * period;
    int number = 0;
    while (number < period) renderOnce(pictures, number++);
    residentBytes();
    while (number < 2 * period) renderOnce(pictures, number++);
    const std::size_t before = residentBytes();
    const std::ptrdiff_t descriptors = openDescriptors();
    while (number < 2 * period + rounds) renderOnce(pictures, number++);
    const std::size_t after = residentBytes();

    EXPECT_EQ(openDescriptors(), descriptors);
    std::printf("%zu bytes before, %zu after %d renders\n", before, after, rounds);
    if (kMemoryIsMeasurable) {
        EXPECT_LT(static_cast<double>(after), static_cast<double>(before) * 1.01)
            << before << " bytes before, " << after << " after " << rounds << " renders";
    }
}

}  // namespace
}  // namespace skarnel
