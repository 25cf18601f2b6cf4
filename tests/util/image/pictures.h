// Small literal pictures for the tests of the image categories.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <ostream>
#include <utility>
#include <vector>

#include "imaging/nsimage/nsimage.h"

namespace skarnel::pictures {

/// One pixel, premultiplied.
struct Pixel {
    int r = 0, g = 0, b = 0, a = 0;
    friend bool operator==(const Pixel&, const Pixel&) = default;
    friend std::ostream& operator<<(std::ostream& out, const Pixel& p) {
        return out << '(' << p.r << ' ' << p.g << ' ' << p.b << ' ' << p.a << ')';
    }
};

inline constexpr Pixel kClear{0, 0, 0, 0};
inline constexpr Pixel kBlack{0, 0, 0, 255};
inline constexpr Pixel kWhite{255, 255, 255, 255};
inline constexpr Pixel kRed{255, 0, 0, 255};
inline constexpr Pixel kGreen{0, 255, 0, 255};
inline constexpr Pixel kBlue{0, 0, 255, 255};

/// Rows from the top.
inline CGImage bitmapOf(int width, const std::vector<Pixel>& pixels) {
    const int height = static_cast<int>(pixels.size()) / width;
    PixelBuffer buffer = PixelBuffer::zeroed(width, height).value();
    std::uint8_t* byte = buffer.view().bytes;
    for (const Pixel& pixel : pixels)
        for (const int value : {pixel.r, pixel.g, pixel.b, pixel.a})
            *byte++ = static_cast<std::uint8_t>(value);
    return CGImage(std::move(buffer));
}

inline CGImage plainBitmap(int width, int height, Pixel pixel) {
    return bitmapOf(width,
                    std::vector<Pixel>(
                        static_cast<std::size_t>(width) * static_cast<std::size_t>(height), pixel));
}

/// An image of one bitmap, one point a pixel.
inline NSImage imageOf(const CGImage& bitmap) {
    NSImage image = NSImage::initWithSize(
        {static_cast<double>(bitmap.width()), static_cast<double>(bitmap.height())});
    image.addRepresentation(NSBitmapImageRep::initWithCGImage(bitmap));
    return image;
}

inline NSImage imageOf(int width, const std::vector<Pixel>& pixels) {
    return imageOf(bitmapOf(width, pixels));
}

inline NSImage plainImage(int width, int height, Pixel pixel) {
    return imageOf(plainBitmap(width, height, pixel));
}

/// Column x, row y counted from the top.
inline Pixel pixelAt(const CGImage& bitmap, int x, int y) {
    const std::uint8_t* p = bitmap.pixels().row(y) + bitmap.pixels().samplesPerPixel * x;
    return {p[0], p[1], p[2], bitmap.pixels().samplesPerPixel == 4 ? p[3] : 255};
}

inline Pixel pixelAt(const NSImage& image, int x, int y) {
    return pixelAt(image.bitmap().value(), x, y);
}

/// All pixels, row by row from the top.
inline std::vector<Pixel> pixelsOf(const CGImage& bitmap) {
    std::vector<Pixel> all;
    for (int y = 0; y < bitmap.height(); ++y)
        for (int x = 0; x < bitmap.width(); ++x) all.push_back(pixelAt(bitmap, x, y));
    return all;
}

inline std::vector<Pixel> pixelsOf(const NSImage& image) {
    return pixelsOf(image.bitmap().value());
}

/// A representation without a bitmap of its own: a filter image of one colour.
inline std::shared_ptr<NSImageRep> filterRepresentation(int width, int height, Pixel pixel) {
    return std::make_shared<NSCIImageRep>(
        CIImage::imageWithCGImage(plainBitmap(width, height, pixel)));
}

inline std::shared_ptr<NSImageRep> plainRepresentation(int width, int height, Pixel pixel) {
    return NSBitmapImageRep::initWithCGImage(plainBitmap(width, height, pixel));
}

}  // namespace skarnel::pictures
