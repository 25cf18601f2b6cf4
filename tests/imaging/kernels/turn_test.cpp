// The two passes of the turn: their definitions by hand, and every vector twin against these.
#include "imaging/kernels/turn.h"

#include <gtest/gtest.h>
#include <sys/mman.h>

#include <cstring>
#include <random>
#include <vector>

#include "imaging/kernels/targets.h"

namespace skarnel::kernels {
namespace {

constexpr std::uint8_t kSentinel = 0xA5;

std::vector<std::uint8_t> noise(std::size_t size, std::uint32_t seed) {
    std::mt19937 random(seed);
    std::vector<std::uint8_t> bytes(size);
    for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random());
    return bytes;
}

/// Bytes that begin `misalign` bytes into a cache line and end where their block ends.
class Placed {
  public:
    Placed(std::size_t size, std::size_t misalign)
        : memory_(size + misalign + kLineBytes, kSentinel) {
        const auto start = reinterpret_cast<std::uintptr_t>(memory_.data());
        shift_ = (kLineBytes - start % kLineBytes) % kLineBytes + misalign;
        memory_.resize(shift_ + size);
    }
    std::uint8_t* data() { return memory_.data() + shift_; }
    std::vector<std::uint8_t> bytes() const {
        return {memory_.begin() + static_cast<std::ptrdiff_t>(shift_), memory_.end()};
    }

  private:
    std::vector<std::uint8_t> memory_;
    std::size_t shift_;
};

/// What `run(target bytes)` writes on every target is what it writes by the definition.
template <typename Run>
void expectEqualTargets(std::size_t size, std::size_t misalign, const char* what, Run run) {
    Placed expected(size, misalign);
    {
        const ScopedTarget scalarOnly(kScalarTarget);
        run(expected.data());
    }
    for (const Target target : supportedTargets()) {
        const ScopedTarget only(target);
        Placed actual(size, misalign);
        run(actual.data());
        ASSERT_EQ(actual.bytes(), expected.bytes()) << targetName(target) << ' ' << what;
    }
}

struct Map {
    std::vector<std::int32_t> from;
    std::vector<std::uint32_t> weight;
    std::size_t sourcePixels = 1;  // the last column needs the last of them

    Map(std::size_t columns, double step) {
        std::mt19937 random(6);
        for (std::size_t x = 0; x < columns; ++x) {
            from.push_back(static_cast<std::int32_t>(static_cast<double>(x) * step));
            weight.push_back((random() % kLerpUnit) * 0x10001U);
        }
        if (columns > 0) sourcePixels = static_cast<std::size_t>(from.back()) + 1;
    }
    SqueezeMap view(int belowWeight) const {
        return {from.data(), weight.data(), from.size(), 0, kAheadInRow, belowWeight};
    }
};

void expectSqueezedAlike(std::size_t columns, double step, int rows, bool stream,
                         int belowWeight = 0) {
    const Map map(columns, step);
    std::vector<std::vector<std::uint8_t>> sources;
    std::vector<const std::uint8_t*> pointers;
    for (int row = 0; row < rows + (belowWeight != 0 ? 1 : 0); ++row) {
        sources.push_back(noise(4 * map.sourcePixels, static_cast<std::uint32_t>(row)));
        pointers.push_back(sources.back().data());
    }
    const std::size_t stride = stream ? kBlockRows : static_cast<std::size_t>(rows) + columns % 3;
    expectEqualTargets(4 * columns * stride, stream ? 0 : 4 * (columns % 5), "squeezed",
                       [&](std::uint8_t* target) {
                           squeezeRows({target, static_cast<std::ptrdiff_t>(stride), rows, stream},
                                       pointers.data(), map.sourcePixels, map.view(belowWeight));
                       });
}

TEST(TurnKernels, SqueezedRowsAreTheSameOnEveryTarget) {
    for (std::size_t columns = 0; columns <= 130; ++columns)
        for (const double step : {0.0, 0.3, 0.99, 1.0, 1.7, 3.6, 9.0}) {
            expectSqueezedAlike(columns, step, kBlockRows, false);
            expectSqueezedAlike(columns, step, kBlockRows, true);
            expectSqueezedAlike(columns, step, 1 + static_cast<int>(columns) % 15, false);
        }
}

TEST(TurnKernels, SqueezedRowsBetweenOthersAreTheSameOnEveryTarget) {
    for (std::size_t columns = 0; columns <= 130; ++columns)
        for (const double step : {0.0, 0.99, 1.7, 3.6, 9.0}) {
            const int c = static_cast<int>(columns);
            expectSqueezedAlike(columns, step, kBlockRows, false, 1 + 251 * c);
            expectSqueezedAlike(columns, step, kBlockRows, true, kLerpUnit - 1 - 251 * c);
            expectSqueezedAlike(columns, step, 1 + c % 15, false, 1 + 251 * c);
        }
}

TEST(TurnKernels, ARowBetweenOthersIsMixedAndRoundedBeforeItIsSqueezed) {
    // Halfway down: 10 and 0 make 5, 10 and 255 make 132.5, which rounds up to 133.
    const std::vector<std::uint8_t> upper{10, 10, 10, 10, 20, 20, 20, 20};
    const std::vector<std::uint8_t> lower{0, 4, 8, 255, 100, 4, 16, 255};
    const std::uint8_t* sources[] = {upper.data(), lower.data()};
    const std::vector<std::int32_t> from{0, 0, 1};
    const std::vector<std::uint32_t> weight{0, 0x4000'4000, 0x7FFF'7FFF};
    const SqueezeMap map{from.data(), weight.data(), 3, 0, kAheadInRow, kLerpUnit / 2};
    std::vector<std::uint8_t> target(12);
    scalar::squeezeRows({target.data(), 1, 1, false}, sources, 2, map);
    EXPECT_EQ(target, (std::vector<std::uint8_t>{5, 7, 9, 133,     //
                                                 33, 10, 14, 136,  // 5 and 60, 7 and 12, ...
                                                 60, 12, 18, 138}));
}

TEST(TurnKernels, ASqueezedRowLiesInItsPlaceOfEveryColumn) {
    // Halfway between 10 and 20 is 15, a quarter of the way 12.5, which rounds up.
    const std::vector<std::uint8_t> upper{10, 10, 10, 10, 20, 20, 20, 20};
    const std::vector<std::uint8_t> lower{0, 4, 8, 255, 100, 4, 16, 255};
    const std::uint8_t* sources[] = {upper.data(), lower.data()};
    const std::vector<std::int32_t> from{0, 0, 1};
    const std::vector<std::uint32_t> weight{0x4000'4000, 0x2000'2000, 0x7FFF'7FFF};
    std::vector<std::uint8_t> target(24);
    scalar::squeezeRows({target.data(), 2, 2, false}, sources, 2, {from.data(), weight.data(), 3});
    EXPECT_EQ(target, (std::vector<std::uint8_t>{15, 15, 15, 15, 50,  4, 12, 255,  //
                                                 13, 13, 13, 13, 25,  4, 10, 255,  //
                                                 20, 20, 20, 20, 100, 4, 16, 255}));
}

/// A walk over noise whose columns begin and end anywhere in and around the target.
struct Walk {
    std::vector<std::uint8_t> source;
    std::vector<float> centre, step;
    std::vector<std::int32_t> begin, fullBegin, fullEnd, end;
    std::vector<std::uint8_t> firstLevel, lastLevel;
    std::vector<std::uint8_t> unfinished;
    ColumnWalk walk{};

    enum class Cover { Whole, Edges };
    Walk(std::size_t columns, int sourceRows, int height, float largestStep, Cover cover) {
        std::mt19937 random(static_cast<std::uint32_t>(columns) + 77U);
        const auto number = [&](float low, float high) {
            return std::uniform_real_distribution<float>(low, high)(random);
        };
        const auto rows = static_cast<float>(sourceRows);
        source =
            noise(4 * (columns * static_cast<std::size_t>(sourceRows) + kReadBehindColumns), 3);
        for (std::size_t x = 0; x < columns; ++x) {
            centre.push_back(number(-0.1F * rows, 1.1F * rows) * kLerpUnit);
            step.push_back(number(0, largestStep) * kLerpUnit);
            const bool edges = cover == Cover::Edges && random() % 4 != 0;
            const int first = edges ? static_cast<int>(random() % (height + 1U)) : 0;
            const int past =
                edges ? first + static_cast<int>(random() % (height + 1U - first)) : height;
            begin.push_back(first);
            end.push_back(past);
            firstLevel.push_back(edges ? static_cast<std::uint8_t>(random()) : 255);
            lastLevel.push_back(edges ? static_cast<std::uint8_t>(random()) : 255);
            fullBegin.push_back(first + (firstLevel.back() != 255));
            fullEnd.push_back(past - (lastLevel.back() != 255));
        }
        unfinished.resize(kLineBytes * static_cast<std::size_t>(height));
        walk = {source.data(), sourceRows,  columns,
                centre.data(), step.data(), static_cast<float>(sourceRows - 1) * kLerpUnit,
                height / 2,    {},          nullptr,
                Strip::Only,   {}};
        walk.cover = {begin.data(), fullBegin.data(),  fullEnd.data(),
                      end.data(),   firstLevel.data(), lastLevel.data()};
    }
};

void expectWalkedAlike(std::size_t columns, int sourceRows, int height, float largestStep,
                       Walk::Cover cover) {
    Walk made(columns, sourceRows, height, largestStep, cover);
    const std::size_t stride = 4 * columns + 4 * (columns % 3);
    for (const bool stream : {false, true}) {
        made.walk.unfinishedLines = stream ? made.unfinished.data() : nullptr;
        for (const std::size_t misalign : {0, 4, 24, 60})
            expectEqualTargets(stride * static_cast<std::size_t>(height), misalign, "walked",
                               [&](std::uint8_t* target) {
                                   walkColumns(
                                       {target, static_cast<std::ptrdiff_t>(stride), 0, height},
                                       made.walk);
                               });
    }
}

TEST(TurnKernels, WalkedColumnsAreTheSameOnEveryTarget) {
    for (std::size_t columns = 0; columns <= 130; ++columns) {
        expectWalkedAlike(columns, 40, 1 + static_cast<int>(columns) % 20, 1.7F,
                          Walk::Cover::Whole);
        expectWalkedAlike(columns, 1 + static_cast<int>(columns) % 30, 37, 3, Walk::Cover::Edges);
    }
}

TEST(TurnKernels, StripsOfColumnsMeetWithoutASeamOnEveryTarget) {
    for (const std::size_t columns : {255, 256, 257, 383, 384, 400, 517}) {
        expectWalkedAlike(columns, 50, 35, 1.6F, Walk::Cover::Whole);
        expectWalkedAlike(columns, 50, 35, 1.6F, Walk::Cover::Edges);
    }
}

/// The strips' walks one after the other, each from its own columns of the whole.
void walkInStrips(const std::vector<std::size_t>& starts, const WalkTarget& target,
                  const ColumnWalk& whole) {
    for (std::size_t i = 0; i + 1 < starts.size(); ++i) {
        const std::size_t x = starts[i];
        ColumnWalk walk = whole;
        walk.source += 4 * static_cast<std::ptrdiff_t>(x) * whole.columnStride;
        walk.columns = starts[i + 1] - x;
        walk.centre += x;
        walk.step += x;
        const ColumnCover& cover = whole.cover;
        walk.cover = {cover.begin + x, cover.fullBegin + x,  cover.fullEnd + x,
                      cover.end + x,   cover.firstLevel + x, cover.lastLevel + x};
        walk.strip = i == 0 ? Strip::First : Strip::Middle;
        if (i + 2 == starts.size()) walk.strip = Strip::Last;
        WalkTarget place = target;
        place.bytes += 4 * x;
        walkColumns(place, walk);
    }
}

TEST(TurnKernels, StripsThatAreWalkedByThemselvesMakeTheWholeOnEveryTarget) {
    for (std::size_t columns = 400; columns <= 432; ++columns)
        for (const Walk::Cover cover : {Walk::Cover::Whole, Walk::Cover::Edges}) {
            Walk made(columns, 50, 35, 1.6F, cover);
            made.walk.unfinishedLines = made.unfinished.data();
            const std::size_t stride = 4 * columns + 4 * (columns % 3);
            expectEqualTargets(
                stride * 35, 4 * (columns % 16), "walked in strips", [&](std::uint8_t* bytes) {
                    walkInStrips({0, 128, 272, columns},
                                 {bytes, static_cast<std::ptrdiff_t>(stride), 0, 35}, made.walk);
                });
            Placed whole(stride * 35, 0);
            Placed strips(stride * 35, 0);
            const ScopedTarget scalarOnly(kScalarTarget);
            const WalkTarget target{whole.data(), static_cast<std::ptrdiff_t>(stride), 0, 35};
            walkColumns(target, made.walk);
            walkInStrips({0, 128, 272, columns}, {strips.data(), target.strideBytes, 0, 35},
                         made.walk);
            ASSERT_EQ(strips.bytes(), whole.bytes());
        }
}

/// The columns of `made`, 120 rows each, in a ring of 96 that holds the rows from `first` on.
std::vector<std::uint8_t> ringOf(const Walk& made, std::size_t columns, int first) {
    constexpr int kRows = 120;
    constexpr int kRing = 96;
    constexpr int kStride = kRing + kReadBehindColumns;
    std::vector<std::uint8_t> ring(4 * (columns * kStride + kReadBehindColumns));
    for (std::size_t x = 0; x < columns; ++x)
        for (int row = first; row < kRows; ++row)
            for (int place = row % kRing; place < kStride && row < first + kRing; place += kRing)
                std::memcpy(ring.data() + 4 * (x * kStride + static_cast<std::size_t>(place)),
                            made.source.data() + 4 * (x * kRows + static_cast<std::size_t>(row)),
                            4);
    return ring;
}

TEST(TurnKernels, ARingOfRowsIsWalkedLikeTheWholeColumnOnEveryTarget) {
    for (const std::size_t columns : {1, 7, 16, 33, 130})
        for (const int first : {0, 5, 23}) {
            Walk made(columns, 120, 40, 1.4F, Walk::Cover::Whole);
            // Positions first + 1 .. first + 57 at the most; the ring ends at row 96.
            for (std::size_t x = 0; x < columns; ++x)
                made.centre[x] = (1.0F * static_cast<float>(first) + 29.3F) * kLerpUnit;
            const auto ring = ringOf(made, columns, first);
            ColumnWalk ringWalk = made.walk;
            ringWalk.source = ring.data();
            ringWalk.columnStride = 96 + kReadBehindColumns;
            ringWalk.ring = {0, 96};
            std::vector<std::uint8_t> whole(160 * columns);
            const ScopedTarget scalarOnly(kScalarTarget);
            walkColumns({whole.data(), static_cast<std::ptrdiff_t>(4 * columns), 0, 40}, made.walk);
            std::vector<Target> targets = supportedTargets();
            targets.push_back(kScalarTarget);
            for (const Target target : targets) {
                const ScopedTarget only(target);
                std::vector<std::uint8_t> turned(160 * columns);
                walkColumns({turned.data(), static_cast<std::ptrdiff_t>(4 * columns), 0, 40},
                            ringWalk);
                ASSERT_EQ(turned, whole) << targetName(target) << ' ' << columns << ' ' << first;
            }
        }
}

TEST(TurnKernels, ABandAloneHasTheRowsOfTheWhole) {
    Walk made(150, 60, 50, 1.6F, Walk::Cover::Edges);
    std::vector<Target> targets = supportedTargets();
    targets.push_back(kScalarTarget);
    for (const Target target : targets) {
        const ScopedTarget only(target);
        std::vector<std::uint8_t> whole(600 * 50), band(600 * 19);
        walkColumns({whole.data(), 600, 0, 50}, made.walk);
        walkColumns({band.data(), 600, 23, 19}, made.walk);
        EXPECT_EQ(std::memcmp(band.data(), whole.data() + 600 * 23, band.size()), 0)
            << targetName(target);
    }
}

// From 65,536 rows on a position in units is no 32-bit number.
TEST(TurnKernels, TallPicturesAreWalkedTheSameOnEveryTarget) {
    expectWalkedAlike(18, 70'000, 50, 1.6F, Walk::Cover::Whole);
    expectWalkedAlike(18, 65'536, 50, 1.6F, Walk::Cover::Edges);
}

TEST(TurnKernels, ARowIsMixedFadedOrClearAsItsColumnSays) {
    // One column of three rows, walked at half speed: positions 0, 0.5, 1, 1.5, 2, 2.5 -> 2.
    std::vector<std::uint8_t> source(4 * (3 + kReadBehindColumns));
    const std::uint8_t rows[] = {0, 0, 0, 0, 100, 10, 0, 255, 200, 0, 51, 255};
    std::memcpy(source.data(), rows, sizeof rows);
    const float centre = 0;
    const float step = 0.5F * kLerpUnit;
    const std::int32_t begin = 1, fullBegin = 2, fullEnd = 4, end = 5;
    const std::uint8_t first = 51, last = 128;  // a fifth; 200 * 128 / 255 = 100.4
    const ColumnWalk walk{source.data(),
                          3,
                          1,
                          &centre,
                          &step,
                          2.0F * kLerpUnit,
                          0,
                          {&begin, &fullBegin, &fullEnd, &end, &first, &last},
                          nullptr,
                          Strip::Only,
                          {}};
    std::vector<std::uint8_t> target(24, kSentinel);
    scalar::walkColumns({target.data(), 4, 0, 6}, walk);
    EXPECT_EQ(target, (std::vector<std::uint8_t>{0,   0,  0,  0,    // before its first row
                                                 10,  1,  0,  26,   // 50 5 0 128, a fifth
                                                 100, 10, 0,  255,  //
                                                 150, 5,  26, 255,  //
                                                 100, 0,  26, 128,  //
                                                 0,   0,  0,  0}));
}

// The columns of a sparse mapping lie 256 MB apart, their rows beyond 2^25.
TEST(TurnKernels, ColumnsFarBeyondFourGigabytesAreFound) {
    constexpr std::size_t kColumns = 20;
    constexpr std::ptrdiff_t kStride = std::ptrdiff_t{1} << 26;
    constexpr std::size_t kBytes = 4 * (kColumns * std::size_t{kStride} + kReadBehindColumns);
    void* mapped = mmap(nullptr, kBytes, PROT_READ | PROT_WRITE,
                        MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (mapped == MAP_FAILED) GTEST_SKIP() << "no address space for the mapping";
    auto* source = static_cast<std::uint8_t*>(mapped);
    constexpr int kRow = (1 << 25) + 96;
    Walk made(kColumns, 40, 3, 1, Walk::Cover::Whole);
    for (std::size_t x = 0; x < kColumns; ++x) {
        made.centre[x] = 1.0F * kRow * kLerpUnit;
        made.step[x] = 4.0F * kLerpUnit;
        for (const int row : {kRow - 4, kRow, kRow + 4}) {
            const auto value = static_cast<std::uint8_t>(3 * x + static_cast<unsigned>(row & 15));
            std::memset(source + 4 * (static_cast<std::ptrdiff_t>(x) * kStride + row), value, 4);
        }
    }
    made.walk.source = source;
    made.walk.columnStride = kStride;
    made.walk.last = 1.0F * (1 << 26) * kLerpUnit;
    std::vector<Target> targets = supportedTargets();
    targets.push_back(kScalarTarget);
    for (const Target target : targets) {
        const ScopedTarget only(target);
        std::vector<std::uint8_t> pixels(4 * kColumns * 3);
        walkColumns({pixels.data(), 4 * kColumns, 0, 3}, made.walk);
        for (std::size_t x = 0; x < kColumns; ++x) {
            EXPECT_EQ(pixels[4 * x], 3 * x + 12) << targetName(target);
            EXPECT_EQ(pixels[4 * (kColumns + x)], 3 * x) << targetName(target);
            EXPECT_EQ(pixels[4 * (2 * kColumns + x)], 3 * x + 4) << targetName(target);
        }
    }
    munmap(mapped, kBytes);
}

TEST(TurnKernels, LerpByteIsRoundedAndStaysBetweenItsEnds) {
    for (int a = 0; a < 256; ++a)
        for (int b = 0; b < 256; ++b)
            for (const int weight : {0, 1, 16384, 32767}) {
                const int value = lerpByte(a, b, weight);
                ASSERT_GE(value, std::min(a, b));
                ASSERT_LE(value, std::max(a, b));
                ASSERT_NEAR(value, a + (b - a) * weight / 32768.0, 0.5);
            }
}

}  // namespace
}  // namespace skarnel::kernels
