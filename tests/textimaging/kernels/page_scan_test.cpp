// The scan kernels: the definition by hand, the twins against it.
#include "textimaging/kernels/page_scan.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <vector>

#include "imaging/kernels/targets.h"

namespace skarnel::kernels {
namespace {

constexpr std::uint8_t kSentinel = 0xA5;

TEST(KnockOutRow, EqualColourLosesItsAlphaWhateverThatWas) {
    const std::vector<std::uint8_t> row{10, 20, 30, 255, 10, 20, 30, 7,   10, 20, 31, 255,
                                        11, 20, 30, 255, 10, 21, 30, 255, 10, 20, 30, 0};
    std::vector<std::uint8_t> out(row.size(), kSentinel);
    scalar::knockOutRow(out.data(), row.data(), {10, 20, 30, 99}, 6);
    EXPECT_EQ(out, (std::vector<std::uint8_t>{10, 20, 30, 0,   10, 20, 30, 0,   10, 20, 31, 255,
                                              11, 20, 30, 255, 10, 21, 30, 255, 10, 20, 30, 0}));
}

TEST(FirstUsed, ADistanceMustBeAboveTheLimit) {
    // 6^2 + 8^2 = 100.
    const std::vector<std::uint8_t> row{50, 50, 50, 255, 56, 58, 50, 255,
                                        56, 58, 51, 255, 50, 50, 50, 255};
    const UsedRule rule{{50, 50, 50, 255}, 100};
    EXPECT_EQ(scalar::firstUsed(row.data(), rule, 4), 2U);
    EXPECT_EQ(scalar::endOfUsed(row.data(), rule, 4), 3U);
    EXPECT_EQ(scalar::firstUsed(row.data(), rule, 2), 2U);
    EXPECT_EQ(scalar::endOfUsed(row.data(), rule, 2), 0U);
    EXPECT_EQ(scalar::firstUsed(row.data(), {{50, 50, 50, 255}, 99}, 4), 1U);
}

TEST(FirstUsed, EachByteCountsAndTheLargestDistanceIsNotUsedAtItsOwnLimit) {
    for (std::size_t k = 0; k < 4; ++k) {
        std::vector<std::uint8_t> row(4, 0);
        row[k] = 255;
        EXPECT_EQ(scalar::firstUsed(row.data(), {{0, 0, 0, 0}, 255 * 255 - 1}, 1), 0U) << k;
        EXPECT_EQ(scalar::firstUsed(row.data(), {{0, 0, 0, 0}, 255 * 255}, 1), 1U) << k;
    }
    const std::vector<std::uint8_t> all(4, 255);
    EXPECT_EQ(scalar::firstUsed(all.data(), {{0, 0, 0, 0}, 4 * 255 * 255}, 1), 1U);
    EXPECT_EQ(scalar::firstUsed(all.data(), {{0, 0, 0, 0}, -1}, 1), 0U);
}

// Mostly the reference, with pixels near and far strewn in.
std::vector<std::uint8_t> strewnRow(std::mt19937& random, ScanPixel reference, std::size_t pixels,
                                    unsigned oneIn) {
    std::vector<std::uint8_t> row;
    for (std::size_t x = 0; x < pixels; ++x)
        for (std::size_t k = 0; k < 4; ++k)
            row.push_back(random() % oneIn != 0 ? reference[k]
                                                : static_cast<std::uint8_t>(random()));
    return row;
}

TEST(PageScan, EveryTargetEqualsTheScalarDefinition) {
    std::mt19937 random(4242);
    std::vector<Target> targets = supportedTargets();
    targets.push_back(kScalarTarget);  // by way of the choice between all of them
    for (const Target target : targets) {
        const ScopedTarget scoped(target);
        for (const std::size_t pixels : {0, 1, 2, 3, 4, 7, 8, 9, 15, 16, 17, 31, 33, 64, 65, 257}) {
            for (const std::size_t misalign : {0, 1, 3, 4, 12}) {
                for (const unsigned oneIn : {1U, 20U, 1000U}) {
                    const ScanPixel reference{200, 3, 77, 255};
                    const auto row = strewnRow(random, reference, pixels, oneIn);
                    // Exactly as large as needed, so that a sanitizer sees every byte too many.
                    std::vector<std::uint8_t> source(misalign + row.size());
                    std::copy(row.begin(), row.end(),
                              source.begin() + static_cast<std::ptrdiff_t>(misalign));
                    const std::uint8_t* from = source.data() + misalign;
                    std::vector<std::uint8_t> expected(row.size());
                    scalar::knockOutRow(expected.data(), from, reference, pixels);
                    std::vector<std::uint8_t> out(misalign + row.size() + 16, kSentinel);
                    knockOutRow(out.data() + misalign, from, reference, pixels);
                    ASSERT_TRUE(std::equal(expected.begin(), expected.end(),
                                           out.begin() + static_cast<std::ptrdiff_t>(misalign)))
                        << targetName(target) << " " << pixels;
                    for (std::size_t i = misalign + row.size(); i < out.size(); ++i)
                        ASSERT_EQ(out[i], kSentinel);
                    for (const std::int32_t limit : {-1, 0, 100, 65025, 100000, 260100}) {
                        const UsedRule rule{reference, limit};
                        ASSERT_EQ(firstUsed(from, rule, pixels),
                                  scalar::firstUsed(from, rule, pixels))
                            << targetName(target) << " " << pixels << " " << limit;
                        ASSERT_EQ(endOfUsed(from, rule, pixels),
                                  scalar::endOfUsed(from, rule, pixels))
                            << targetName(target) << " " << pixels << " " << limit;
                    }
                }
            }
        }
    }
}

TEST(PageScan, EveryPlaceOfALonelyPixelIsFound) {
    const ScanPixel reference{1, 2, 3, 4};
    for (std::size_t place = 0; place < 70; ++place) {
        std::vector<std::uint8_t> row;
        for (int x = 0; x < 70; ++x) row.insert(row.end(), reference.begin(), reference.end());
        row[4 * place + place % 4] = static_cast<std::uint8_t>(row[4 * place + place % 4] + 11);
        EXPECT_EQ(firstUsed(row.data(), {reference, 100}, 70), place);
        EXPECT_EQ(endOfUsed(row.data(), {reference, 100}, 70), place + 1);
        EXPECT_EQ(firstUsed(row.data(), {reference, 121}, 70), 70U);
    }
}

}  // namespace
}  // namespace skarnel::kernels
