#include "card.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>

namespace skarnel::library {
namespace {

struct Rgb {
    double r, g, b;
};

Rgb mix(Rgb a, Rgb b, double t) {
    return {a.r + (b.r - a.r) * t, a.g + (b.g - a.g) * t, a.b + (b.b - a.b) * t};
}

/// The card's colour at a place; u and v run from 0 to 1, v downward.
Rgb colorAt(double u, double v, double aspect) {
    constexpr double kCorner = 0.14;
    const double fromSide = std::min(u, 1 - u) * aspect;
    if (fromSide < kCorner && std::min(v, 1 - v) < kCorner) {
        if (v < 0.5) return u < 0.5 ? Rgb{214, 48, 49} : Rgb{0, 148, 98};
        return u < 0.5 ? Rgb{9, 96, 196} : Rgb{240, 173, 0};
    }
    const double dx = (u - 0.68) * aspect;
    const double dy = v - 0.34;
    if (dx * dx + dy * dy < 0.15 * 0.15) return {255, 236, 150};
    const double nearHill = 0.78 + 0.09 * std::sin(u * 7.0 + 0.6);
    const double farHill = 0.62 + 0.12 * std::sin(u * 4.3 + 2.1);
    if (v > nearHill) return mix({52, 92, 74}, {24, 56, 52}, (v - nearHill) / 0.3);
    if (v > farHill) return mix({102, 132, 130}, {78, 110, 108}, (v - farHill) / 0.3);
    return mix({88, 140, 205}, {247, 214, 190}, v / 0.7);
}

/// Over the pixel's area, so that edges are smooth.
Rgb averageAt(int x, int y, int width, int height) {
    constexpr int kParts = 4;
    Rgb sum{0, 0, 0};
    for (int part = 0; part < kParts * kParts; ++part) {
        const double u = (x + (part % kParts + 0.5) / kParts) / width;
        const double v = (y + (part / kParts + 0.5) / kParts) / height;
        const Rgb color = colorAt(u, v, 1.0 * width / height);
        sum = {sum.r + color.r, sum.g + color.g, sum.b + color.b};
    }
    constexpr double kShare = 1.0 / (kParts * kParts);
    return {sum.r * kShare, sum.g * kShare, sum.b * kShare};
}

std::uint8_t toByte(double value) {
    return static_cast<std::uint8_t>(std::lround(std::clamp(value, 0.0, 255.0)));
}

/// Rows of three bits, the top row first.
constexpr std::array<std::array<int, 5>, 10> kDigits{{{7, 5, 5, 5, 7},
                                                      {2, 6, 2, 2, 7},
                                                      {7, 1, 7, 4, 7},
                                                      {7, 1, 7, 1, 7},
                                                      {5, 5, 7, 1, 1},
                                                      {7, 4, 7, 1, 7},
                                                      {7, 4, 7, 5, 7},
                                                      {7, 1, 1, 1, 1},
                                                      {7, 5, 7, 5, 7},
                                                      {7, 5, 7, 1, 7}}};

void drawDigit(NSGraphicsContext& context, std::size_t digit, CGPoint at) {
    constexpr double kDot = 2;
    for (int row = 0; row < 5; ++row)
        for (int column = 0; column < 3; ++column)
            if ((kDigits[digit][static_cast<std::size_t>(row)] >> (2 - column) & 1) != 0)
                context.fillRect({at.x + column * kDot, at.y + (4 - row) * kDot, kDot, kDot});
}

}  // namespace

NSImage testCard(int width, int height) {
    PixelBuffer buffer = PixelBuffer::zeroed(width, height).value();
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const Rgb color = averageAt(x, y, width, height);
            std::uint8_t* pixel = buffer.view().row(y) + std::ptrdiff_t{4} * x;
            pixel[0] = toByte(color.r);
            pixel[1] = toByte(color.g);
            pixel[2] = toByte(color.b);
            pixel[3] = 255;
        }
    NSImage card = NSImage::initWithSize({static_cast<double>(width), static_cast<double>(height)});
    card.addRepresentation(NSBitmapImageRep::initWithCGImage(CGImage(std::move(buffer))));
    return card;
}

NSColor gray(double white) {
    return NSColor::colorWithDeviceWhite(white, 1);
}

void drawNumber(NSGraphicsContext& context, int number, CGPoint at) {
    for (const char digit : std::to_string(number)) {
        drawDigit(context, static_cast<std::size_t>(digit - '0'), at);
        at.x += 8;
    }
}

void drawInto(NSGraphicsContext& context, const NSImage& image, CGRect rect) {
    context.drawImage(image, rect, rectFromSize(image.size()), CompositeOperation::SourceOver, 1);
}

}  // namespace skarnel::library
