// Pictures from bytes and to bytes: format choice by content, properties, options.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "imaging/cgimage.h"
#include "util/log/result.h"

namespace skarnel {

using Bytes = std::vector<std::uint8_t>;
using ByteView = std::span<const std::uint8_t>;

/// Properties of a picture under the image library's keys; a nested dictionary's entries are
/// written as "{TIFF}.Compression". Values: whole number, number, text, raw bytes.
using PropertyValue = std::variant<std::int64_t, double, std::string, Bytes>;
using ImageProperties = std::map<std::string, PropertyValue, std::less<>>;

inline constexpr std::string_view kPropertyPixelWidth = "PixelWidth";  // before orientation
inline constexpr std::string_view kPropertyPixelHeight = "PixelHeight";
inline constexpr std::string_view kPropertyDpiWidth = "DPIWidth";  // pixels an inch
inline constexpr std::string_view kPropertyDpiHeight = "DPIHeight";
inline constexpr std::string_view kPropertyOrientation = "Orientation";  // 1..8, as EXIF has it
inline constexpr std::string_view kPropertyColorModel = "ColorModel";    // "RGB", "Gray", "CMYK"
inline constexpr std::string_view kPropertyDepth = "Depth";              // bits a sample
inline constexpr std::string_view kPropertyHasAlpha = "HasAlpha";        // 0 or 1
inline constexpr std::string_view kPropertyProfileName = "ProfileName";
inline constexpr std::string_view kPropertyTiffCompression = "{TIFF}.Compression";  // 1, 5 = LZW, 8
inline constexpr std::string_view kPropertyLossyQuality = "LossyCompressionQuality";  // 0..1
inline constexpr std::string_view kPropertyCompressionLevel = "CompressionLevel";     // PNG, 0..12
/// "#RRGGBB": what a format without transparency lays under the picture; white when absent.
inline constexpr std::string_view kPropertyMatteColor = "MatteColor";
/// The raw EXIF block ("Exif\0\0" left off), for formats that can carry one.
inline constexpr std::string_view kPropertyExifBlock = "{Exif}.Block";

/// Type identifiers.
inline constexpr std::string_view kUTTypeTIFF = "public.tiff";
inline constexpr std::string_view kUTTypePNG = "public.png";
inline constexpr std::string_view kUTTypeJPEG = "public.jpeg";
inline constexpr std::string_view kUTTypeJPEG2000 = "public.jpeg-2000";
inline constexpr std::string_view kUTTypeBMP = "com.microsoft.bmp";
inline constexpr std::string_view kUTTypeWebP = "org.webmproject.webp";
inline constexpr std::string_view kUTTypePSD = "com.adobe.photoshop-image";
inline constexpr std::string_view kUTTypeGIF = "com.compuserve.gif";
inline constexpr std::string_view kUTTypeJPEGXL = "public.jpeg-xl";
inline constexpr std::string_view kUTTypeHEIF = "public.heif";
inline constexpr std::string_view kUTTypeAVIF = "public.avif";

/// One row of the table of formats.
struct ImageType {
    std::string_view identifier;
    std::string_view name;                     // "TIFF", for people
    std::string_view preferredExtension;       // without the full stop; may be empty
    std::vector<std::string_view> extensions;  // lower case, the preferred one first
    std::string_view mimeType;
    bool canRead = false;  // in this build
    bool canWrite = false;
};

/// Every known format, readable or not in this build.
const std::vector<ImageType>& imageTypes();
const ImageType* imageTypeWithIdentifier(std::string_view identifier);
/// By file name extension without its full stop, in any letter case.
const ImageType* imageTypeWithExtension(std::string_view extension);
/// By the first bytes; null when no format is recognised.
const ImageType* imageTypeOfContent(ByteView bytes);
/// UTTypeCopyPreferredTagWithClass for file name extensions.
std::optional<std::string> preferredExtensionOfType(std::string_view identifier);

/// Bounds on what a decoder may be made to do.
struct DecodeLimits {
    std::int64_t maxPixels = 500'000'000;
    /// A picture of more pixels must have a byte of its file for every `kMaxPixelsPerByte`: photos
    /// have one for a few pixels, files that are made to fill memory one for many thousands. Set by
    /// who asks for so many; otherwise it is kMaxUnprovenPixels, and less for some formats.
    std::optional<std::int64_t> maxUnprovenPixels = {};
    std::uint64_t fileBytes = UINT64_MAX;  // set by who has the bytes
};
inline constexpr std::int64_t kMaxUnprovenPixels = 64'000'000;
inline constexpr std::uint64_t kMaxPixelsPerByte = 2000;

struct DecodedImage {
    CGImage image;               // upright, sRGB, premultiplied RGBA8; alpha 0 means colour 0
    ImageProperties properties;  // of the file, orientation as found there
    std::string type;            // identifier
};

/// Decodes the first picture of the bytes, the format chosen by content. Bytes are hostile: any
/// breach of a format's rules is an Error, never a partial picture.
Result<DecodedImage> decodeImage(ByteView bytes, const DecodeLimits& limits = {});

/// Reads and decodes a file, behind the decoder's wall where its helper program is installed. A
/// helper that dies gives Damaged.
Result<DecodedImage> decodeImageFile(const std::string& path, const DecodeLimits& limits = {});

/// The same for bytes that came from elsewhere (standard input, the pasteboard).
Result<DecodedImage> decodeForeignImage(ByteView bytes, const DecodeLimits& limits = {});

/// For the program's own resources: always in this process.
Result<DecodedImage> decodeOwnImageFile(const std::string& path, const DecodeLimits& limits = {});

/// What stands between a decoder and the system when a file is decoded.
struct DecoderWall {
    std::string name;  // "helper program", "seccomp", "landlock", ...
    bool stands = false;
};
std::vector<DecoderWall> decoderWalls();

/// Makes the EXIF entries of a dictionary fit a picture that has been turned upright and brought to
/// sRGB: orientation 1, no thumbnail, no sizes of the stored pixels, no maker's note. Those that
/// encodeImage writes and decodeImage finds again.
void setExifUpright(ImageProperties& properties);

/// Encodes one picture. `properties` may hold options (quality, compression, matte) and facts to
/// carry over (resolution, EXIF); keys that the format has no place for are left out.
/// TIFF keeps every byte (associated alpha). Unsupported for a type that cannot be written, Failed
/// where an encoder gave something else than the file (see `checkedFile`).
Result<Bytes> encodeImage(const CGImage& image, std::string_view typeIdentifier,
                          const ImageProperties& properties = {});

}  // namespace skarnel
