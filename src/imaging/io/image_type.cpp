// The table of formats, and recognition by first bytes.
#include <algorithm>
#include <cstring>

#include "imaging/io/image_io.h"
#include "imaging/io/readers.h"

namespace skarnel {
namespace {

constexpr bool kJpegXL = io::kHaveJpegXL;
constexpr bool kHeif = io::kHaveHeif;
constexpr bool kGif = io::kHaveGif;

std::vector<ImageType> makeTypes() {
    return {
        {kUTTypeTIFF, "TIFF", "tiff", {"tiff", "tif"}, "image/tiff", true, true},
        {kUTTypePNG, "PNG", "png", {"png"}, "image/png", true, true},
        {kUTTypeJPEG, "JPEG", "jpeg", {"jpeg", "jpg", "jpe"}, "image/jpeg", true, true},
        {kUTTypeJPEG2000,
         "JPEG 2000",
         "jp2",
         {"jp2", "j2k", "jpx", "j2c"},
         "image/jp2",
         true,
         true},
        {kUTTypeBMP, "BMP", "bmp", {"bmp", "dib"}, "image/bmp", true, true},
        {kUTTypeWebP, "WebP", "webp", {"webp"}, "image/webp", true, true},
        {kUTTypePSD, "Photoshop", "psd", {"psd", "psb"}, "image/vnd.adobe.photoshop", true, false},
        {kUTTypeGIF, "GIF", "gif", {"gif"}, "image/gif", kGif, false},
        {kUTTypeJPEGXL, "JPEG XL", "jxl", {"jxl"}, "image/jxl", kJpegXL, false},
        {kUTTypeHEIF, "HEIF", "heic", {"heic", "heif"}, "image/heif", kHeif, false},
        {kUTTypeAVIF, "AVIF", "avif", {"avif"}, "image/avif", kHeif, false},
    };
}

bool startsWith(ByteView bytes, std::string_view magic, std::size_t at = 0) {
    return bytes.size() >= at + magic.size() &&
           std::memcmp(bytes.data() + at, magic.data(), magic.size()) == 0;
}

/// The brand decides between the kinds of picture that share one container.
std::string_view typeOfIsoBrand(ByteView bytes) {
    if (!startsWith(bytes, "ftyp", 4)) return {};
    for (std::string_view brand : {"avif", "avis"}) {
        if (startsWith(bytes, brand, 8)) return kUTTypeAVIF;
    }
    for (std::string_view brand :
         {"heic", "heix", "heim", "heis", "hevc", "hevx", "mif1", "msf1"}) {
        if (startsWith(bytes, brand, 8)) return kUTTypeHEIF;
    }
    return {};
}

std::string_view identifierOfContent(ByteView bytes) {
    using namespace std::string_view_literals;
    struct Magic {
        std::string_view text;
        std::string_view type;
    };
    static constexpr Magic kMagics[] = {
        {"\xFF\xD8\xFF"sv, kUTTypeJPEG},
        {"\x89PNG\r\n\x1A\n"sv, kUTTypePNG},
        {"II\x2A\0"sv, kUTTypeTIFF},
        {"MM\0\x2A"sv, kUTTypeTIFF},
        {"II\x2B\0"sv, kUTTypeTIFF},
        {"MM\0\x2B"sv, kUTTypeTIFF},
        {"\0\0\0\x0CjP  \r\n\x87\n"sv, kUTTypeJPEG2000},
        {"\xFF\x4F\xFF\x51"sv, kUTTypeJPEG2000},
        {"8BPS\0\1"sv, kUTTypePSD},
        {"8BPS\0\2"sv, kUTTypePSD},
        {"GIF87a"sv, kUTTypeGIF},
        {"GIF89a"sv, kUTTypeGIF},
        {"\xFF\x0A"sv, kUTTypeJPEGXL},
        {"\0\0\0\x0CJXL \r\n\x87\n"sv, kUTTypeJPEGXL},
        {"BM"sv, kUTTypeBMP},
    };
    for (const Magic& magic : kMagics) {
        if (startsWith(bytes, magic.text)) return magic.type;
    }
    if (startsWith(bytes, "RIFF") && startsWith(bytes, "WEBP", 8)) return kUTTypeWebP;
    return typeOfIsoBrand(bytes);
}

}  // namespace

const std::vector<ImageType>& imageTypes() {
    static const std::vector<ImageType> types = makeTypes();
    return types;
}

const ImageType* imageTypeWithIdentifier(std::string_view identifier) {
    for (const ImageType& type : imageTypes()) {
        if (type.identifier == identifier) return &type;
    }
    return nullptr;
}

const ImageType* imageTypeWithExtension(std::string_view extension) {
    std::string lower(extension);
    // ASCII only on purpose: the user's language must not decide what ".TIF" means.
    std::transform(lower.begin(), lower.end(), lower.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    for (const ImageType& type : imageTypes()) {
        if (std::find(type.extensions.begin(), type.extensions.end(), lower) !=
            type.extensions.end()) {
            return &type;
        }
    }
    return nullptr;
}

const ImageType* imageTypeOfContent(ByteView bytes) {
    const std::string_view identifier = identifierOfContent(bytes);
    return identifier.empty() ? nullptr : imageTypeWithIdentifier(identifier);
}

std::optional<std::string> preferredExtensionOfType(std::string_view identifier) {
    const ImageType* type = imageTypeWithIdentifier(identifier);
    if (type == nullptr) return std::nullopt;
    return std::string(type->preferredExtension);
}

}  // namespace skarnel
