#include "imaging/nsimage/tiff_form.h"

#include <bit>
#include <cstring>
#include <utility>

namespace skarnel {
namespace {

constexpr std::int64_t kUncompressed = 1;

void set(ImageProperties& properties, std::string_view key, PropertyValue value) {
    properties.insert_or_assign(std::string(key), std::move(value));
}

/// The colour bytes of all pixels with alpha 0, combined; 0 when there is none. Written as a plain
/// sum over words, which the compiler turns into vectors: every preview walks its pictures here.
std::uint32_t coloursUnderAlpha0(const std::uint8_t* row, int width) {
    static_assert(std::endian::native == std::endian::little, "alpha is a word's highest byte");
    std::uint32_t found = 0;
    for (int x = 0; x < width; ++x) {
        std::uint32_t pixel = 0;
        std::memcpy(&pixel, row + std::ptrdiff_t{4} * x, 4);
        found |= (pixel & 0xFF000000U) == 0 ? pixel : 0U;
    }
    return found;
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
    const PixelView view = image.pixels();
    for (int y = 0; y < view.height; ++y) {
        if (coloursUnderAlpha0(view.row(y), view.width) != 0) return false;
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
