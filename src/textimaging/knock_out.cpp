#include "textimaging/knock_out.h"

#include <algorithm>
#include <cstdint>
#include <limits>

#include "render/reflection.h"
#include "textimaging/kernels/page_scan.h"

namespace skarnel {

// The byte copy that this once took of the bitmap is left out: its pixels cannot change.
std::optional<CIImage> CIImageMakeFirtsPixelColorTransparent(const CIImage& image) {
    const std::optional<CGImage> bitmap = CIImageGetCGImage(image);
    if (!bitmap) return std::nullopt;
    const std::int64_t bytes = static_cast<std::int64_t>(bitmap->bytesPerRow()) * bitmap->height();
    if (bytes > std::numeric_limits<std::int32_t>::max()) return std::nullopt;
    std::optional<PixelBuffer> result =
        PixelBuffer::uninitialized(bitmap->width(), bitmap->height());
    if (!result) return std::nullopt;
    const PixelView source = bitmap->pixels();
    kernels::ScanPixel reference;
    std::copy_n(source.bytes, reference.size(), reference.begin());
    const MutablePixelView target = result->view();
    for (int y = 0; y < source.height; ++y)
        kernels::knockOutRow(target.row(y), source.row(y), reference,
                             static_cast<std::size_t>(source.width));
    return CIImage::imageWithCGImage(CGImage(std::move(*result)));
}

}  // namespace skarnel
