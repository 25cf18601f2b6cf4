// Vector twins of combinePackedColumns in resample.cpp.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/kernels/packed_columns_vector.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
// The targets' code follows.
#include <hwy/highway.h>

#include <algorithm>

#include "imaging/kernels/pixel_sums-inl.h"
#include "imaging/kernels/resample.h"
#include "imaging/kernels/vector_block-inl.h"

HWY_BEFORE_NAMESPACE();
namespace skarnel::kernels::HWY_NAMESPACE {
#if HWY_TARGET == HWY_SCALAR  // a processor without vectors runs the definition

void CombinePackedColumns(std::uint8_t* target, const std::uint8_t* source,
                          const PackedTaps& taps) {
    scalar::combinePackedColumns(target, source, taps);
}

#else
namespace hn = hwy::HWY_NAMESPACE;

// A block is 16 bytes: four neighbouring pixels, or the four sums of one target pixel.
#if HWY_CAP_GE512
inline constexpr std::size_t kBlocks = 4;
#elif HWY_CAP_GE256
inline constexpr std::size_t kBlocks = 2;
#else
inline constexpr std::size_t kBlocks = 1;
#endif
using Blocks8 = hn::FixedTag<std::uint8_t, 16 * kBlocks>;
using Blocks16 = hn::Repartition<std::int16_t, Blocks8>;
using Blocks32 = hn::Repartition<std::int32_t, Blocks8>;

/// Block i holds the four pixels from first[i] on.
HWY_INLINE hn::Vec<Blocks8> LoadBlocks(const std::uint8_t* source, const std::int32_t* first) {
    const hn::FixedTag<std::uint8_t, 16> block;
    const auto at = [&](std::size_t i) HWY_ATTR {
        return hn::LoadU(block, source + std::ptrdiff_t{4} * first[i]);
    };
#if HWY_CAP_GE512
    const hn::FixedTag<std::uint8_t, 32> half;
    return hn::Combine(Blocks8(), hn::Combine(half, at(3), at(2)), hn::Combine(half, at(1), at(0)));
#elif HWY_CAP_GE256
    return hn::Combine(Blocks8(), at(1), at(0));
#else
    return at(0);
#endif
}

/// Each block's two pairs of weights, spread over the block.
struct BlockWeights {
    hn::Vec<Blocks16> low;   // w0 w1 | w0 w1 | w0 w1 | w0 w1
    hn::Vec<Blocks16> high;  // w2 w3 | w2 w3 | w2 w3 | w2 w3
};

HWY_INLINE BlockWeights LoadWeights(const std::int16_t* weights) {
    const Blocks32 d32;
    const hn::Half<Blocks32> half;
    alignas(64) static constexpr std::int32_t kLow[16] = {0, 0, 0, 0, 2, 2, 2, 2,
                                                          4, 4, 4, 4, 6, 6, 6, 6};
    alignas(64) static constexpr std::int32_t kHigh[16] = {1, 1, 1, 1, 3, 3, 3, 3,
                                                           5, 5, 5, 5, 7, 7, 7, 7};
    // Two pairs a block: half as many lanes as the sums have.
    const auto pairs = hn::ZeroExtendVector(
        d32,
        hn::BitCast(half, hn::LoadU(hn::Repartition<std::int16_t, hn::Half<Blocks32>>(), weights)));
    return {hn::BitCast(Blocks16(), hn::TableLookupLanes(pairs, hn::SetTableIndices(d32, kLow))),
            hn::BitCast(Blocks16(), hn::TableLookupLanes(pairs, hn::SetTableIndices(d32, kHigh)))};
}

#if HWY_CAP_GE512
using Pixels32 = hn::ScalableTag<std::uint32_t>;
using PixelBytes = hn::Repartition<std::uint8_t, Pixels32>;
using Positions = hn::RebindToSigned<Pixels32>;
constexpr std::size_t kAtOnce = hn::MaxLanes(Pixels32());
constexpr std::size_t kMostWindows = 4;

/// The run of pixels in which a vector of samples has all that it reads: kWindows windows as large
/// as a vector, from the first sample's place 0 to the last sample's last place. What a sample
/// reads in place p lies at its offset + p in the run.
template <std::size_t kWindows>
class Run {
  public:
    /// `at` is where the run starts; all of its windows lie in the row.
    HWY_INLINE Run(const std::uint8_t* HWY_RESTRICT at, hn::Vec<Positions> offset)
        : offset_(offset) {
        const auto window = [&](std::size_t i) HWY_ATTR {
            return hn::BitCast(
                Pixels32(), hn::LoadU(PixelBytes(), at + 4 * std::min(i, kWindows - 1) * kAtOnce));
        };
        first_ = window(0);
        second_ = window(1);
        third_ = window(2);
        fourth_ = window(3);
    }

    /// Every sample's pixel in `place` of its group.
    HWY_INLINE hn::Vec<PixelBytes> pixels(int place) const {
        const auto at = hn::Add(offset_, hn::Set(Positions(), place));
        const auto low = PickFromTwo(Pixels32(), first_, second_, at);
        if constexpr (kWindows <= 2) return hn::BitCast(PixelBytes(), low);
        const auto beyond =
            hn::Sub(at, hn::Set(Positions(), 2 * static_cast<std::int32_t>(kAtOnce)));
        const auto high = PickFromTwo(Pixels32(), third_, fourth_, beyond);
        const auto isLow = hn::RebindMask(Pixels32(), hn::Lt(beyond, hn::Zero(Positions())));
        return hn::BitCast(PixelBytes(), hn::IfThenElse(isLow, low, high));
    }

  private:
    hn::Vec<Positions> offset_;
    hn::Vec<Pixels32> first_, second_, third_, fourth_;
};

/// A vector of samples from sample x on, of each the first `places` of its group.
template <std::size_t kWindows>
HWY_INLINE hn::Vec<PixelBytes> CombinedRun(const std::uint8_t* HWY_RESTRICT source,
                                           const PackedTaps& taps, std::size_t x,
                                           std::size_t places) {
    const PixelBytes d8;
    const Positions di32;
    const auto half = hn::Set(di32, kTapUnit / 2);
    const std::int32_t* HWY_RESTRICT first = taps.first + x;
    const Run<kWindows> run(source + std::ptrdiff_t{4} * first[0],
                            hn::Sub(hn::LoadU(di32, first), hn::Set(di32, first[0])));
    // Two pairs of weights a sample, side by side.
    const auto* weights = reinterpret_cast<const std::uint8_t*>(taps.weights + 4 * x);
    const auto lower = hn::BitCast(di32, hn::LoadU(d8, weights));
    const auto upper = hn::BitCast(di32, hn::LoadU(d8, weights + 4 * kAtOnce));
    ComponentSums<hn::Vec<Positions>> sums{half, half, half, half};
    AddPair(d8, run.pixels(0), run.pixels(1), hn::ConcatEven(di32, upper, lower), sums);
    if (places > 2)
        AddPair(d8, run.pixels(2), places > 3 ? run.pixels(3) : hn::Zero(d8),
                hn::ConcatOdd(di32, upper, lower), sums);
    return PixelsOf(d8, sums);
}

/// Samples [0, end) of one group each, a vector of them at a time, up to the first whose run is too
/// long to pay or has a window beyond the row; returns `end`.
std::size_t CombineRuns(std::uint8_t* HWY_RESTRICT target, const std::uint8_t* HWY_RESTRICT source,
                        const PackedTaps& taps) {
    const PixelBytes d8;
    std::size_t x = 0;
    for (; x + kAtOnce <= taps.samples; x += kAtOnce) {
        const auto start = static_cast<std::size_t>(taps.first[x]);
        const auto last = static_cast<std::size_t>(taps.first[x + kAtOnce - 1]) + 3;
        const std::size_t windows = (last - start) / kAtOnce + 1;
        if (windows > kMostWindows || start + windows * kAtOnce > taps.sourcePixels) break;
        // A group that ends with the row may have been moved back there and use all of its places.
        const std::size_t places = last + 1 == taps.sourcePixels ? 4 : taps.usedPlaces;
        const auto combined = windows == 1   ? CombinedRun<1>(source, taps, x, places)
                              : windows == 2 ? CombinedRun<2>(source, taps, x, places)
                              : windows == 3 ? CombinedRun<3>(source, taps, x, places)
                                             : CombinedRun<4>(source, taps, x, places);
        hn::StoreU(combined, d8, target + 4 * x);
    }
    return x;
}
#endif

void CombinePackedColumns(std::uint8_t* HWY_RESTRICT target,
                          const std::uint8_t* HWY_RESTRICT source, const PackedTaps& taps) {
    const Blocks8 d8;
    const Blocks32 d32;
    const hn::Rebind<std::uint8_t, Blocks32> dPixels;
    // Bytes of pixels 0 and 1 (2 and 3) of a block side by side, each widened by a zero.
    alignas(16) static constexpr std::uint8_t kLow[16] = {0, 128, 4, 128, 1, 128, 5, 128,
                                                          2, 128, 6, 128, 3, 128, 7, 128};
    alignas(16) static constexpr std::uint8_t kHigh[16] = {8,  128, 12, 128, 9,  128, 13, 128,
                                                           10, 128, 14, 128, 11, 128, 15, 128};
    const auto low = hn::LoadDup128(d8, kLow);
    const auto high = hn::LoadDup128(d8, kHigh);
    std::size_t x = 0;
#if HWY_CAP_GE512
    if (taps.groups == 1) x = CombineRuns(target, source, taps);
#endif
    for (; x + kBlocks <= taps.samples; x += kBlocks) {
        auto sum = hn::Set(d32, kTapUnit / 2);
        auto rest = hn::Zero(d32);
        for (std::size_t group = 0; group < taps.groups; ++group) {
            const auto pixels = LoadBlocks(source + 16 * group, taps.first + x);
            const BlockWeights weights = LoadWeights(taps.weights + 4 * (group * taps.samples + x));
            sum = hn::ReorderWidenMulAccumulate(
                d32, hn::BitCast(Blocks16(), hn::TableLookupBytesOr0(pixels, low)), weights.low,
                sum, rest);
            sum = hn::ReorderWidenMulAccumulate(
                d32, hn::BitCast(Blocks16(), hn::TableLookupBytesOr0(pixels, high)), weights.high,
                sum, rest);
        }
        const auto shifted = hn::ShiftRight<14>(hn::RearrangeToOddPlusEven(sum, rest));
        hn::StoreU(hn::DemoteTo(dPixels, shifted), dPixels, target + 4 * x);
    }
    for (; x < taps.samples; ++x) {
        std::int32_t sums[4] = {kTapUnit / 2, kTapUnit / 2, kTapUnit / 2, kTapUnit / 2};
        for (std::size_t group = 0; group < taps.groups; ++group)
            for (std::size_t i = 0; i < 16; ++i)
                sums[i % 4] +=
                    source[16 * group + 4 * static_cast<std::size_t>(taps.first[x]) + i] *
                    taps.weights[4 * (group * taps.samples + x) + i / 4];
        for (std::size_t k = 0; k < 4; ++k)
            target[4 * x + k] = static_cast<std::uint8_t>(sums[k] / kTapUnit);
    }
}

#endif
}  // namespace skarnel::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace skarnel::kernels {
HWY_EXPORT(CombinePackedColumns);

namespace vector {
void combinePackedColumns(std::uint8_t* target, const std::uint8_t* source,
                          const PackedTaps& taps) {
    HWY_DYNAMIC_DISPATCH(CombinePackedColumns)(target, source, taps);
}
}  // namespace vector

}  // namespace skarnel::kernels
#endif
