#include "imaging/nsimage/tiff_form.h"

#include <utility>

#include "imaging/kernels/pixel_ops.h"

namespace skarnel {
namespace {

constexpr std::int64_t kUncompressed = 1;

void set(ImageProperties& properties, std::string_view key, PropertyValue value) {
    properties.insert_or_assign(std::string(key), std::move(value));
}

ImageProperties propertiesOfTiffForm(const CGImage& image, const ImageProperties& properties) {
    ImageProperties made = uprightProperties(image, properties);
    set(made, kPropertyTiffCompression, kUncompressed);
    return made;
}

}  // namespace

// A knocked-out page has colours under alpha 0.
bool survivesTiff(const CGImage& image) {
    if (image.alphaInfo() != CGImageAlphaInfo::PremultipliedLast ||
        image.bytesPerRow() != std::size_t{4} * static_cast<std::size_t>(image.width())) {
        return false;
    }
    if (image.isKnownWithoutHiddenColours()) return true;
    const PixelView view = image.pixels();
    for (int y = 0; y < view.height; ++y) {
        if (kernels::hasHiddenColours(view.row(y), static_cast<std::size_t>(view.width)))
            return false;
    }
    return true;
}

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

std::optional<DecodedImage> decodedTiffForm(const CGImage& image, const ImageProperties& properties,
                                            bool survives) {
    if (survives) {
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
