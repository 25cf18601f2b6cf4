#include "imaging/io/orientation.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace skarnel::io {
namespace {

std::uint32_t pixelAt(const std::uint8_t* bytes) {
    std::uint32_t pixel;
    std::memcpy(&pixel, bytes, 4);
    return pixel;
}

void mirrorRowsSideways(MutablePixelView view) {
    for (int y = 0; y < view.height; ++y) {
        auto* left = view.row(y);
        auto* right = left + std::ptrdiff_t{4} * (view.width - 1);
        for (; left < right; left += 4, right -= 4) {
            const std::uint32_t a = pixelAt(left);
            std::memcpy(left, right, 4);
            std::memcpy(right, &a, 4);
        }
    }
}

void exchangeRows(MutablePixelView view) {
    const std::size_t rowBytes = std::size_t{4} * view.width;
    for (int top = 0, bottom = view.height - 1; top < bottom; ++top, --bottom) {
        std::swap_ranges(view.row(top), view.row(top) + rowBytes, view.row(bottom));
    }
}

/// Square tiles keep both the rows read and the columns written in the cache.
void transpose(PixelView source, MutablePixelView target) {
    constexpr int kTile = 32;
    for (int y0 = 0; y0 < source.height; y0 += kTile) {
        const int y1 = std::min(y0 + kTile, source.height);
        for (int x0 = 0; x0 < source.width; x0 += kTile) {
            const int x1 = std::min(x0 + kTile, source.width);
            for (int x = x0; x < x1; ++x) {
                std::uint8_t* to = target.row(x) + std::ptrdiff_t{4} * y0;
                for (int y = y0; y < y1; ++y, to += 4) {
                    std::memcpy(to, source.row(y) + std::ptrdiff_t{4} * x, 4);
                }
            }
        }
    }
}

}  // namespace

std::optional<PixelBuffer> turnUpright(PixelBuffer stored, int orientation) {
    if (orientation < 2 || orientation > 8) return stored;
    const bool quarter = orientation >= 5;
    if (quarter) {
        auto turned = PixelBuffer::uninitialized(stored.height(), stored.width());
        if (!turned) return std::nullopt;
        transpose(stored.view(), turned->view());
        stored = *std::move(turned);
    }
    // After the transposition a quarter clockwise is a sideways mirror, and so on.
    const bool sideways =
        orientation == 2 || orientation == 3 || orientation == 6 || orientation == 7;
    const bool upward =
        orientation == 3 || orientation == 4 || orientation == 7 || orientation == 8;
    if (sideways) mirrorRowsSideways(stored.view());
    if (upward) exchangeRows(stored.view());
    return stored;
}

}  // namespace skarnel::io
