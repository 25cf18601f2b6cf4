// How the samples of a TIFF's first picture lie, and whether they can be had at a bearable cost.
#pragma once

#include <cstdint>

#include "imaging/io/readers.h"
#include "imaging/io/tiff_library.h"

namespace skarnel::io {

struct TiffLayout {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint16_t bits = 1;
    std::uint16_t samples = 1;
    std::uint16_t photometric = PHOTOMETRIC_MINISBLACK;
    std::uint16_t planar = PLANARCONFIG_CONTIG;
    std::uint16_t format = SAMPLEFORMAT_UINT;
    std::uint16_t compression = COMPRESSION_NONE;
    std::uint16_t orientation = 1;
    Alpha alpha = Alpha::Opaque;

    int colors() const {
        if (photometric == PHOTOMETRIC_RGB) return 3;
        return photometric == PHOTOMETRIC_SEPARATED ? 4 : 1;
    }
    bool hasAlpha() const { return alpha != Alpha::Opaque; }
};

/// What the directory says; what it leaves out is as the format has it by default. JPEG inside with
/// luma and chroma is told to give red, green and blue.
TiffLayout readTiffLayout(TIFF* tiff);

/// Whether samples are taken from strips and tiles here; others are converted by the library.
bool isReadDirectly(TIFF* tiff, const TiffLayout& layout);

/// Whether a strip's row or a tile is larger than a picture of that size in so many bytes needs, or
/// all of them together unpack to more than such a picture accounts for. Strips may share their
/// bytes, and have 65,535 samples a pixel.
bool unpacksToTooMuch(TIFF* tiff, const TiffLayout& layout, std::uint64_t fileBytes);

}  // namespace skarnel::io
