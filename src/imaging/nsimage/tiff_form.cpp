#include "imaging/nsimage/tiff_form.h"

#include <cstring>
#include <utility>

namespace skarnel {
namespace {

constexpr std::int64_t kUncompressed = 1;

void set(ImageProperties& properties, std::string_view key, PropertyValue value) {
    properties.insert_or_assign(std::string(key), std::move(value));
}

/// Whether decoding would change nothing: four samples, rows without padding, and no colour under
/// alpha 0 (a knocked-out page has such pixels).
bool isAsDecoded(const CGImage& image) {
    const PixelView view = image.pixels();
    if (view.samplesPerPixel != 4 || view.strideBytes != std::ptrdiff_t{4} * view.width) {
        return false;
    }
    for (int y = 0; y < view.height; ++y) {
        const std::uint8_t* row = view.row(y);
        unsigned ghosts = 0;
        for (int x = 0; x < view.width; ++x, row += 4) {
            std::uint32_t pixel;
            std::memcpy(&pixel, row, 4);
            ghosts |= static_cast<unsigned>(row[3] == 0) & static_cast<unsigned>(pixel != 0);
        }
        if (ghosts != 0) return false;
    }
    return true;
}

ImageProperties propertiesOfTiffForm(const CGImage& image, const ImageProperties& properties) {
    ImageProperties made = uprightProperties(image, properties);
    set(made, kPropertyTiffCompression, kUncompressed);
    return made;
}

}  // namespace

ImageProperties uprightProperties(const CGImage& image, ImageProperties properties) {
    set(properties, kPropertyPixelWidth, std::int64_t{image.width()});
    set(properties, kPropertyPixelHeight, std::int64_t{image.height()});
    set(properties, kPropertyOrientation, std::int64_t{1});
    set(properties, kPropertyColorModel, std::string("RGB"));
    set(properties, kPropertyDepth, std::int64_t{8});
    set(properties, kPropertyHasAlpha,
        std::int64_t{image.alphaInfo() == CGImageAlphaInfo::None ? 0 : 1});
    properties.erase(std::string(kPropertyProfileName));
    setExifUpright(properties);
    return properties;
}

std::optional<Bytes> tiffForm(const CGImage& image, const ImageProperties& properties) {
    auto encoded = encodeImage(image, kUTTypeTIFF, propertiesOfTiffForm(image, properties));
    if (!encoded) return std::nullopt;
    return *std::move(encoded);
}

std::optional<DecodedImage> decodedTiffForm(const CGImage& image,
                                            const ImageProperties& properties) {
    if (isAsDecoded(image)) {
        return DecodedImage{image, propertiesOfTiffForm(image, properties),
                            std::string(kUTTypeTIFF)};
    }
    const auto form = tiffForm(image, properties);
    if (!form) return std::nullopt;
    auto decoded = decodeImage(*form);
    if (!decoded) return std::nullopt;
    return *std::move(decoded);
}

}  // namespace skarnel
