// Fetching neighbouring source pixels for a vector of target pixels, without gathers.
#if defined(SKARNEL_VECTOR_LOOKUP_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef SKARNEL_VECTOR_LOOKUP_INL
#undef SKARNEL_VECTOR_LOOKUP_INL
#else
#define SKARNEL_VECTOR_LOOKUP_INL
#endif

#include <hwy/highway.h>

#include <cstddef>
#include <cstdint>

// A lambda that is used more than once would otherwise become a call for each vector, with its
// constants loaded anew.
#ifndef SKARNEL_INLINE_LAMBDA
#define SKARNEL_INLINE_LAMBDA HWY_ATTR __attribute__((always_inline))
#endif

HWY_BEFORE_NAMESPACE();
namespace skarnel::kernels::HWY_NAMESPACE {
#if HWY_TARGET != HWY_SCALAR
namespace hn = hwy::HWY_NAMESPACE;

template <class V>
struct PixelPair {
    V first;
    V second;
    bool found;
};

/// The pixels from[i] and from[i] + 1 for every lane i. `from` does not fall from its first lane to
/// its last, so that the lanes lie in a run of pixels: whole vectors of it are loaded and each lane
/// picks its own. Not found when that would read beyond the source, or the run is so long that
/// single loads are no slower.
template <class D32>
HWY_INLINE PixelPair<hn::Vec<D32>> PixelPairs(D32 d32, const std::uint8_t* HWY_RESTRICT source,
                                              std::size_t readablePixels,
                                              hn::Vec<hn::RebindToSigned<D32>> from,
                                              std::size_t start, std::size_t last) {
    const hn::Repartition<std::uint8_t, D32> d8;
    const hn::RebindToSigned<D32> di32;
    const std::size_t lanes = hn::Lanes(d32);
    const std::size_t windows = (last - start) / lanes + 1;
    if (windows > 4 || start + windows * lanes + 1 > readablePixels)
        return {hn::Zero(d32), hn::Zero(d32), false};
    const auto offset = hn::Sub(from, hn::Set(di32, static_cast<std::int32_t>(start)));
    const auto lane =
        hn::IndicesFromVec(d32, hn::And(offset, hn::Set(di32, static_cast<int>(lanes) - 1)));
    const std::uint8_t* HWY_RESTRICT at = source + 4 * start;
    const auto pick = [&](const std::uint8_t* bytes) HWY_ATTR {
        return hn::TableLookupLanes(hn::BitCast(d32, hn::LoadU(d8, bytes)), lane);
    };
    auto first = pick(at);
    auto second = pick(at + 4);
    for (std::size_t window = 1; window < windows; ++window) {
        at += 4 * lanes;
        const auto later = hn::RebindMask(
            d32, hn::Gt(offset, hn::Set(di32, static_cast<int>(window * lanes) - 1)));
        first = hn::IfThenElse(later, pick(at), first);
        second = hn::IfThenElse(later, pick(at + 4), second);
    }
    return {first, second, true};
}

/// The same for lanes that lie in memory.
template <class D32>
HWY_INLINE PixelPair<hn::Vec<D32>> PixelPairs(D32 d32, const std::uint8_t* HWY_RESTRICT source,
                                              std::size_t readablePixels,
                                              const std::int32_t* HWY_RESTRICT from) {
    return PixelPairs(d32, source, readablePixels, hn::LoadU(hn::RebindToSigned<D32>(), from),
                      static_cast<std::size_t>(from[0]),
                      static_cast<std::size_t>(from[hn::Lanes(d32) - 1]));
}

#endif
}  // namespace skarnel::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // include guard by target
