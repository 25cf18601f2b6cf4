// What every format's reader yields, before colour, alpha and orientation are settled.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "imaging/cgimage.h"
#include "imaging/io/image_io.h"
#include "util/log/result.h"

namespace skarnel::io {

#ifdef SKARNEL_HAVE_GIF
inline constexpr bool kHaveGif = true;
#else
inline constexpr bool kHaveGif = false;
#endif
#ifdef SKARNEL_HAVE_JXL
inline constexpr bool kHaveJpegXL = true;
#else
inline constexpr bool kHaveJpegXL = false;
#endif
#ifdef SKARNEL_HAVE_HEIF
inline constexpr bool kHaveHeif = true;
#else
inline constexpr bool kHaveHeif = false;
#endif

/// What the four bytes of a pixel are.
enum class Samples {
    Rgb,   // R, G, B, alpha
    Gray,  // one grey three times, alpha; the profile, if any, is one of grey
    Cmyk,  // ink amounts, 255 = full ink; alpha lies apart
};

enum class Alpha {
    Opaque,         // the fourth byte is 255 in every pixel (or is ink)
    Straight,       // colour is not multiplied yet
    Premultiplied,  // colour is multiplied already
    OverWhite,      // colour is what shows when the picture lies on white
};

/// The rows of a picture that is decoded as it is asked for, from the top down.
class SourceRows {
  public:
    SourceRows() = default;
    SourceRows(const SourceRows&) = delete;
    SourceRows& operator=(const SourceRows&) = delete;
    virtual ~SourceRows() = default;

    /// Decodes as many rows as `rows` has, never more than are left.
    virtual Result<void> decode(MutablePixelView rows) = 0;
    /// After the last row: whether the rest of the file is whole.
    virtual Result<void> finish() = 0;
};

/// A picture as its file has it: not turned upright, in its own colours.
struct SourcePicture {
    explicit SourcePicture(PixelBuffer buffer) : pixels(std::move(buffer)) {}
    /// Of a size that has been checked; nothing is allocated.
    SourcePicture(int width, int height, std::unique_ptr<SourceRows> source)
        : pixels(PixelBuffer::adopt(nullptr, width, height)), rows(std::move(source)) {}

    PixelBuffer pixels;                // without memory where `rows` makes them
    std::unique_ptr<SourceRows> rows;  // null for pixels that are there
    Samples samples = Samples::Rgb;
    Alpha alpha = Alpha::Opaque;
    Bytes cmykAlpha;  // width * height bytes where a CMYK picture has alpha, else empty
    Bytes profile;    // ICC, or empty: sRGB, or the built-in inks for CMYK
    int orientation = 1;
    ImageProperties properties;
};

/// Each takes hostile bytes of its own format and gives the first picture. Errors: Damaged,
/// TooLarge, Unsupported, OutOfMemory. Memory: the picture, and as much again at most. The bytes
/// must outlive a picture with `rows`.
Result<SourcePicture> readJpeg(ByteView bytes, const DecodeLimits& limits);
Result<SourcePicture> readPng(ByteView bytes, const DecodeLimits& limits);
Result<SourcePicture> readTiff(ByteView bytes, const DecodeLimits& limits);
Result<SourcePicture> readBmp(ByteView bytes, const DecodeLimits& limits);
Result<SourcePicture> readPsd(ByteView bytes, const DecodeLimits& limits);
Result<SourcePicture> readJpeg2000(ByteView bytes, const DecodeLimits& limits);
Result<SourcePicture> readWebP(ByteView bytes, const DecodeLimits& limits);
Result<SourcePicture> readGif(ByteView bytes, const DecodeLimits& limits);
Result<SourcePicture> readJpegXL(ByteView bytes, const DecodeLimits& limits);
Result<SourcePicture> readHeif(ByteView bytes, const DecodeLimits& limits);

/// A HEIF, AVIF, JPEG XL or JPEG 2000 picture of more pixels must have a byte of its file for every
/// kMaxPixelsPerByte: their libraries take tens of bytes and up to 200 nanoseconds for each before
/// they look at what is coded.
inline constexpr std::int64_t kMaxDearUnprovenPixels = 2048 * 2048;

/// That number, unless somebody has asked for another one.
inline std::int64_t dearUnprovenPixels(const DecodeLimits& limits) {
    return limits.maxUnprovenPixels.value_or(kMaxDearUnprovenPixels);
}

/// An Error when a size is below 1, a side is above what 32-bit rows can hold, or the area is
/// above the limit (`formatPixels` is a format's own lower one) or not to be believed of a file
/// of so few bytes; nothing is allocated.
std::optional<Error> checkPictureSize(std::int64_t width, std::int64_t height,
                                      const DecodeLimits& limits,
                                      std::int64_t formatPixels = INT64_MAX);

/// Checks the size, then allocates; the contents are undefined.
Result<PixelBuffer> allocatePicture(std::int64_t width, std::int64_t height,
                                    const DecodeLimits& limits,
                                    std::int64_t formatPixels = INT64_MAX);

/// Fills the entries that every format has.
void describePicture(SourcePicture& picture, std::string_view colorModel, int depthBits,
                     bool hasAlpha);
/// Both in pixels an inch; values that are not positive and finite are left out.
void setResolution(ImageProperties& properties, double horizontal, double vertical);

/// Brings a reader's picture to what decodeImage promises: sRGB, premultiplied, upright.
Result<DecodedImage> finishPicture(SourcePicture picture, std::string_view type);

}  // namespace skarnel::io
