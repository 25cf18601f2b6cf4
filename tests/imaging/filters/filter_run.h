// Runs a filter on a small literal picture.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

#include "imaging/ciimage.h"

namespace skarnel::filters {

using Row = std::vector<int>;  // samples R, G, B, A one after the other, premultiplied

/// Rows from the top.
inline CIImage pictureOf(int width, const Row& samples) {
    const int height = static_cast<int>(samples.size()) / (4 * width);
    PixelBuffer buffer = PixelBuffer::zeroed(width, height).value();
    std::uint8_t* byte = buffer.view().bytes;
    for (const int sample : samples) *byte++ = static_cast<std::uint8_t>(sample);
    return CIImage::imageWithCGImage(CGImage(std::move(buffer)));
}

/// The filter with its defaults, the image and these values.
inline CIFilter filterOn(std::string_view name, const CIImage& image,
                         const std::vector<std::pair<std::string_view, CIValue>>& values = {}) {
    CIFilter filter = CIFilter::filterWithName(name).value();
    filter.setDefaults();
    filter.setValue(image, "inputImage");
    for (const auto& [key, value] : values) filter.setValue(value, key);
    return filter;
}

/// The samples of an area.
inline Row samplesOf(const CIImage& image, CGPoint lowerLeft, int width, int height) {
    const CGImage bitmap = image.rasterize(lowerLeft, width, height).value();
    Row samples;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < 4 * width; ++x) samples.push_back(bitmap.pixels().row(y)[x]);
    return samples;
}

}  // namespace skarnel::filters
