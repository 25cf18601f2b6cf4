// Square blocks of pixels in registers: turning them over, and picking lanes from two vectors.
#if defined(SKARNEL_VECTOR_BLOCK_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef SKARNEL_VECTOR_BLOCK_INL
#undef SKARNEL_VECTOR_BLOCK_INL
#else
#define SKARNEL_VECTOR_BLOCK_INL
#endif

#include <hwy/highway.h>

#include <cstddef>
#include <cstdint>

// Arrays of vectors need a size that is known to the compiler.
#undef SKARNEL_VECTOR_BLOCKS
#if HWY_TARGET == HWY_SCALAR || HWY_HAVE_SCALABLE
#define SKARNEL_VECTOR_BLOCKS 0
#else
#define SKARNEL_VECTOR_BLOCKS 1
#endif

HWY_BEFORE_NAMESPACE();
namespace skarnel::kernels::HWY_NAMESPACE {
#if SKARNEL_VECTOR_BLOCKS
namespace hn = hwy::HWY_NAMESPACE;

/// Toward zero, for values that are known to fit; the general conversion also mends those that
/// do not.
template <class DF>
HWY_INLINE hn::Vec<hn::RebindToSigned<DF>> Truncated(DF, hn::Vec<DF> values) {
    const hn::RebindToSigned<DF> di;
#if HWY_TARGET == HWY_AVX3
    return hn::Vec<decltype(di)>{_mm512_cvttps_epi32(values.raw)};
#elif HWY_TARGET == HWY_AVX2
    return hn::Vec<decltype(di)>{_mm256_cvttps_epi32(values.raw)};
#else
    return hn::ConvertTo(di, values);
#endif
}

/// Lane 0 in every lane, without a way through the other registers.
template <class DI32>
HWY_INLINE hn::Vec<DI32> FirstLane(DI32 di32, hn::Vec<DI32> values) {
#if HWY_TARGET == HWY_AVX3
    (void)di32;
    return hn::Vec<DI32>{_mm512_broadcastd_epi32(_mm512_castsi512_si128(values.raw))};
#elif HWY_TARGET == HWY_AVX2
    (void)di32;
    return hn::Vec<DI32>{_mm256_broadcastd_epi32(_mm256_castsi256_si128(values.raw))};
#else
    return hn::Set(di32, hn::GetLane(values));
#endif
}

/// Lane i = lane index[i] of `low` and `high` one after the other; 0 <= index[i] < 2 * lanes.
template <class D32>
HWY_INLINE hn::Vec<D32> PickFromTwo(D32 d32, hn::Vec<D32> low, hn::Vec<D32> high,
                                    hn::Vec<hn::RebindToSigned<D32>> index) {
#if HWY_TARGET == HWY_AVX3
    (void)d32;
    return hn::Vec<D32>{_mm512_permutex2var_epi32(low.raw, index.raw, high.raw)};
#else
    const hn::RebindToSigned<D32> di32;
    const auto last = hn::Set(di32, static_cast<std::int32_t>(hn::Lanes(d32)) - 1);
    const auto lane = hn::IndicesFromVec(d32, hn::And(index, last));
    return hn::IfThenElse(hn::RebindMask(d32, hn::Gt(index, last)),
                          hn::TableLookupLanes(high, lane), hn::TableLookupLanes(low, lane));
#endif
}

/// Four vectors of 4 x 4 blocks of lanes: each block is turned over.
template <class D32>
HWY_INLINE void TransposeWithinBlocks(D32 d32, hn::Vec<D32>* HWY_RESTRICT v) {
    const hn::Repartition<std::uint64_t, D32> d64;
    const auto a = hn::BitCast(d64, hn::InterleaveLower(d32, v[0], v[1]));  // 00 10 01 11
    const auto b = hn::BitCast(d64, hn::InterleaveLower(d32, v[2], v[3]));  // 20 30 21 31
    const auto c = hn::BitCast(d64, hn::InterleaveUpper(d32, v[0], v[1]));
    const auto d = hn::BitCast(d64, hn::InterleaveUpper(d32, v[2], v[3]));
    v[0] = hn::BitCast(d32, hn::InterleaveLower(d64, a, b));  // 00 10 20 30
    v[1] = hn::BitCast(d32, hn::InterleaveUpper(d64, a, b));
    v[2] = hn::BitCast(d32, hn::InterleaveLower(d64, c, d));
    v[3] = hn::BitCast(d32, hn::InterleaveUpper(d64, c, d));
}

/// As many vectors as each has lanes: lane j of vector i and lane i of vector j change places.
template <class D32>
HWY_INLINE void Transpose(D32 d32, hn::Vec<D32>* HWY_RESTRICT v) {
    constexpr std::size_t kLanes = hn::MaxLanes(D32());
#pragma GCC unroll 4
    for (std::size_t i = 0; i < kLanes; i += 4) TransposeWithinBlocks(d32, v + i);
        // What is left is the same exchange with blocks for lanes.
#if HWY_TARGET == HWY_AVX3
#pragma GCC unroll 4
    for (std::size_t i = 0; i < 4; ++i) {
        const auto a = _mm512_shuffle_i32x4(v[i].raw, v[i + 4].raw, 0x44);  // 0.0 0.1 1.0 1.1
        const auto b = _mm512_shuffle_i32x4(v[i].raw, v[i + 4].raw, 0xEE);  // 0.2 0.3 1.2 1.3
        const auto c = _mm512_shuffle_i32x4(v[i + 8].raw, v[i + 12].raw, 0x44);
        const auto d = _mm512_shuffle_i32x4(v[i + 8].raw, v[i + 12].raw, 0xEE);
        v[i].raw = _mm512_shuffle_i32x4(a, c, 0x88);  // 0.0 1.0 2.0 3.0
        v[i + 4].raw = _mm512_shuffle_i32x4(a, c, 0xDD);
        v[i + 8].raw = _mm512_shuffle_i32x4(b, d, 0x88);
        v[i + 12].raw = _mm512_shuffle_i32x4(b, d, 0xDD);
    }
#elif HWY_TARGET == HWY_AVX2
#pragma GCC unroll 4
    for (std::size_t i = 0; i < 4; ++i) {
        const auto upper = hn::ConcatUpperUpper(d32, v[i + 4], v[i]);
        v[i] = hn::ConcatLowerLower(d32, v[i + 4], v[i]);
        v[i + 4] = upper;
    }
#else
    static_assert(kLanes == 4, "only vectors of one block need no exchange of blocks");
#endif
}

#endif
}  // namespace skarnel::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // include guard by target
