#include "decoder/picture_limits.h"

#include <algorithm>
#include <chrono>

#include "imaging/io/readers.h"

namespace skarnel {
namespace {

constexpr std::chrono::milliseconds kMostTime{120'000};
constexpr auto kTrustedPixels = static_cast<std::uint64_t>(io::kMaxDearUnprovenPixels);

/// Whatever a picture says: four bytes a pixel for it, four for its turned form, and up to sixteen
/// for a codec that holds a whole picture in its own samples; the rest is the program and its
/// libraries.
CellLimits mostLimits(const DecodeLimits& limits) {
    constexpr std::uint64_t kPrograms = std::uint64_t{1} << 30U;
    const auto pixels = static_cast<std::uint64_t>(limits.maxPixels);
    return {kPrograms + pixels * 24, kMostTime};
}

/// Pixels that the picture may have, where so many are taken on trust; a larger one the reader
/// refuses before it decodes any.
std::uint64_t possiblePixels(const DecodeLimits& limits, HeadSize stated, std::uint64_t fileBytes,
                             std::int64_t onTrust) {
    const auto pixels =
        static_cast<std::uint64_t>(stated.width) * static_cast<std::uint64_t>(stated.height);
    const auto most = static_cast<std::uint64_t>(limits.maxPixels);
    const auto unproven = static_cast<std::uint64_t>(onTrust);
    return std::min({pixels, most, std::max(unproven, fileBytes * kMaxPixelsPerByte)});
}

/// A file need not be as long as it says. Ten layers of sixteen bits that nothing packs are as
/// long.
std::uint64_t codedBytes(std::uint64_t pixels, std::uint64_t fileBytes) {
    constexpr std::uint64_t kSpareBytes = std::uint64_t{1} << 20U;
    return std::min(fileBytes, pixels * 80 + kSpareBytes);
}

/// What it takes for a picture that is taken on trust, and for what there is beyond.
struct Costs {
    std::uint64_t trusted;
    std::uint64_t others;
};

std::uint64_t costOf(std::uint64_t count, std::uint64_t mostTrusted, Costs each) {
    const std::uint64_t trusted = std::min(count, mostTrusted);
    return trusted * each.trusted + (count - trusted) * each.others;
}

/// Twelve bits with colours of full size and transparency took 27 bytes a pixel at most, one for
/// each that is coded, and 12 MB for the libraries. So four million pixels on trust, with little
/// coded, stay below 300 MB. The threads' stacks are small, or few.
std::uint64_t dataBytesForItems(std::uint64_t pixels, std::uint64_t coded, unsigned processors) {
    constexpr Costs kPixelBytes{36, 48};
    constexpr std::uint64_t kLibraries = std::uint64_t{72} << 20U;
    constexpr std::uint64_t kThread = std::uint64_t{3} << 20U;
    return kLibraries + processors * kThread + costOf(pixels, kTrustedPixels, kPixelBytes) +
           coded * 4;
}

/// A pixel took 0.05 microseconds at most and a turned one twice that, a byte up to 1.5 where there
/// are few and below 0.6 where there are many. What states four million pixels and has little coded
/// ends within two seconds; that is four times what the dearest honest pictures took, turned and
/// with twelve bits, and more than five times for all others.
std::chrono::milliseconds processorTimeForItems(std::uint64_t pixels, std::uint64_t coded) {
    using std::chrono::nanoseconds;
    constexpr std::chrono::milliseconds kStart{900};
    constexpr Costs kPixelNanoseconds{200, 500};
    constexpr Costs kByteNanoseconds{9000, 2500};
    constexpr std::uint64_t kPixelsPerDearByte = 16;
    const nanoseconds time(costOf(pixels, kTrustedPixels, kPixelNanoseconds) +
                           costOf(coded, pixels / kPixelsPerDearByte, kByteNanoseconds));
    return kStart + std::chrono::ceil<std::chrono::milliseconds>(time);
}

}  // namespace

CellLimits limitsForPictures(const DecodeLimits& limits, std::optional<HeadSize> stated,
                             std::uint64_t fileBytes) {
    CellLimits cell = mostLimits(limits);
    // Where the head is unusual the file's length tells: few pictures have more pixels for a byte.
    constexpr std::uint64_t kUsualPixelsPerByte = 16;
    const auto most = static_cast<std::uint64_t>(limits.maxPixels);
    const std::int64_t onTrust = limits.maxUnprovenPixels.value_or(kMaxUnprovenPixels);
    const std::uint64_t pixels =
        stated ? possiblePixels(limits, *stated, fileBytes, onTrust)
               : std::min(std::min(fileBytes, most) * kUsualPixelsPerByte, most);
    const std::uint64_t coded = codedBytes(pixels, fileBytes);
    // The libraries, a strip or a tile, and a colour profile; then up to 12 bytes a pixel for the
    // picture and its turned form, and 16 for a codec that holds all of it.
    constexpr std::uint64_t kLeastBytes = std::uint64_t{270} << 20U;
    cell.dataBytes = kLeastBytes + pixels * 48 + coded * 4;
    // The dearest, rows of one pixel in a PNG, took 0.04 microseconds a pixel, those of other
    // pictures half of that and less; a byte of a TIFF with LZMA 0.1.
    using std::chrono::nanoseconds;
    constexpr std::chrono::milliseconds kStart{1700};
    const nanoseconds time(pixels * 200 + coded * 2000);
    cell.processorTime =
        std::min(kStart + std::chrono::ceil<std::chrono::milliseconds>(time), kMostTime);
    return cell;
}

CellLimits limitsForItems(const DecodeLimits& limits, std::optional<HeadSize> stated,
                          std::uint64_t fileBytes, unsigned processors) {
    CellLimits cell = mostLimits(limits);
    cell.threads = CellLimits::Threads::Many;
    const std::uint64_t pixels = possiblePixels(limits, stated.value_or(HeadSize{1, 1}), fileBytes,
                                                io::dearUnprovenPixels(limits));
    // A file need not be as long as it says. Samples of sixteen bits, not packed at all, and their
    // transparency have eight bytes a pixel.
    constexpr std::uint64_t kSpareBytes = std::uint64_t{1} << 20U;
    const std::uint64_t coded = std::min(fileBytes, pixels * 8 + kSpareBytes);
    cell.dataBytes = dataBytesForItems(pixels, coded, processors);
    cell.processorTime = std::min(processorTimeForItems(pixels, coded), kMostTime);
    return cell;
}

CellLimits limitsByStatedSize(const DecodeLimits& limits, std::optional<HeadSize> stated,
                              std::uint64_t fileBytes) {
    CellLimits cell = mostLimits(limits);
    constexpr HeadSize kUnknown{2048, 2048};  // as many as are believed of a short file
    std::uint64_t pixels = possiblePixels(limits, stated.value_or(kUnknown), fileBytes,
                                          io::dearUnprovenPixels(limits));
    // Who asks for so many has them, whatever the file says: a small picture may have large layers.
    if (const auto asked = limits.maxUnprovenPixels)
        pixels = std::max(pixels, static_cast<std::uint64_t>(std::min(*asked, limits.maxPixels)));
    const std::uint64_t coded = codedBytes(pixels, fileBytes);

    // A picture of layers may be small. Below 300 MB and two seconds there is nothing to save.
    constexpr std::uint64_t kLeastBytes = std::uint64_t{256} << 20U;
    constexpr std::chrono::milliseconds kLeastTime{1750};

    // Layers of a JPEG XL picture with transparency take a hundred bytes a pixel; their bytes tell
    // of them. Five components of JPEG 2000 take 24, and up to 50 in blocks of 64 pixels.
    constexpr std::uint64_t kLibraries = std::uint64_t{64} << 20U;
    cell.dataBytes = std::max(kLeastBytes, kLibraries + pixels * 56) + coded * 64;

    // Flat colours of JPEG XL without loss take up to 0.18 microseconds a pixel, with the slowest
    // of encoders 0.35 and a byte for 30 of them; a byte by itself takes 0.17, as in JPEG 2000. On
    // trust so little more is given that two seconds are not reached. The file's length speaks for
    // further pixels, and its bytes for slow processors.
    using std::chrono::nanoseconds;
    constexpr std::chrono::milliseconds kStart{700};
    constexpr Costs kPixelNanoseconds{260, 1000};
    constexpr Costs kByteNanoseconds{9000, 2000};
    constexpr std::uint64_t kPixelsPerDearByte = 16;
    const nanoseconds time(costOf(pixels, kTrustedPixels, kPixelNanoseconds) +
                           costOf(coded, pixels / kPixelsPerDearByte, kByteNanoseconds));
    cell.processorTime = std::clamp(kStart + std::chrono::ceil<std::chrono::milliseconds>(time),
                                    kLeastTime, kMostTime);
    return cell;
}

}  // namespace skarnel
