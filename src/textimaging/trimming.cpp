#include "textimaging/trimming.h"

#include <algorithm>

#include "textimaging/kernels/page_scan.h"
#include "util/image/focus.h"
#include "util/image/ns_exception.h"

namespace skarnel::Trimming {
namespace {

constexpr std::int32_t kLargestDistance = 510;  // of two pixels: the root of 4 * 255^2

// Inclusive; as the scan begins when nothing is used.
struct UsedBox {
    std::int32_t minX;
    std::int32_t minY;
    std::int32_t maxX = 0;
    std::int32_t maxY = 0;
};

// A scan over rows of one number of samples; the search below is compiled for both.
struct FourSamples {
    kernels::UsedRule rule;
    std::size_t first(const std::uint8_t* row, std::size_t pixels) const {
        return kernels::firstUsed(row, rule, pixels);
    }
    std::size_t end(const std::uint8_t* row, std::size_t pixels) const {
        return kernels::endOfUsed(row, rule, pixels);
    }
};

struct ThreeSamples {
    kernels::UsedRule rule;
    bool isUsed(const std::uint8_t* pixel) const {
        std::int32_t sum = 0;
        for (std::size_t k = 0; k < 3; ++k) {
            const int difference = int{rule.reference[k]} - pixel[k];
            sum += difference * difference;
        }
        return sum > rule.squaredLimit;
    }
    std::size_t first(const std::uint8_t* row, std::size_t pixels) const {
        std::size_t x = 0;
        while (x < pixels && !isUsed(row + 3 * x)) ++x;
        return x;
    }
    std::size_t end(const std::uint8_t* row, std::size_t pixels) const {
        std::size_t last = pixels;
        while (last > 0 && !isUsed(row + 3 * (last - 1))) --last;
        return last;
    }
};

// From above to the first used row, from below to the last one; between them only what lies outside
// the columns found so far: one pass in all, and hardly any where the picture is full.
template <typename Scan>
UsedBox findUsed(const Scan& scan, const std::uint8_t* data, int width, int height,
                 std::size_t rowBytes) {
    UsedBox box{width, height};
    const auto row = [&](int y) { return data + static_cast<std::size_t>(y) * rowBytes; };
    const auto pixels = static_cast<std::size_t>(width);
    int top = 0;
    while (top < height && scan.first(row(top), pixels) == pixels) ++top;
    if (top == height) return box;
    int bottom = height - 1;
    while (bottom > top && scan.end(row(bottom), pixels) == 0) --bottom;
    std::size_t left = pixels;
    std::size_t right = 0;  // one past
    for (int y = top; y <= bottom; ++y) {
        left = scan.first(row(y), left);
        right += scan.end(row(y) + rowBytes / pixels * right, pixels - right);
    }
    return {static_cast<std::int32_t>(left), top, static_cast<std::int32_t>(right) - 1, bottom};
}

// The distance is a root that is compared as a double; for whole numbers the squares compare alike.
std::int32_t squaredLimit(std::int32_t tolerance) {
    if (tolerance < 0) return -1;
    const std::int32_t bounded = std::min(tolerance, kLargestDistance);
    return bounded * bounded;
}

}  // namespace

CGRect usedRect(const NSBitmapImageRep& bitmap, std::int32_t tolerance) {
    const int width = bitmap.pixelsWide();
    const int height = bitmap.pixelsHigh();
    const auto samples = static_cast<std::size_t>(bitmap.samplesPerPixel());
    const std::uint8_t* data = bitmap.bitmapData();
    const std::size_t rowBytes = static_cast<std::size_t>(width) * samples;
    kernels::UsedRule rule;
    std::copy_n(data, samples, rule.reference.begin());
    rule.squaredLimit = squaredLimit(tolerance);
    const UsedBox box = bitmap.hasAlpha()
                            ? findUsed(FourSamples{rule}, data, width, height, rowBytes)
                            : findUsed(ThreeSamples{rule}, data, width, height, rowBytes);
    return {static_cast<double>(box.minX), static_cast<double>(height - 1 - box.maxY),
            static_cast<double>(box.maxX - box.minX + 1),
            static_cast<double>(box.maxY - box.minY + 1)};
}

CGRect usedRect(const NSImage& image, std::int32_t tolerance) {
    const std::optional<DecodedImage> decoded = image.decodedTIFFRepresentation();
    if (!decoded)
        throw NSException("NSInvalidArgumentException", "The image has no bitmap to look at");
    return usedRect(NSBitmapImageRep(decoded->image), tolerance);
}

std::optional<NSImage> scaleImageToSize(const NSImage& image, CGSize size, bool trim,
                                        std::int32_t tolerance, bool expand, bool scaleUp) {
    const CGRect used = trim ? usedRect(image, tolerance) : rectFromSize(image.size());
    const bool scales = scaleUp || used.height > size.height || used.width > size.width;
    const CGRect destination = scales ? sizeRectInRect(used, rectFromSize(size), expand)
                                      : CGRect{0, 0, used.width, used.height};
    const NSImage canvas = NSImage::initWithSize(destination.size());
    FocusLock focus(canvas);
    focus->setImageInterpolation(InterpolationQuality::High);
    focus->drawImage(image, destination, used, CompositeOperation::SourceOver, 1.0);
    focus.unlock();
    const std::optional<Bytes> data = canvas.TIFFRepresentation();
    return data ? NSImage::initWithData(*data) : std::nullopt;
}

}  // namespace skarnel::Trimming
