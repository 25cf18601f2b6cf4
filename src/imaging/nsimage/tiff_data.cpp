#include "imaging/nsimage/tiff_data.h"

#include <new>

namespace skarnel {

std::optional<TIFFData> TIFFData::initWithImage(const NSImage& image) {
    if (!image.isValid()) return std::nullopt;
    return TIFFData(image.copy());
}

std::optional<Bytes> TIFFData::bytes() const try {
    return image_.TIFFRepresentation();
} catch (const std::bad_alloc&) {
    return std::nullopt;
}

std::optional<DecodedImage> TIFFData::decoded() const try {
    return image_.decodedTIFFRepresentation();
} catch (const std::bad_alloc&) {
    return std::nullopt;
}

}  // namespace skarnel
