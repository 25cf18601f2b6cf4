#include "cli/memory_need.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "cli/canvas_size.h"
#include "cli/preview.h"
#include "imaging/io/picture_head.h"
#include "imaging/io/read_file.h"
#include "imaging/io/vp8l_writer.h"

namespace skarnel::cli {
namespace {

constexpr std::uint64_t kBytesAPixel = 4;
constexpr std::uint64_t kMostPixels = std::uint64_t{1} << 50;  // more would not change anything

std::uint64_t pixelsOf(PixelSize size) {
    return static_cast<std::uint64_t>(size.width) * static_cast<std::uint64_t>(size.height);
}

/// As measured: with transparency, and JPEG 2000 in small blocks.
std::uint64_t decodingBytesAPixel(std::string_view source) {
    if (source == kUTTypeJPEGXL) return 48;
    if (source == kUTTypeJPEG2000) return 96;
    return source == kUTTypeHEIF || source == kUTTypeAVIF ? 36 : 12;
}

/// The identifier of the file's format; empty where it has none.
std::string_view formatOf(const std::string& path) {
    const auto file = io::openPicture(path);
    if (!file) return {};
    std::array<std::uint8_t, 16> start{};
    const ssize_t count = ::pread(file->number(), start.data(), start.size(), 0);
    const ImageType* type =
        count == static_cast<ssize_t>(start.size()) ? imageTypeOfContent(start) : nullptr;
    return type != nullptr ? type->identifier : std::string_view();
}

/// Pictures of the result's size that rendering and encoding hold together, in tenths.
std::uint64_t tenthsOfResult(PixelSize result, const FrameFormat& format) {
    constexpr std::uint64_t kByRows = 22;
    if (format.type != kUTTypeWebP) return kByRows;
    // The library holds the whole picture in forms of its own.
    if (format.quality.value_or(100) < 100) return 60;
    constexpr auto kOwn = static_cast<std::uint64_t>(io::kOwnLosslessPixels);
    return pixelsOf(result) >= kOwn ? kByRows : 90;
}

}  // namespace

std::uint64_t memoryOfFrame(PixelSize picture, const RenderSettings& settings,
                            const FrameFormat& format) {
    const std::optional<RenderSizes> sizes = renderSizes(picture, settings);
    if (!sizes) return kBytesAWorker;  // there will be no result
    const std::uint64_t largest = std::min(
        kMostPixels,
        std::max({pixelsOf(sizes->reflection), pixelsOf(sizes->canvas), pixelsOf(sizes->result)}));
    return kBytesAWorker + largest * kBytesAPixel / 10 * tenthsOfResult(sizes->result, format);
}

std::uint64_t memoryOfRender(PixelSize picture, const JobSettings& settings, std::string_view type,
                             std::string_view source) {
    const PixelSize shrunk = settings.preview ? sizeToFit(picture, *settings.preview) : picture;
    return std::max(kBytesAWorker + pixelsOf(picture) * decodingBytesAPixel(source),
                    pixelsOf(picture) * kBytesAPixel +
                        memoryOfFrame(shrunk, settings.render, {type, settings.format.quality}));
}

std::uint64_t memoryOfJob(const Job& job, const JobSettings& settings) {
    if (!job.refusal.empty()) return kBytesAWorker;
    if (job.picture) {
        const CGImage& image = job.picture->image;
        return memoryOfRender({image.width(), image.height()}, settings, job.type);
    }
    if (job.input == kStandardStream) return kBytesOfUnknownSize;
    const std::optional<HeadSize> size = sizeInHeadOfFile(job.input);
    if (!size) return kBytesOfUnknownSize;
    // What is above the limit will be refused.
    const std::int64_t pixels = std::int64_t{size->width} * size->height;
    if (pixels > settings.limits.maxPixels) return kBytesAWorker;
    return memoryOfRender({size->width, size->height}, settings, job.type, formatOf(job.input));
}

}  // namespace skarnel::cli
