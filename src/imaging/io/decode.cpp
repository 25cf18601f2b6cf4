// From bytes of any format to the picture that the program works with.
#include <cmath>
#include <new>
#include <stdexcept>
#include <string>

#include "imaging/io/image_io.h"
#include "imaging/io/read_file.h"
#include "imaging/io/readers.h"
#include "imaging/io/upright_picture.h"
#include "util/log/message.h"

namespace skarnel {
namespace io {

std::optional<Error> checkPictureSize(std::int64_t width, std::int64_t height,
                                      const DecodeLimits& limits, std::int64_t formatPixels) {
    if (width < 1 || height < 1) return Error{ErrorCode::Damaged, "The picture has no pixels"};
    // A row of four bytes a pixel is counted in 32-bit signed arithmetic.
    constexpr std::int64_t kMaxSide = INT32_MAX / 4;
    const std::int64_t maxPixels = std::min(limits.maxPixels, formatPixels);
    if (width > kMaxSide || height > kMaxSide || width > maxPixels / height) {
        return Error{
            ErrorCode::TooLarge,
            filled("The picture says it has %1 x %2 pixels, above the limit of %3",
                   {std::to_string(width), std::to_string(height), std::to_string(maxPixels)})};
    }
    if (width * height > limits.maxUnprovenPixels.value_or(kMaxUnprovenPixels) &&
        static_cast<std::uint64_t>(width * height) / kMaxPixelsPerByte >= limits.fileBytes) {
        return Error{ErrorCode::TooLarge,
                     filled("The picture says it has %1 x %2 pixels, too many for a file of %3 "
                            "bytes (skarnel-render --max-pixels allows them)",
                            {std::to_string(width), std::to_string(height),
                             std::to_string(limits.fileBytes)})};
    }
    return std::nullopt;
}

Result<PixelBuffer> allocatePicture(std::int64_t width, std::int64_t height,
                                    const DecodeLimits& limits, std::int64_t formatPixels) {
    if (auto error = checkPictureSize(width, height, limits, formatPixels)) return *error;
    auto buffer = PixelBuffer::uninitialized(static_cast<int>(width), static_cast<int>(height));
    if (!buffer) return {ErrorCode::OutOfMemory, "Not enough memory for the picture"};
    return *std::move(buffer);
}

void describePicture(SourcePicture& picture, std::string_view colorModel, int depthBits,
                     bool hasAlpha) {
    auto set = [&](std::string_view key, PropertyValue value) {
        picture.properties.insert_or_assign(std::string(key), std::move(value));
    };
    set(kPropertyPixelWidth, std::int64_t{picture.pixels.width()});
    set(kPropertyPixelHeight, std::int64_t{picture.pixels.height()});
    set(kPropertyColorModel, std::string(colorModel));
    set(kPropertyDepth, std::int64_t{depthBits});
    set(kPropertyHasAlpha, std::int64_t{hasAlpha ? 1 : 0});
    set(kPropertyOrientation, std::int64_t{picture.orientation});
}

void setResolution(ImageProperties& properties, double horizontal, double vertical) {
    auto usable = [](double value) { return std::isfinite(value) && value > 0; };
    if (!usable(horizontal) || !usable(vertical)) return;
    properties.insert_or_assign(std::string(kPropertyDpiWidth), horizontal);
    properties.insert_or_assign(std::string(kPropertyDpiHeight), vertical);
}

namespace {

using Reader = Result<SourcePicture> (*)(ByteView, const DecodeLimits&);

Reader readerOfType(std::string_view type) {
    if (type == kUTTypeJPEG) return readJpeg;
    if (type == kUTTypePNG) return readPng;
    if (type == kUTTypeTIFF) return readTiff;
    if (type == kUTTypeBMP) return readBmp;
    if (type == kUTTypePSD) return readPsd;
    if (type == kUTTypeJPEG2000) return readJpeg2000;
    if (type == kUTTypeWebP) return readWebP;
#ifdef SKARNEL_HAVE_GIF
    if (type == kUTTypeGIF) return readGif;
#endif
#ifdef SKARNEL_HAVE_JXL
    if (type == kUTTypeJPEGXL) return readJpegXL;
#endif
#ifdef SKARNEL_HAVE_HEIF
    if (type == kUTTypeHEIF || type == kUTTypeAVIF) return readHeif;
#endif
    return nullptr;
}

}  // namespace

Result<UprightPicture> openUpright(ByteView bytes, const DecodeLimits& limits) {
    if (bytes.empty()) return {ErrorCode::UnknownFormat, "The file is empty"};
    const ImageType* type = imageTypeOfContent(bytes);
    if (type == nullptr) return {ErrorCode::UnknownFormat, "Not a picture of a known format"};
    const Reader reader = readerOfType(type->identifier);
    if (reader == nullptr) {
        return {ErrorCode::Unsupported,
                filled("This build cannot read pictures of type %1", {type->name})};
    }
    DecodeLimits ofFile = limits;
    ofFile.fileBytes = bytes.size();
    auto picture = reader(bytes, ofFile);
    if (!picture) return picture.error();
    return UprightPicture::make(*std::move(picture), type->identifier);
}

}  // namespace io

Result<DecodedImage> decodeImage(ByteView bytes, const DecodeLimits& limits) try {
    auto picture = io::openUpright(bytes, limits);
    if (!picture) return picture.error();
    return (*std::move(picture)).whole();
} catch (const std::bad_alloc&) {
    return {ErrorCode::OutOfMemory, io::kNoMemory};
} catch (const std::length_error&) {
    return {ErrorCode::OutOfMemory, io::kNoMemory};
}

}  // namespace skarnel
