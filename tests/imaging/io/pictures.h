// Small pictures for the tests of reading and writing.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <initializer_list>
#include <random>
#include <vector>

#include "imaging/cgimage.h"
#include "imaging/io/image_io.h"

namespace skarnel::testing {

using Rgba = std::array<std::uint8_t, 4>;

/// A picture of literal premultiplied pixels, top row first.
inline CGImage picture(int width, int height, const std::vector<Rgba>& pixels) {
    auto buffer = PixelBuffer::zeroed(width, height);
    const MutablePixelView view = buffer->view();
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const Rgba& pixel = pixels.at(static_cast<std::size_t>(y * width + x));
            std::copy(pixel.begin(), pixel.end(), view.row(y) + 4 * x);
        }
    }
    return CGImage(*std::move(buffer));
}

inline Rgba pixelAt(const CGImage& image, int x, int y) {
    const std::uint8_t* pixel = image.pixels().row(y) + 4 * x;
    return {pixel[0], pixel[1], pixel[2], pixel[3]};
}

inline std::vector<Rgba> pixelsOf(const CGImage& image) {
    std::vector<Rgba> pixels;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) pixels.push_back(pixelAt(image, x, y));
    }
    return pixels;
}

/// Random pixels whose colours are at most their alpha; a third each opaque, clear, between.
inline CGImage randomValidPicture(int width, int height, unsigned seed) {
    std::mt19937 random(seed);
    std::vector<Rgba> pixels;
    for (int i = 0; i < width * height; ++i) {
        const unsigned kind = random() % 3;
        const unsigned alpha = kind == 0 ? 255 : kind == 1 ? 0 : random() % 256;
        Rgba pixel{};
        for (std::size_t k = 0; k < 3; ++k) {
            pixel[k] = static_cast<std::uint8_t>(random() % (alpha + 1));
        }
        pixel[3] = static_cast<std::uint8_t>(alpha);
        pixels.push_back(pixel);
    }
    return picture(width, height, pixels);
}

inline ::testing::AssertionResult samePixels(const CGImage& a, const CGImage& b) {
    if (a.width() != b.width() || a.height() != b.height()) {
        return ::testing::AssertionFailure()
               << a.width() << "x" << a.height() << " against " << b.width() << "x" << b.height();
    }
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            if (pixelAt(a, x, y) == pixelAt(b, x, y)) continue;
            return ::testing::AssertionFailure()
                   << "(" << x << ", " << y << "): " << ::testing::PrintToString(pixelAt(a, x, y))
                   << " against " << ::testing::PrintToString(pixelAt(b, x, y));
        }
    }
    return ::testing::AssertionSuccess();
}

inline std::int64_t wholeProperty(const ImageProperties& properties, std::string_view key) {
    const auto found = properties.find(key);
    const auto* value =
        found == properties.end() ? nullptr : std::get_if<std::int64_t>(&found->second);
    return value == nullptr ? -1 : *value;
}

inline double numberProperty(const ImageProperties& properties, std::string_view key) {
    const auto found = properties.find(key);
    const auto* value = found == properties.end() ? nullptr : std::get_if<double>(&found->second);
    return value == nullptr ? -1 : *value;
}

inline std::string textProperty(const ImageProperties& properties, std::string_view key) {
    const auto found = properties.find(key);
    const auto* value =
        found == properties.end() ? nullptr : std::get_if<std::string>(&found->second);
    return value == nullptr ? std::string() : *value;
}

}  // namespace skarnel::testing
