// Encoding and decoding 12 megapixels; checked by the picture that comes back.
#include <cstring>
#include <memory>

#include "bench_case.h"
#include "imaging/io/image_io.h"

namespace skarnel::bench {
namespace {

CGImage gradient(int width, int height) {
    PixelBuffer buffer = *PixelBuffer::uninitialized(width, height);
    std::uint32_t state = 7;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            state = state * 1664525U + 1013904223U;
            std::uint8_t* pixel = buffer.view().row(y) + std::ptrdiff_t{4} * x;
            pixel[0] = static_cast<std::uint8_t>(x * 255 / width);
            pixel[1] = static_cast<std::uint8_t>(y * 255 / height);
            pixel[2] = static_cast<std::uint8_t>(state >> 28);
            pixel[3] = 255;
        }
    return CGImage(std::move(buffer));
}

void addFormat(std::vector<Case>& cases, const std::string& name, std::string_view type,
               const ImageProperties& properties, bool exact) {
    const auto image = std::make_shared<CGImage>(gradient(4000, 3000));
    const auto bytes = std::make_shared<Bytes>();
    if (auto encoded = encodeImage(*image, type, properties)) *bytes = *std::move(encoded);
    const std::size_t size = 4000UL * 3000UL * 4UL;
    const auto comesBack = [=] {
        const auto decoded = decodeImage(*bytes);
        return decoded && decoded->image.width() == 4000 && decoded->image.height() == 3000 &&
               (!exact ||
                std::memcmp(decoded->image.pixels().bytes, image->pixels().bytes, size) == 0);
    };
    cases.push_back({"encode " + name + " 4000x3000", size, 12, comesBack,
                     [=] { (void)encodeImage(*image, type, properties); }});
    cases.push_back(
        {"decode " + name + " 4000x3000", size, 12, comesBack, [=] { (void)decodeImage(*bytes); }});
}

}  // namespace

std::vector<Case> codecCases() {
    std::vector<Case> cases;
    const std::string compression(kPropertyTiffCompression);
    addFormat(cases, "TIFF-LZW", kUTTypeTIFF, {{compression, std::int64_t{5}}}, true);
    addFormat(cases, "TIFF-deflate", kUTTypeTIFF, {{compression, std::int64_t{8}}}, true);
    addFormat(cases, "TIFF-raw", kUTTypeTIFF, {{compression, std::int64_t{1}}}, true);
    addFormat(cases, "PNG", kUTTypePNG, {}, true);
    addFormat(cases, "JPEG", kUTTypeJPEG, {{std::string(kPropertyLossyQuality), 0.9}}, false);
    return cases;
}

}  // namespace skarnel::bench
