#include "decoder/picture_limits.h"

#include <algorithm>
#include <chrono>

#include "imaging/io/heif_items.h"

namespace skarnel {
namespace {

constexpr std::chrono::seconds kMostTime{120};

/// Pixels that the picture may have; a larger one the reader refuses before it decodes any.
std::uint64_t possiblePixels(const DecodeLimits& limits, HeadSize stated, std::uint64_t fileBytes) {
    const auto pixels =
        static_cast<std::uint64_t>(stated.width) * static_cast<std::uint64_t>(stated.height);
    const auto most = static_cast<std::uint64_t>(limits.maxPixels);
    const auto unproven =
        static_cast<std::uint64_t>(std::min(limits.maxUnprovenPixels, io::kMaxUnprovenItemPixels));
    return std::min({pixels, most, std::max(unproven, fileBytes * kMaxPixelsPerByte)});
}

}  // namespace

/// Four bytes a pixel for the picture, four for its turned form, and up to sixteen for a codec
/// that holds a whole picture in its own samples; the rest is the program and its libraries.
CellLimits limitsForPictures(const DecodeLimits& limits) {
    constexpr std::uint64_t kPrograms = std::uint64_t{1} << 30U;
    const auto pixels = static_cast<std::uint64_t>(limits.maxPixels);
    return {kPrograms + pixels * 24, kMostTime};
}

CellLimits limitsForItems(const DecodeLimits& limits, std::optional<HeadSize> stated,
                          std::uint64_t fileBytes, unsigned processors) {
    CellLimits cell = limitsForPictures(limits);
    cell.threads = CellLimits::Threads::Many;
    const std::uint64_t pixels = possiblePixels(limits, stated.value_or(HeadSize{1, 1}), fileBytes);
    // A file need not be as long as it says. Samples of sixteen bits, not packed at all, and their
    // transparency have eight bytes a pixel.
    constexpr std::uint64_t kSpareBytes = std::uint64_t{1} << 20U;
    const std::uint64_t coded = std::min(fileBytes, pixels * 8 + kSpareBytes);

    // A sixteen-bit picture with transparency in the codec, in the library and in its colours, and
    // eight bytes a pixel of ours; a copy of what is coded in each of them. The threads' stacks
    // are small, or few.
    constexpr std::uint64_t kLibraries = std::uint64_t{96} << 20U;
    constexpr std::uint64_t kThread = std::uint64_t{3} << 20U;
    cell.dataBytes = kLibraries + processors * kThread + pixels * 48 + coded * 4;

    // Half a microsecond for a pixel and two for a byte are eight times what they took at most.
    constexpr std::uint64_t kMicroseconds = 1'000'000;
    const std::chrono::seconds time(1 + (pixels / 2 + coded * 2) / kMicroseconds);
    cell.processorTime = std::min<std::chrono::milliseconds>(time, kMostTime);
    return cell;
}

}  // namespace skarnel
