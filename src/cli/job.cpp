#include "cli/job.h"

#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <limits>
#include <new>

#include "cli/canvas_size.h"
#include "cli/interrupt.h"
#include "cli/preview.h"
#include "recipe/recipe_file.h"
#include "render/placement.h"
#include "storage/whole_file.h"
#include "util/log/message.h"

namespace skarnel::cli {
namespace {

/// No format takes more bytes for its pixels than this, uncompressed 32-bit CMYK included.
constexpr std::uint64_t kLargestBytesAPixel = 16;
constexpr std::uint64_t kLargestFileOverhead = std::uint64_t{64} << 20;

std::int64_t pixelsOf(PixelSize size) {
    return std::int64_t{size.width} * size.height;
}

PixelSize sizeOf(const CGImage& image) {
    return {image.width(), image.height()};
}

std::string megapixels(std::int64_t pixels) {
    return std::to_string((pixels + 999'999) / 1'000'000);
}

std::uint64_t mostBytes(std::int64_t maxPixels) {
    const auto pixels = static_cast<std::uint64_t>(maxPixels);
    const std::uint64_t room = std::numeric_limits<std::uint64_t>::max() - kLargestFileOverhead;
    if (pixels > room / kLargestBytesAPixel) return std::numeric_limits<std::uint64_t>::max();
    return pixels * kLargestBytesAPixel + kLargestFileOverhead;
}

Result<void> checkSizes(const CGImage& picture, const JobSettings& settings) {
    const std::optional<RenderSizes> sizes = renderSizes(sizeOf(picture), settings.render);
    if (!sizes) return {};  // the render itself finds out
    const std::int64_t limit =
        settings.limits.maxPixels > std::numeric_limits<std::int64_t>::max() / kResultFactor
            ? std::numeric_limits<std::int64_t>::max()
            : settings.limits.maxPixels * kResultFactor;
    for (const PixelSize size : {sizes->reflection, sizes->canvas, sizes->result}) {
        if (pixelsOf(size) > limit) {
            return {ErrorCode::TooLarge,
                    filled("The result would have %1 megapixels; --max-pixels allows %2 megapixels",
                           {megapixels(pixelsOf(size)), megapixels(limit)})};
        }
    }
    return {};
}

/// Why a render yields nothing, for the user.
std::string causeOfNoResult(const CGImage& picture, const JobSettings& settings) {
    if (settings.render.number("perspectiveHeight") == 0) {
        return marked("A reflection without height gives no result");
    }
    if (!renderSizes(sizeOf(picture), settings.render)) {
        return marked("These settings leave no picture of a possible size");
    }
    return marked("There is not enough memory for the result, or it is too large");
}

Result<Bytes> encodeWithRecipe(const CGImage& image, const std::string& type,
                               const ImageProperties& properties) {
    Result<Bytes> bytes = encodeImage(image, type, properties);
    const auto recipe = properties.find(kPropertyRecipe);
    if (!bytes || recipe == properties.end()) return bytes;
    return embedRecipe(*bytes, std::get<std::string>(recipe->second));
}

/// Everything but the clock.
void tryJob(const Job& job, const JobSettings& settings, JobReport& report) {
    if (!job.refusal.empty()) {
        report.error = job.refusal;
        return;
    }
    // Looking first saves the work; the writing itself looks again, in one step with the naming.
    if (settings.overwrite == Overwrite::Refuse && job.output != kStandardStream &&
        isThere(job.output)) {
        report.error = alreadyThere(job.output);
        return;
    }
    Result<DecodedImage> picture = loadPicture(job, settings.limits);
    if (!picture) {
        report.error = picture.error().message;
        return;
    }
    // Given up before the encoding, which needs as much memory again as the result.
    std::optional<DecodedImage> source(*std::move(picture));
    report.inputSize = sizeOf(source->image);
    const Result<ReflectionResult> rendered = renderWithin(source->image, settings);
    if (!rendered) {
        report.error = rendered.error().message;
        return;
    }
    const ImageProperties properties = outputProperties(source->properties, settings);
    source.reset();
    const Result<void> written =
        encodeAndWrite(rendered->image, job, properties, settings.overwrite, report);
    if (!written) {
        report.error = job.output == kStandardStream
                           ? filled("standard output: %1", {written.error().message})
                           : job.output + ": " + written.error().message;
        return;
    }
    report.output = job.output;
    report.outputSize = sizeOf(rendered->image);
    if (rendered->turn == TurnOutcome::Unturned) {
        report.error = marked("The turn could not be made; the result was written without it");
    }
}

}  // namespace

bool isThere(const std::string& path) {
    struct stat status = {};
    return ::lstat(path.c_str(), &status) == 0 && !S_ISCHR(status.st_mode) &&
           !S_ISFIFO(status.st_mode) && !S_ISLNK(status.st_mode);
}

std::string alreadyThere(const std::string& path) {
    return path + ": " + marked("The file already exists (--force replaces it)");
}

Result<DecodedImage> loadPicture(const Job& job, const DecodeLimits& limits) {
    if (job.picture) return *job.picture;
    if (job.input != kStandardStream) return decodeImageFile(job.input, limits);
    // What is no picture may have no end.
    const auto limit = [&](ByteView start) -> Result<std::uint64_t> {
        if (start.empty() || imageTypeOfContent(start) != nullptr)
            return mostBytes(limits.maxPixels);
        return Error{ErrorCode::UnknownFormat, "Not a picture of a known format"};
    };
    const Result<Bytes> bytes = readDescriptor(STDIN_FILENO, limit);
    if (!bytes) return bytes.error();
    if (bytes->empty()) return {ErrorCode::CannotRead, "Nothing came from standard input"};
    return decodeForeignImage(*bytes, limits);
}

Result<ReflectionResult> renderWithin(const CGImage& picture, const JobSettings& settings) {
    std::optional<CGImage> source = picture;
    if (settings.preview) source = shrinkToFit(picture, *settings.preview);
    if (!source) return {ErrorCode::OutOfMemory, "There is not enough memory for the preview"};
    if (Result<void> fits = checkSizes(*source, settings); !fits) return fits.error();
    std::optional<ReflectionResult> result = renderPicture(*source, settings.render);
    if (!result) return {ErrorCode::Failed, causeOfNoResult(*source, settings)};
    if (!settings.preview) return *std::move(result);
    const std::optional<CGImage> shrunk = shrinkToFit(result->image, *settings.preview);
    if (!shrunk) return {ErrorCode::OutOfMemory, "There is not enough memory for the preview"};
    return ReflectionResult{*shrunk, result->turn};
}

ImageProperties outputProperties(const ImageProperties& source, const JobSettings& settings) {
    ImageProperties properties;
    for (const std::string_view kept :
         {kPropertyDpiWidth, kPropertyDpiHeight, kPropertyExifBlock}) {
        if (const auto found = source.find(kept); found != source.end()) properties.insert(*found);
    }
    properties.emplace(kPropertyOrientation, std::int64_t{1});
    if (settings.format.tiffCompression) {
        properties.emplace(kPropertyTiffCompression,
                           std::int64_t{*settings.format.tiffCompression});
    }
    if (settings.format.level) {
        properties.emplace(kPropertyCompressionLevel, std::int64_t{*settings.format.level});
    }
    if (settings.format.quality) {
        properties.emplace(kPropertyLossyQuality, *settings.format.quality / 100.0);
    }
    if (settings.recipe) properties.emplace(kPropertyRecipe, *settings.recipe);
    const DeviceColor& matte = settings.render.backgroundColor;
    char text[8];
    std::snprintf(text, sizeof text, "#%02X%02X%02X", int(matte.red * 255 + 0.5) & 0xFF,
                  int(matte.green * 255 + 0.5) & 0xFF, int(matte.blue * 255 + 0.5) & 0xFF);
    properties.emplace(kPropertyMatteColor, std::string(text));
    return properties;
}

Result<void> encodeAndWrite(const CGImage& image, const Job& job, const ImageProperties& properties,
                            Overwrite overwrite, JobReport& report) {
    const Result<Bytes> bytes = encodeWithRecipe(image, job.type, properties);
    if (!bytes) return bytes.error();
    // A file or a stream that was begun is ended, and told.
    report.untilReported = std::make_shared<const UninterruptedScope>();
    if (job.output == kStandardStream) return writeDescriptor(STDOUT_FILENO, *bytes);
    return writeFileSafely(job.output, *bytes, overwrite);
}

JobReport runJob(const Job& job, const JobSettings& settings) {
    const auto start = std::chrono::steady_clock::now();
    JobReport report;
    report.input = job.input;
    try {
        tryJob(job, settings, report);
    } catch (const std::bad_alloc&) {
        report.error = marked("There is not enough memory");
    }
    const std::chrono::duration<double, std::milli> taken =
        std::chrono::steady_clock::now() - start;
    report.milliseconds = taken.count();
    return report;
}

}  // namespace skarnel::cli
