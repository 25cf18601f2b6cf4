#include "imaging/cgimage.h"

#include <cstring>
#include <limits>

#include "imaging/pixel_memory.h"
#include "imaging/row_source.h"

namespace skarnel {
namespace {

constexpr int kMaxRowPixels = std::numeric_limits<std::int32_t>::max() / 4;

std::shared_ptr<std::uint8_t> pixelMemory(int width, int height, PixelContents contents) {
    if (width < 1 || height < 1 || width > kMaxRowPixels) return nullptr;
    const std::size_t size = std::size_t{4} * static_cast<std::size_t>(width) *
                             static_cast<std::size_t>(height);  // < 2^62
    return allocatePixelMemory(size, contents);
}

}  // namespace

std::optional<PixelBuffer> PixelBuffer::zeroed(int width, int height) {
    auto bytes = pixelMemory(width, height, PixelContents::Zeroed);
    if (!bytes) return std::nullopt;
    return PixelBuffer(std::move(bytes), width, height);
}

std::optional<PixelBuffer> PixelBuffer::uninitialized(int width, int height) {
    auto bytes = pixelMemory(width, height, PixelContents::Undefined);
    if (!bytes) return std::nullopt;
    return PixelBuffer(std::move(bytes), width, height);
}

CGImage::CGImage(PixelBuffer pixels)
    : bytes_(pixels.bytes_),
      view_{pixels.bytes_.get(), pixels.width_, pixels.height_, std::ptrdiff_t{4} * pixels.width_,
            4} {}

/// Shared by all copies, so that the rows are drawn once for all of them.
struct CGImage::UndrawnRows {
    std::unique_ptr<RowSource> source;  // null once drawn
    MutablePixelView room;
};

CGImage::CGImage(PixelBuffer room, std::unique_ptr<RowSource> source)
    : CGImage(PixelBuffer(room.bytes_, room.width_, room.height_)) {
    undrawn_ = std::make_shared<UndrawnRows>(UndrawnRows{std::move(source), room.view()});
}

RowSource* CGImage::rowSource() const {
    return undrawn_ ? undrawn_->source.get() : nullptr;
}

void CGImage::drawRows() const {
    if (!undrawn_->source) return;
    undrawn_->source->drawAll(undrawn_->room);
    undrawn_->source.reset();
}

std::optional<CGImage> CGImage::share(std::shared_ptr<const std::uint8_t> bytes, int width,
                                      int height, std::size_t bytesPerRow, int samplesPerPixel) {
    if (!bytes || width < 1 || height < 1 || (samplesPerPixel != 3 && samplesPerPixel != 4))
        return std::nullopt;
    const auto rowBytes =
        static_cast<std::size_t>(width) * static_cast<std::size_t>(samplesPerPixel);
    if (bytesPerRow < rowBytes ||
        bytesPerRow > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max()))
        return std::nullopt;
    const PixelView view{bytes.get(), width, height, static_cast<std::ptrdiff_t>(bytesPerRow),
                         samplesPerPixel};
    return CGImage(std::move(bytes), view);
}

std::optional<CGImage> CGImage::copyOf(PixelView pixels) {
    if (pixels.bytes == nullptr || pixels.width < 1 || pixels.height < 1) return std::nullopt;
    const auto rowBytes =
        static_cast<std::size_t>(pixels.width) * static_cast<std::size_t>(pixels.samplesPerPixel);
    auto bytes = allocatePixelMemory(rowBytes * static_cast<std::size_t>(pixels.height),
                                     PixelContents::Undefined);
    if (!bytes) return std::nullopt;
    for (int y = 0; y < pixels.height; ++y)
        std::memcpy(bytes.get() + static_cast<std::size_t>(y) * rowBytes, pixels.row(y), rowBytes);
    return share(std::move(bytes), pixels.width, pixels.height, rowBytes, pixels.samplesPerPixel);
}

std::optional<CGImage> CGImage::withAlpha() const {
    if (view_.samplesPerPixel == 4) return *this;
    auto buffer = PixelBuffer::uninitialized(view_.width, view_.height);
    if (!buffer) return std::nullopt;
    const MutablePixelView target = buffer->view();
    for (int y = 0; y < view_.height; ++y) {
        const std::uint8_t* from = view_.row(y);
        std::uint8_t* to = target.row(y);
        for (int x = 0; x < view_.width; ++x, from += 3, to += 4) {
            to[0] = from[0];
            to[1] = from[1];
            to[2] = from[2];
            to[3] = 255;
        }
    }
    return CGImage(std::move(*buffer));
}

bool CGImage::isSame(const CGImage& other) const {
    return view_.bytes == other.view_.bytes && view_.width == other.view_.width &&
           view_.height == other.view_.height && view_.strideBytes == other.view_.strideBytes &&
           view_.samplesPerPixel == other.view_.samplesPerPixel;
}

}  // namespace skarnel
