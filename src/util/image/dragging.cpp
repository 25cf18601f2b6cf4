#include "util/image/dragging.h"

#include "util/image/focus.h"

namespace skarnel::Dragging {

std::optional<NSImage> imageWithAlphaComponent(const NSImage& image, float /*alpha*/) {
    constexpr int kCacheNever = 3;
    const std::optional<Bytes> data = image.TIFFRepresentation();
    if (!data) return std::nullopt;
    std::optional<NSImage> copy = NSImage::initWithData(*data);
    if (!copy) return std::nullopt;
    copy->setCacheMode(kCacheNever);
    for (const auto& representation : copy->representations()) {
        FocusLock focus(*copy, representation);
        focus->setColor(NSColor::colorWithDeviceWhite(0.0, 0.5));
        focus->fillRect(rectFromSize(representation->size()), CompositeOperation::DestinationIn);
        focus.unlock();
    }
    return copy;
}

}  // namespace skarnel::Dragging
