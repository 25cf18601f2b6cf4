// Small pictures for the tests of the command line.
#pragma once

#include <cstdint>
#include <fstream>
#include <string>

#include "imaging/cgimage.h"
#include "imaging/io/image_io.h"

namespace skarnel::test {

/// An opaque picture in which every pixel tells where it stands.
inline CGImage gradientPicture(int width, int height) {
    PixelBuffer buffer = *PixelBuffer::zeroed(width, height);
    for (int y = 0; y < height; ++y) {
        std::uint8_t* pixel = buffer.view().row(y);
        for (int x = 0; x < width; ++x, pixel += 4) {
            pixel[0] = static_cast<std::uint8_t>(x * 7);
            pixel[1] = static_cast<std::uint8_t>(y * 5);
            pixel[2] = static_cast<std::uint8_t>(x + y);
            pixel[3] = 255;
        }
    }
    return CGImage(std::move(buffer));
}

inline void putBytes(const std::string& path, const Bytes& bytes) {
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
}

inline void putPicture(const std::string& path, int width, int height,
                       std::string_view type = kUTTypePNG) {
    putBytes(path, *encodeImage(gradientPicture(width, height), type));
}

inline std::string textOf(const Bytes& bytes) {
    return {bytes.begin(), bytes.end()};
}

}  // namespace skarnel::test
