#include "render/resize.h"

#include <cstring>
#include <memory>
#include <new>

#include "imaging/cgcontext.h"
#include "util/geometry/integers.h"

namespace skarnel {

namespace {

/// The view's pixels in rows of another length; bytes beyond a row's pixels are zero.
std::optional<CGImage> withStride(const CGImage& image, std::size_t strideBytes) {
    const PixelView from = image.pixels();
    const std::size_t rowBytes = static_cast<std::size_t>(from.width) * 4;
    const std::size_t rows = static_cast<std::size_t>(from.height);
    auto* memory = new (std::nothrow) std::uint8_t[rows * strideBytes]();
    if (memory == nullptr) return std::nullopt;
    const std::shared_ptr<std::uint8_t[]> owner(memory);
    for (int y = 0; y < from.height; ++y) {
        std::memcpy(memory + static_cast<std::size_t>(y) * strideBytes, from.row(y), rowBytes);
    }
    return CGImage::share({owner, memory}, from.width, from.height, strideBytes);
}

}  // namespace

std::optional<CGImage> resizeCGImageToHeight(const CGImage& image, int height) {
    const float ratio = static_cast<float>(height) / static_cast<float>(image.height());
    const int width = toInt32(static_cast<double>(static_cast<float>(image.width()) * ratio));
    return resizeCGImageToWidthAndHeight(image, width, height);
}

std::optional<CGImage> resizeCGImageToWidthAndHeight(const CGImage& image, int width, int height) {
    if (image.alphaInfo() != CGImageAlphaInfo::PremultipliedLast) return std::nullopt;
    if (width < 1 || static_cast<std::size_t>(width) * 4 > image.bytesPerRow()) return std::nullopt;
    const std::unique_ptr<CGContext> context = CGContext::create(width, height);
    if (!context) return std::nullopt;
    context->drawImage(image, {0, 0, static_cast<double>(width), static_cast<double>(height)});
    return withStride(std::move(*context).takeImage(), image.bytesPerRow());
}

}  // namespace skarnel
