// Vector twins of pixel_ops.cpp.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/kernels/pixel_ops_vector.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
// The targets' code follows.
#include <hwy/cache_control.h>
#include <hwy/highway.h>

#include <cstring>

#include "imaging/kernels/pixel_ops.h"

HWY_BEFORE_NAMESPACE();
namespace skarnel::kernels::HWY_NAMESPACE {
#if HWY_TARGET == HWY_SCALAR  // a processor without vectors runs the definition

void OverRow(std::uint8_t* target, const std::uint8_t* source, std::size_t pixels) {
    scalar::overRow(target, source, pixels);
}

void OverColorRow(std::uint8_t* target, Pixel color, std::size_t pixels) {
    scalar::overColorRow(target, color, pixels);
}

void FillRow(std::uint8_t* target, Pixel color, std::size_t pixels) {
    scalar::fillRow(target, color, pixels);
}

void ScaleRow(std::uint8_t* target, const std::uint8_t* source, std::uint8_t factor,
              std::size_t pixels) {
    scalar::scaleRow(target, source, factor, pixels);
}

void StreamRow(std::uint8_t* target, const std::uint8_t* source, std::size_t pixels) {
    scalar::streamRow(target, source, pixels);
}

void FlattenRow(std::uint8_t* target, const std::uint8_t* source, Pixel ground,
                std::size_t pixels) {
    scalar::flattenRow(target, source, ground, pixels);
}

bool HasHiddenColours(const std::uint8_t* row, std::size_t pixels) {
    return scalar::hasHiddenColours(row, pixels);
}

#else
namespace hn = hwy::HWY_NAMESPACE;

/// multiply255 in 16-bit lanes.
template <class D16, class V16>
HWY_INLINE V16 Multiply255(D16 d16, V16 a, V16 b) {
    const auto t = hn::Add(hn::Mul(a, b), hn::Set(d16, std::uint16_t{128}));
    return hn::ShiftRight<8>(hn::Add(t, hn::ShiftRight<8>(t)));
}

/// Every byte times the factor of its 16-bit lane over 255.
template <class D8, class V16>
HWY_INLINE hn::Vec<D8> ScaledBytes(D8 d8, hn::Vec<D8> bytes, V16 factor) {
    const hn::Repartition<std::uint16_t, D8> d16;
    const auto v = hn::BitCast(d16, bytes);
    const auto even = Multiply255(d16, hn::And(v, hn::Set(d16, std::uint16_t{0xFF})), factor);
    const auto odd = Multiply255(d16, hn::ShiftRight<8>(v), factor);
    return hn::BitCast(d8, hn::Or(even, hn::ShiftLeft<8>(odd)));
}

template <class D8>
HWY_INLINE hn::Vec<D8> Over(D8 d8, hn::Vec<D8> target, hn::Vec<D8> source) {
    const hn::Repartition<std::uint16_t, D8> d16;
    const hn::Repartition<std::uint32_t, D8> d32;
    const auto alpha = hn::ShiftRight<24>(hn::BitCast(d32, source));
    const auto rest = hn::Sub(hn::Set(d32, 255U), alpha);
    const auto factor = hn::BitCast(d16, hn::Or(rest, hn::ShiftLeft<16>(rest)));
    return hn::SaturatedAdd(source, ScaledBytes(d8, target, factor));
}

void OverRow(std::uint8_t* target, const std::uint8_t* source, std::size_t pixels) {
    const hn::ScalableTag<std::uint8_t> d8;
    const std::size_t lanes = hn::Lanes(d8);
    std::size_t i = 0;
    for (; i + lanes <= 4 * pixels; i += lanes)
        hn::StoreU(Over(d8, hn::LoadU(d8, target + i), hn::LoadU(d8, source + i)), d8, target + i);
    scalar::overRow(target + i, source + i, pixels - i / 4);
}

void OverColorRow(std::uint8_t* target, Pixel color, std::size_t pixels) {
    const hn::ScalableTag<std::uint8_t> d8;
    const hn::Repartition<std::uint32_t, decltype(d8)> d32;
    std::uint32_t bits;
    std::memcpy(&bits, color.data(), 4);
    const auto source = hn::BitCast(d8, hn::Set(d32, bits));
    const std::size_t lanes = hn::Lanes(d8);
    std::size_t i = 0;
    for (; i + lanes <= 4 * pixels; i += lanes)
        hn::StoreU(Over(d8, hn::LoadU(d8, target + i), source), d8, target + i);
    scalar::overColorRow(target + i, color, pixels - i / 4);
}

void FillRow(std::uint8_t* target, Pixel color, std::size_t pixels) {
    const hn::ScalableTag<std::uint8_t> d8;
    const hn::Repartition<std::uint32_t, decltype(d8)> d32;
    std::uint32_t bits;
    std::memcpy(&bits, color.data(), 4);
    const auto source = hn::BitCast(d8, hn::Set(d32, bits));
    const std::size_t lanes = hn::Lanes(d8);
    std::size_t i = 0;
    for (; i + lanes <= 4 * pixels; i += lanes) hn::StoreU(source, d8, target + i);
    scalar::fillRow(target + i, color, pixels - i / 4);
}

void ScaleRow(std::uint8_t* target, const std::uint8_t* source, std::uint8_t factor,
              std::size_t pixels) {
    const hn::ScalableTag<std::uint8_t> d8;
    const hn::Repartition<std::uint16_t, decltype(d8)> d16;
    const auto factors = hn::Set(d16, std::uint16_t{factor});
    const std::size_t lanes = hn::Lanes(d8);
    std::size_t i = 0;
    for (; i + lanes <= 4 * pixels; i += lanes)
        hn::StoreU(ScaledBytes(d8, hn::LoadU(d8, source + i), factors), d8, target + i);
    scalar::scaleRow(target + i, source + i, factor, pixels - i / 4);
}

void StreamRow(std::uint8_t* HWY_RESTRICT target, const std::uint8_t* HWY_RESTRICT source,
               std::size_t pixels) {
    const hn::ScalableTag<std::uint8_t> d8;
    const std::size_t lanes = hn::Lanes(d8);
    const std::size_t bytes = 4 * pixels;
    const std::size_t misaligned = reinterpret_cast<std::uintptr_t>(target) % lanes;
    const std::size_t head = misaligned == 0 ? 0 : lanes - misaligned;
    if (head + lanes > bytes) return scalar::streamRow(target, source, pixels);
    std::memcpy(target, source, head);
    std::size_t i = head;
    for (; i + lanes <= bytes; i += lanes) hn::Stream(hn::LoadU(d8, source + i), d8, target + i);
    std::memcpy(target + i, source + i, bytes - i);
}

void FlattenRow(std::uint8_t* HWY_RESTRICT target, const std::uint8_t* HWY_RESTRICT source,
                Pixel ground, std::size_t pixels) {
    const hn::ScalableTag<std::uint8_t> d8;
    const hn::Repartition<std::uint32_t, decltype(d8)> d32;
    alignas(16) static constexpr std::uint8_t kSwapped[16] = {2,  1, 0, 3,  6,  5,  4,  7,
                                                              10, 9, 8, 11, 14, 13, 12, 15};
    const auto swapped = hn::LoadDup128(d8, kSwapped);
    const auto opaque = hn::BitCast(d8, hn::Set(d32, 0xFF000000U));
    std::uint32_t bits;
    std::memcpy(&bits, ground.data(), 4);
    const auto under = hn::BitCast(d8, hn::Set(d32, bits));
    const std::size_t lanes = hn::Lanes(d8);
    const std::size_t bytes = 4 * pixels;
    if (bytes < lanes) return scalar::flattenRow(target, source, ground, pixels);
    const auto flatten = [&](std::size_t i) HWY_ATTR {
        auto mixed = hn::LoadU(d8, source + i);
        // Opaque pixels, as most pictures have, hide the ground.
        const auto alpha = hn::BitCast(d32, hn::And(mixed, opaque));
        if (!hn::AllTrue(d32, hn::Eq(alpha, hn::BitCast(d32, opaque)))) {
            const auto isNothing = hn::Eq(hn::BitCast(d32, mixed), hn::Zero(d32));
            mixed = hn::AllTrue(d32, isNothing) ? under : Over(d8, under, mixed);
        }
        hn::StoreU(hn::Or(hn::TableLookupBytes(mixed, swapped), opaque), d8, target + i);
    };
    std::size_t i = 0;
    for (; i + lanes <= bytes; i += lanes) flatten(i);
    // The last vector overlaps the one before; both write the same bytes.
    if (i < bytes) flatten(bytes - lanes);
}

/// Alpha is the highest byte of a pixel's word: what is looked for are the words 1 to 0xFFFFFF.
bool HasHiddenColours(const std::uint8_t* HWY_RESTRICT row, std::size_t pixels) {
    const hn::ScalableTag<std::uint8_t> d8;
    const hn::Repartition<std::uint32_t, decltype(d8)> d32;
    const auto one = hn::Set(d32, 1U);
    auto least = hn::Set(d32, 0xFFFFFFFFU);
    const std::size_t lanes = hn::Lanes(d8);
    std::size_t i = 0;
    for (; i + lanes <= 4 * pixels; i += lanes)
        least = hn::Min(least, hn::Sub(hn::BitCast(d32, hn::LoadU(d8, row + i)), one));
    const auto hidden = hn::Lt(least, hn::Set(d32, 0xFFFFFFU));
    return !hn::AllFalse(d32, hidden) || scalar::hasHiddenColours(row + i, pixels - i / 4);
}

#endif
}  // namespace skarnel::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace skarnel::kernels {
HWY_EXPORT(OverRow);
HWY_EXPORT(OverColorRow);
HWY_EXPORT(FillRow);
HWY_EXPORT(ScaleRow);
HWY_EXPORT(StreamRow);
HWY_EXPORT(FlattenRow);
HWY_EXPORT(HasHiddenColours);

namespace vector {
void overRow(std::uint8_t* target, const std::uint8_t* source, std::size_t pixels) {
    HWY_DYNAMIC_DISPATCH(OverRow)(target, source, pixels);
}

void overColorRow(std::uint8_t* target, Pixel color, std::size_t pixels) {
    HWY_DYNAMIC_DISPATCH(OverColorRow)(target, color, pixels);
}

void fillRow(std::uint8_t* target, Pixel color, std::size_t pixels) {
    HWY_DYNAMIC_DISPATCH(FillRow)(target, color, pixels);
}

void scaleRow(std::uint8_t* target, const std::uint8_t* source, std::uint8_t factor,
              std::size_t pixels) {
    HWY_DYNAMIC_DISPATCH(ScaleRow)(target, source, factor, pixels);
}

void streamRow(std::uint8_t* target, const std::uint8_t* source, std::size_t pixels) {
    HWY_DYNAMIC_DISPATCH(StreamRow)(target, source, pixels);
}

void flattenRow(std::uint8_t* target, const std::uint8_t* source, Pixel ground,
                std::size_t pixels) {
    HWY_DYNAMIC_DISPATCH(FlattenRow)(target, source, ground, pixels);
}

bool hasHiddenColours(const std::uint8_t* row, std::size_t pixels) {
    return HWY_DYNAMIC_DISPATCH(HasHiddenColours)(row, pixels);
}
}  // namespace vector

}  // namespace skarnel::kernels
#endif
