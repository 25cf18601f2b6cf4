#include "util/image/average.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "util/geometry/integers.h"

namespace skarnel::Average {
namespace {

/// The bytes from the first pixel to the last one, padding between rows included.
std::int64_t bytesHeldBy(const NSBitmapImageRep& bitmap) {
    return static_cast<std::int64_t>(bitmap.bytesPerRow()) * (bitmap.pixelsHigh() - 1) +
           std::int64_t{bitmap.pixelsWide()} * bitmap.samplesPerPixel();
}

std::array<std::uint32_t, 3> sumGroups(const std::uint8_t* bytes, std::int64_t count) {
    std::array<std::uint32_t, 3> sums{};
    for (std::int64_t at = 0; at < count; ++at) sums[static_cast<std::size_t>(at % 3)] += bytes[at];
    return sums;
}

}  // namespace

std::optional<NSColor> averageColor(const NSImage& image) {
    const auto bitmap =
        std::dynamic_pointer_cast<NSBitmapImageRep>(image.bestRepresentationForDevice());
    if (!bitmap) return std::nullopt;
    const std::int32_t count = toInt32(bitmap->size().width * bitmap->size().height);
    const std::int64_t wanted = 3 * std::max(std::int64_t{count}, std::int64_t{0});
    const auto sums = sumGroups(bitmap->bitmapData(), std::min(wanted, bytesHeldBy(*bitmap)));
    const auto component = [count](std::uint32_t sum) {
        return static_cast<double>(static_cast<float>(sum) / static_cast<float>(count) *
                                   0.00390625F);
    };
    return NSColor::colorWithDeviceRed(component(sums[0]), component(sums[1]), component(sums[2]),
                                       1.0);
}

}  // namespace skarnel::Average
