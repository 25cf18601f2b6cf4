// The vector twins of page_scan.h, compiled once for every target of the processor family.
#include "textimaging/kernels/page_scan.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "textimaging/kernels/page_scan_vector.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
// After it, as the library asks.
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace skarnel::kernels::HWY_NAMESPACE {
#if HWY_TARGET == HWY_SCALAR

// One lane cannot be seen as four bytes; the definition serves.
using scalar::endOfUsed;
using scalar::firstUsed;
using scalar::knockOutRow;

#else

namespace hn = hwy::HWY_NAMESPACE;

using Colors = hn::ScalableTag<std::uint32_t>;
using Sums = hn::RebindToSigned<Colors>;
using Samples = hn::Repartition<std::uint8_t, Colors>;

// One pixel a lane, whatever the byte order: red is the lane's first byte in memory.
HWY_ATTR hn::Vec<Colors> load(const std::uint8_t* pixels) {
    return hn::BitCast(Colors(), hn::LoadU(Samples(), pixels));
}

HWY_ATTR hn::Vec<Colors> repeat(ScanPixel pixel) {
    std::uint32_t bits = 0;
    __builtin_memcpy(&bits, pixel.data(), 4);
    return hn::Set(Colors(), bits);
}

HWY_ATTR void knockOutRow(std::uint8_t* target, const std::uint8_t* source, ScanPixel reference,
                          std::size_t pixels) {
    const Colors d;
    const std::size_t lanes = hn::Lanes(d);
    const auto colorBits = repeat({255, 255, 255, 0});
    const auto wanted = hn::And(repeat(reference), colorBits);
    std::size_t x = 0;
    for (; x + lanes <= pixels; x += lanes) {
        const auto pixel = load(source + 4 * x);       // r g b a
        const auto color = hn::And(pixel, colorBits);  // r g b 0
        const auto result = hn::IfThenElse(hn::Eq(color, wanted), color, pixel);
        hn::StoreU(hn::BitCast(Samples(), result), Samples(), target + 4 * x);
    }
    scalar::knockOutRow(target + 4 * x, source + 4 * x, reference, pixels - x);
}

// Which of the lanes' pixels are used. Most of a page is its ground: equal bytes are told first.
HWY_ATTR hn::Mask<Sums> usedLanes(const std::uint8_t* pixels, hn::Vec<Samples> reference,
                                  hn::Vec<Sums> limit) {
    const Sums d;
    const auto pixel = hn::LoadU(Samples(), pixels);
    const auto difference = hn::BitCast(
        Colors(),
        hn::Sub(hn::Max(pixel, reference), hn::Min(pixel, reference)));  // |r| |g| |b| |a|
    if (hn::AllTrue(Colors(), hn::Eq(difference, hn::Zero(Colors()))))
        return hn::Gt(hn::Zero(d), limit);
    const auto low = hn::Set(Colors(), 0xFF);
    const auto byte0 = hn::BitCast(d, hn::And(difference, low));
    const auto byte1 = hn::BitCast(d, hn::And(hn::ShiftRight<8>(difference), low));
    const auto byte2 = hn::BitCast(d, hn::And(hn::ShiftRight<16>(difference), low));
    const auto byte3 = hn::BitCast(d, hn::ShiftRight<24>(difference));
    const auto sum = hn::Add(hn::Add(hn::Mul(byte0, byte0), hn::Mul(byte1, byte1)),
                             hn::Add(hn::Mul(byte2, byte2), hn::Mul(byte3, byte3)));
    return hn::Gt(sum, limit);
}

HWY_ATTR std::size_t firstUsed(const std::uint8_t* row, const UsedRule& rule, std::size_t pixels) {
    const Sums d;
    const std::size_t lanes = hn::Lanes(d);
    const auto reference = hn::BitCast(Samples(), repeat(rule.reference));
    const auto limit = hn::Set(d, rule.squaredLimit);
    std::size_t x = 0;
    for (; x + lanes <= pixels; x += lanes) {
        const std::ptrdiff_t lane = hn::FindFirstTrue(d, usedLanes(row + 4 * x, reference, limit));
        if (lane >= 0) return x + static_cast<std::size_t>(lane);
    }
    return x + scalar::firstUsed(row + 4 * x, rule, pixels - x);
}

HWY_ATTR std::size_t endOfUsed(const std::uint8_t* row, const UsedRule& rule, std::size_t pixels) {
    const Sums d;
    const std::size_t lanes = hn::Lanes(d);
    const auto reference = hn::BitCast(Samples(), repeat(rule.reference));
    const auto limit = hn::Set(d, rule.squaredLimit);
    std::size_t end = pixels;
    for (; end >= lanes; end -= lanes) {
        const std::uint8_t* block = row + 4 * (end - lanes);
        if (!hn::AllFalse(d, usedLanes(block, reference, limit)))
            return end - lanes + scalar::endOfUsed(block, rule, lanes);
    }
    return scalar::endOfUsed(row, rule, end);
}

#endif

}  // namespace skarnel::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace skarnel::kernels::vector {

HWY_EXPORT(knockOutRow);
HWY_EXPORT(firstUsed);
HWY_EXPORT(endOfUsed);

void knockOutRow(std::uint8_t* target, const std::uint8_t* source, ScanPixel reference,
                 std::size_t pixels) {
    HWY_DYNAMIC_DISPATCH(knockOutRow)(target, source, reference, pixels);
}

std::size_t firstUsed(const std::uint8_t* row, const UsedRule& rule, std::size_t pixels) {
    return HWY_DYNAMIC_DISPATCH(firstUsed)(row, rule, pixels);
}

std::size_t endOfUsed(const std::uint8_t* row, const UsedRule& rule, std::size_t pixels) {
    return HWY_DYNAMIC_DISPATCH(endOfUsed)(row, rule, pixels);
}

}  // namespace skarnel::kernels::vector
#endif
