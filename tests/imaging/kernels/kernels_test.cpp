// Every vector twin against its scalar definition: all targets that run here, widths from nothing
// to several vectors, every misalignment of a pixel, one row, sentinels behind the target, and
// exact-size sources that a sanitizer guards.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <random>

#include "imaging/kernels/exact_weight.h"
#include "imaging/kernels/pixel_ops.h"
#include "imaging/kernels/resample.h"
#include "imaging/kernels/shape.h"
#include "imaging/kernels/targets.h"

namespace skarnel::kernels {
namespace {

constexpr std::size_t kMaxPixels = 130;
constexpr std::uint8_t kSentinel = 0xA5;

/// Bytes in a block of exactly their number, `misalign` bytes into a cache line, so that reading or
/// writing beyond them is seen.
class ExactBytes {
  public:
    ExactBytes(std::size_t size, std::size_t misalign, std::uint32_t seed)
        : memory_(new std::uint8_t[size + misalign + kGuard]),
          data_(memory_.get() + misalign),
          size_(size) {
        std::mt19937 random(seed);
        for (std::size_t i = 0; i < size; ++i) data_[i] = static_cast<std::uint8_t>(random());
        std::memset(data_ + size, kSentinel, kGuard);
    }
    std::uint8_t* data() { return data_; }
    std::vector<std::uint8_t> bytes() const { return {data_, data_ + size_}; }
    bool guardIsWhole() const {
        return std::all_of(data_ + size_, data_ + size_ + kGuard,
                           [](std::uint8_t byte) { return byte == kSentinel; });
    }

  private:
    static constexpr std::size_t kGuard = 64;
    std::unique_ptr<std::uint8_t[]> memory_;
    std::uint8_t* data_;
    std::size_t size_;
};

/// A source whose block ends with its last byte.
std::vector<std::uint8_t> noise(std::size_t size, std::uint32_t seed) {
    std::mt19937 random(seed);
    std::vector<std::uint8_t> bytes(size);
    for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random());
    return bytes;
}

/// Runs `kernel(target, pixels, misalign)` in scalar form and on every target.
template <typename Kernel>
void expectEqualTargets(Kernel kernel) {
    for (std::size_t pixels = 0; pixels <= kMaxPixels; ++pixels)
        for (const std::size_t misalign : {0, 1, 4, 12, 63}) {
            ExactBytes expected(4 * pixels, misalign, 1);
            {
                const ScopedTarget scalarOnly(kScalarTarget);
                kernel(expected.data(), pixels, misalign);
            }
            ASSERT_TRUE(expected.guardIsWhole());
            for (const Target target : supportedTargets()) {
                const ScopedTarget only(target);
                ExactBytes actual(4 * pixels, misalign, 1);
                kernel(actual.data(), pixels, misalign);
                ASSERT_EQ(actual.bytes(), expected.bytes())
                    << targetName(target) << ", " << pixels << " pixels, misaligned by "
                    << misalign;
                ASSERT_TRUE(actual.guardIsWhole()) << targetName(target);
            }
        }
}

TEST(Kernels, OverRowIsTheSameOnEveryTarget) {
    expectEqualTargets([](std::uint8_t* target, std::size_t pixels, std::size_t) {
        const auto source = noise(4 * pixels, 2);
        overRow(target, source.data(), pixels);
    });
}

TEST(Kernels, OverColorRowIsTheSameOnEveryTarget) {
    expectEqualTargets([](std::uint8_t* target, std::size_t pixels, std::size_t) {
        overColorRow(target, {200, 3, 90, 100}, pixels);
    });
}

TEST(Kernels, FillRowIsTheSameOnEveryTarget) {
    expectEqualTargets([](std::uint8_t* target, std::size_t pixels, std::size_t) {
        fillRow(target, {1, 2, 3, 4}, pixels);
    });
}

TEST(Kernels, ScaleRowIsTheSameOnEveryTarget) {
    expectEqualTargets([](std::uint8_t* target, std::size_t pixels, std::size_t misalign) {
        const auto source = noise(4 * pixels, 3);
        scaleRow(target, source.data(), static_cast<std::uint8_t>(97 + misalign), pixels);
        scaleRow(target, target, 201, pixels);
    });
}

TEST(Kernels, StreamRowIsTheSameOnEveryTarget) {
    expectEqualTargets([](std::uint8_t* target, std::size_t pixels, std::size_t) {
        const auto source = noise(4 * pixels, 4);
        streamRow(target, source.data(), pixels);
    });
}

TEST(Kernels, FlattenRowIsTheSameOnEveryTarget) {
    expectEqualTargets([](std::uint8_t* target, std::size_t pixels, std::size_t) {
        const auto source = noise(4 * pixels, 16);
        flattenRow(target, source.data(), {200, 100, 7, 255}, pixels);
    });
}

/// Opaque runs of every length, with a clear or a nearly opaque pixel between them.
TEST(Kernels, OpaqueRunsAreFlattenedTheSameOnEveryTarget) {
    for (const std::size_t gap : {7, 33, 131})
        expectEqualTargets([&](std::uint8_t* target, std::size_t pixels, std::size_t) {
            auto source = noise(4 * pixels, 18);
            for (std::size_t x = 0; x < pixels; ++x)
                source[4 * x + 3] = x % gap == 5 ? (x % 2 == 0 ? 0 : 254) : 255;
            flattenRow(target, source.data(), {10, 200, 90, 255}, pixels);
        });
}

TEST(Kernels, FlattenedPixelsLieOverTheGroundInTheOrderOfScreens) {
    // Half of (100, 50, 0) over (10, 20, 255): 50 + 10 * 127 / 255 = 55, 25 + 10 = 35, 127.
    const std::uint8_t source[12] = {1, 2, 3, 255, 50, 25, 0, 128, 0, 0, 0, 0};
    const std::uint8_t expected[12] = {3, 2, 1, 255, 127, 35, 55, 255, 255, 20, 10, 255};
    std::uint8_t target[12] = {};
    flattenRow(target, source, {10, 20, 255, 255}, 3);
    EXPECT_EQ(std::memcmp(target, expected, 12), 0);
}

TEST(Kernels, CombineRowsIsTheSameOnEveryTarget) {
    const std::vector<std::vector<std::int16_t>> weightings{{16384},
                                                            {1, 16383},
                                                            {8192, 8192},
                                                            {16384, 0},
                                                            {5461, 5462, 5461},
                                                            {16384, 0, 0},
                                                            {0, 0, 16384},
                                                            {8191, 1, 8192},
                                                            {1, 16382, 1},
                                                            {100, 16000, 200, 84},
                                                            {1000, 2000, 3000, 4000, 6384}};
    for (const auto& weights : weightings)
        expectEqualTargets([&](std::uint8_t* target, std::size_t pixels, std::size_t) {
            std::vector<std::vector<std::uint8_t>> rows;
            std::vector<const std::uint8_t*> pointers;
            for (std::size_t j = 0; j < weights.size(); ++j)
                rows.push_back(noise(4 * pixels, static_cast<std::uint32_t>(10 + j)));
            for (const auto& row : rows) pointers.push_back(row.data());
            combineRows(target, pointers.data(),
                        {0, static_cast<int>(weights.size()), weights.data()}, 4 * pixels);
        });
}

TEST(Kernels, CombineColumnsIsTheSameOnEveryTarget) {
    const std::vector<std::int16_t> weights{4000, 5000, 3000, 2000, 1384, 1000};
    const std::vector<std::int16_t> single{kTapUnit};
    for (const int count : {1, 2, 3, 4, 5, 6})
        expectEqualTargets([&](std::uint8_t* target, std::size_t pixels, std::size_t) {
            const std::size_t sourcePixels = pixels + static_cast<std::size_t>(count);
            const auto source = noise(4 * sourcePixels, 5);
            std::vector<Taps> taps;
            for (std::size_t x = 0; x < pixels; ++x)
                taps.push_back(
                    {static_cast<int>(x) + 1, count, count == 1 ? single.data() : weights.data()});
            combineColumns(target, source.data(), sourcePixels, taps.data(), pixels);
        });
}

/// The same taps for each of four neighbours and for groups of them, ending with the source's end.
TEST(Kernels, PackedColumnsAreTheSameOnEveryTargetAndAsUnpacked) {
    for (const std::size_t count : {1, 2, 3, 4, 5, 9, 16}) {
        const std::size_t groups = (count + 3) / 4;
        std::vector<std::int16_t> weights(count, static_cast<std::int16_t>(kTapUnit / count));
        weights.front() = static_cast<std::int16_t>(weights.front() + kTapUnit % count);
        expectEqualTargets([&](std::uint8_t* target, std::size_t pixels, std::size_t) {
            const std::size_t step = 1 + count / 2;
            const std::size_t sourcePixels = step * pixels + 4 * groups;
            const auto source = noise(4 * sourcePixels, 15);
            std::vector<Taps> taps;
            std::vector<std::int32_t> first;
            std::vector<std::int16_t> packed(4 * groups * pixels);
            for (std::size_t x = 0; x < pixels; ++x) {
                const bool last = x + 1 == pixels;
                first.push_back(
                    static_cast<std::int32_t>(last ? sourcePixels - 4 * groups : step * x));
                taps.push_back({first.back(), static_cast<int>(count), weights.data()});
                for (std::size_t j = 0; j < count; ++j)
                    packed[4 * (j / 4 * pixels + x) + j % 4] = weights[j];
            }
            combinePackedColumns(
                target, source.data(),
                {first.data(), packed.data(), groups, pixels, sourcePixels, count});
            std::vector<std::uint8_t> unpacked(4 * pixels);
            scalar::combineColumns(unpacked.data(), source.data(), sourcePixels, taps.data(),
                                   pixels);
            ASSERT_EQ(unpacked, std::vector<std::uint8_t>(target, target + 4 * pixels));
        });
    }
}

/// Runs of samples whose first pixels are unequally far apart, each with weights of its own.
TEST(Kernels, RunsOfPackedColumnsAreTheSameOnEveryTarget) {
    struct Case {
        double step;  // pixels from one sample's first to the next one's
        std::size_t places;
    };
    for (const auto& [step, places] : {Case{1, 1}, Case{0.4, 2}, Case{4.1, 2}, Case{1.9, 3},
                                       Case{4.4, 3}, Case{2, 4}, Case{2.55, 4}})
        expectEqualTargets([&](std::uint8_t* target, std::size_t pixels, std::size_t) {
            const auto sourcePixels =
                static_cast<std::size_t>(step * static_cast<double>(pixels)) + 5;
            const auto source = noise(4 * sourcePixels, 16);
            std::mt19937 random(17);
            std::vector<std::int32_t> first;
            std::vector<std::int16_t> packed(4 * pixels);
            for (std::size_t x = 0; x < pixels; ++x) {
                first.push_back(static_cast<std::int32_t>(static_cast<double>(x) * step));
                int rest = kTapUnit;
                for (std::size_t j = 0; j + 1 < places; ++j) {
                    const int weight = static_cast<int>(random() % 5000U);
                    packed[4 * x + j] = static_cast<std::int16_t>(weight);
                    rest -= weight;
                }
                packed[4 * x + places - 1] = static_cast<std::int16_t>(rest);
            }
            combinePackedColumns(target, source.data(),
                                 {first.data(), packed.data(), 1, pixels, sourcePixels, places});
        });
}

struct Columns {
    std::vector<std::int32_t> from;
    std::vector<std::uint32_t> weight;
    std::size_t sourcePixels = 0;
};

/// `step` source pixels a column, the last columns at the very end of the source.
Columns columnsOf(std::size_t pixels, double step, std::uint32_t limit) {
    Columns columns;
    std::mt19937 random(6);
    for (std::size_t x = 0; x < pixels; ++x) {
        columns.from.push_back(static_cast<std::int32_t>(static_cast<double>(x) * step));
        columns.weight.push_back((random() % limit) * 0x10001U);
    }
    columns.sourcePixels = pixels == 0 ? 1 : static_cast<std::size_t>(columns.from.back()) + 1;
    return columns;
}

/// With and without a whole part, and by the table alone.
std::vector<ShapeFactor> factors() {
    std::vector<ShapeFactor> made{
        {{}, true, 1, 50000}, {{}, false, 1, 50000}, {{}, true, 0, 50000}};
    for (ShapeFactor& factor : made)
        for (unsigned t = 0; t < 256; ++t)
            factor.table[t] = static_cast<std::uint8_t>(t * factor.whole + (t * 50000 >> 16));
    return made;
}

TEST(Kernels, ShapeRowIsTheSameOnEveryTarget) {
    for (const ShapeFactor& factor : factors())
        for (const double step : {0.0, 0.9, 1.0, 1.4, 3.0})
            expectEqualTargets([&](std::uint8_t* target, std::size_t pixels, std::size_t) {
                const Columns columns = columnsOf(pixels, step, 65536);
                const auto source = noise(4 * columns.sourcePixels, 8);
                shapeRow(target, source.data(), columns.sourcePixels,
                         {columns.from.data(), columns.weight.data()}, factor, pixels);
            });
}

TEST(Kernels, PackedColumnsAreShapedTheSameOnEveryTargetAndAsUnpackedOnes) {
    for (const ShapeFactor& factor : factors())
        for (const double step : {0.0, 0.33, 0.9, 1.4, 3.0, 5.1})
            expectEqualTargets([&](std::uint8_t* target, std::size_t pixels, std::size_t) {
                const Columns columns = columnsOf(pixels, step, 65536);
                const auto source = noise(4 * columns.sourcePixels, 8);
                std::vector<std::uint32_t> packed;
                for (std::size_t x = 0; x < pixels; ++x)
                    packed.push_back((columns.weight[x] & 0xFFFF0000U) |
                                     static_cast<std::uint32_t>(columns.from[x]));
                shapePackedRow(target, source.data(), columns.sourcePixels, packed.data(), factor,
                               pixels);
                std::vector<std::uint8_t> unpacked(4 * pixels);
                scalar::shapeRow(unpacked.data(), source.data(), columns.sourcePixels,
                                 {columns.from.data(), columns.weight.data()}, factor, pixels);
                ASSERT_EQ(unpacked, std::vector<std::uint8_t>(target, target + 4 * pixels));
            });
}

TEST(Kernels, AShapeFactorIsTheSameOnEveryTarget) {
    for (int step = -300; step < 4000; ++step)
        for (const double factor : {step / 255.0, step * 0.7301, 1.0 / 0.0}) {
            const ShapeFactor expected = scalar::shapeFactor(factor);
            for (const Target target : supportedTargets()) {
                const ScopedTarget only(target);
                const ShapeFactor actual = shapeFactor(factor);
                ASSERT_EQ(actual.table, expected.table) << targetName(target) << ' ' << factor;
                ASSERT_EQ(actual.hasMultiplier, expected.hasMultiplier) << factor;
                ASSERT_EQ(actual.whole, expected.whole) << factor;
                ASSERT_EQ(actual.fraction, expected.fraction) << factor;
            }
        }
}

TEST(Kernels, PlannedColumnsAreTheSameOnEveryTarget) {
    struct Row {
        double origin;
        int last;
        double span;
    };
    for (const Row& row : {Row{0, 800, 1000}, Row{30, 299, 300}, Row{7, 4999, 5432}, Row{0, 0, 9},
                           Row{-12, 999, 800}, Row{3, 255, 512}})
        for (std::size_t count = 0; count <= 600; count += 1 + count / 20) {
            const ColumnPositions positions{row.origin, row.last / row.span, row.last};
            const auto plan = [&](std::vector<std::int32_t>& from,
                                  std::vector<std::uint32_t>& weight) {
                std::vector<std::int32_t> inDoubles(count);
                from.resize(count);
                weight.resize(count);
                const int first = std::max(0, static_cast<int>(row.origin));
                inDoubles.resize(planShapeColumns(positions, first, count, from.data(),
                                                  weight.data(), inDoubles.data()));
                return inDoubles;
            };
            std::vector<std::int32_t> from, otherFrom;
            std::vector<std::uint32_t> weight, otherWeight;
            std::vector<std::int32_t> expected;
            {
                const ScopedTarget scalarOnly(kScalarTarget);
                expected = plan(from, weight);
            }
            for (const Target target : supportedTargets()) {
                const ScopedTarget only(target);
                const auto actual = plan(otherFrom, otherWeight);
                ASSERT_EQ(actual, expected) << targetName(target) << " count " << count;
                ASSERT_EQ(otherFrom, from) << targetName(target);
                ASSERT_EQ(otherWeight, weight) << targetName(target);
            }
        }
}

// The definitions themselves, over whole small domains.

TEST(Kernels, Multiply255IsRoundedExactlyForEveryPair) {
    for (unsigned a = 0; a < 256; ++a)
        for (unsigned b = 0; b < 256; ++b)
            ASSERT_EQ(multiply255(a, b), (2 * a * b + 255) / 510) << a << " * " << b;
}

TEST(Kernels, OverIsTheFormulaForEveryValueAndAlphaOnEveryTarget) {
    std::vector<std::uint8_t> source, before;
    for (unsigned value = 0; value < 256; ++value)
        for (unsigned alpha = 0; alpha < 256; ++alpha) {
            const auto v = static_cast<std::uint8_t>(value);
            before.insert(before.end(), {v, static_cast<std::uint8_t>(255 - value), 255, v});
            source.insert(source.end(), {0, 17, 255, static_cast<std::uint8_t>(alpha)});
        }
    std::vector<Target> targets = supportedTargets();
    targets.push_back(kScalarTarget);
    for (const Target target : targets) {
        const ScopedTarget only(target);
        std::vector<std::uint8_t> after = before;
        overRow(after.data(), source.data(), 65536);
        for (std::size_t i = 0; i < after.size(); ++i) {
            const unsigned rest = 255U - source[i / 4 * 4 + 3];
            const unsigned kept = (2 * before[i] * rest + 255) / 510;
            ASSERT_EQ(after[i], std::min(255U, source[i] + kept)) << targetName(target);
        }
    }
}

TEST(Kernels, OpaqueCoversTransparentChangesNothing) {
    std::vector<std::uint8_t> target{10, 20, 30, 200};
    scalar::overRow(target.data(), std::vector<std::uint8_t>{0, 0, 0, 0}.data(), 1);
    EXPECT_EQ(target, (std::vector<std::uint8_t>{10, 20, 30, 200}));
    scalar::overRow(target.data(), std::vector<std::uint8_t>{1, 2, 3, 255}.data(), 1);
    EXPECT_EQ(target, (std::vector<std::uint8_t>{1, 2, 3, 255}));
}

TEST(Kernels, TheEnvironmentCanChooseTheDefinition) {
    const ScopedTarget scalarOnly(kScalarTarget);
    EXPECT_FALSE(useVectors());
}

}  // namespace
}  // namespace skarnel::kernels
