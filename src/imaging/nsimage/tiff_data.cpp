#include "imaging/nsimage/tiff_data.h"

namespace skarnel {

std::optional<TIFFData> TIFFData::initWithImage(const NSImage& image) {
    if (!image.isValid()) return std::nullopt;
    return TIFFData(image.copy());
}

}  // namespace skarnel
