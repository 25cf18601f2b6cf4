#include "imaging/io/pixel_rows.h"

#include <cstring>

#include "imaging/kernels/row_coding.h"

namespace skarnel::io {
void premultiplyRow(std::uint8_t* pixels, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i, pixels += 4) {
        const unsigned a = pixels[3];
        if (a == 255) continue;
        pixels[0] = multiply255(pixels[0], a);
        pixels[1] = multiply255(pixels[1], a);
        pixels[2] = multiply255(pixels[2], a);
    }
}

void clearTransparentRow(std::uint8_t* pixels, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i, pixels += 4) {
        if (pixels[3] == 0) std::memset(pixels, 0, 4);
    }
}

void removeWhiteRow(std::uint8_t* pixels, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i, pixels += 4) {
        const int white = 255 - pixels[3];
        for (int k = 0; k < 3; ++k) {
            pixels[k] = static_cast<std::uint8_t>(pixels[k] > white ? pixels[k] - white : 0);
        }
    }
}

void unpremultiplyRow(const std::uint8_t* source, std::uint8_t* target, std::size_t count) {
    kernels::unpremultiplyRow(target, source, count);
}

void flattenRow(const std::uint8_t* source, std::uint8_t* targetRgb, std::size_t count,
                const std::array<std::uint8_t, 3>& matte) {
    for (std::size_t i = 0; i < count; ++i, source += 4, targetRgb += 3) {
        const unsigned rest = 255U - source[3];
        for (std::size_t k = 0; k < 3; ++k) {
            const unsigned sum = source[k] + unsigned{multiply255(matte[k], rest)};
            targetRgb[k] = static_cast<std::uint8_t>(sum > 255 ? 255 : sum);
        }
    }
}

bool isOpaque(PixelView pixels) {
    if (pixels.samplesPerPixel != 4) return true;
    for (int y = 0; y < pixels.height; ++y) {
        const std::uint8_t* row = pixels.row(y);
        unsigned all = 255;
        for (int x = 0; x < pixels.width; ++x) all &= row[std::size_t{4} * x + 3];
        if (all != 255) return false;
    }
    return true;
}

}  // namespace skarnel::io
