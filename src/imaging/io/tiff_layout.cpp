#include "imaging/io/tiff_layout.h"

#include <algorithm>
#include <cmath>

namespace skarnel::io {
namespace {

/// An extra sample of unstated meaning is a stored selection or the like, not transparency.
Alpha alphaOf(TIFF* tiff, const TiffLayout& layout) {
    std::uint16_t count = 0;
    const std::uint16_t* kinds = nullptr;
    TIFFGetFieldDefaulted(tiff, TIFFTAG_EXTRASAMPLES, &count, &kinds);
    if (count == 0 || layout.samples <= layout.colors()) return Alpha::Opaque;
    if (kinds[0] == EXTRASAMPLE_ASSOCALPHA) return Alpha::Premultiplied;
    return kinds[0] == EXTRASAMPLE_UNASSALPHA ? Alpha::Straight : Alpha::Opaque;
}

/// Of a strip's row, since strips are read row by row where they are large, or of a tile; and of
/// all of them. Numbers of any size may be stated, and 53 bits of each are enough here.
struct Unpacked {
    double block;
    double all;
};

Unpacked unpackedBytes(TIFF* tiff, const TiffLayout& layout) {
    // No more planes are read than there are colours and transparency.
    constexpr int kMostPlanes = 5;
    const int planes =
        layout.planar == PLANARCONFIG_SEPARATE ? std::min<int>(layout.samples, kMostPlanes) : 1;
    if (TIFFIsTiled(tiff) == 0) {
        const auto row = static_cast<double>(TIFFScanlineSize(tiff));
        return {row, row * layout.height * planes};
    }
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    TIFFGetField(tiff, TIFFTAG_TILEWIDTH, &width);
    TIFFGetField(tiff, TIFFTAG_TILELENGTH, &height);
    const double tile = static_cast<double>(TIFFTileRowSize(tiff)) * height;
    const double across = std::ceil(double{1} * layout.width / std::max(width, 1U));
    const double down = std::ceil(double{1} * layout.height / std::max(height, 1U));
    return {tile, tile * across * down * planes};
}

}  // namespace

TiffLayout readTiffLayout(TIFF* tiff) {
    TiffLayout layout;
    TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &layout.width);
    TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &layout.height);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_BITSPERSAMPLE, &layout.bits);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLESPERPIXEL, &layout.samples);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_PLANARCONFIG, &layout.planar);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLEFORMAT, &layout.format);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_COMPRESSION, &layout.compression);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_ORIENTATION, &layout.orientation);
    TIFFGetField(tiff, TIFFTAG_PHOTOMETRIC, &layout.photometric);
    if (layout.photometric == PHOTOMETRIC_YCBCR && layout.compression == COMPRESSION_JPEG &&
        layout.planar == PLANARCONFIG_CONTIG) {
        // The JPEG codec converts by itself when it is asked to.
        TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
        layout.photometric = PHOTOMETRIC_RGB;
    }
    layout.alpha = alphaOf(tiff, layout);
    return layout;
}

bool isReadDirectly(TIFF* tiff, const TiffLayout& layout) {
    const bool whole = layout.format == SAMPLEFORMAT_UINT || layout.format == SAMPLEFORMAT_VOID;
    const bool bitsFit = whole ? (layout.bits >= 1 && layout.bits <= 16) || layout.bits == 32
                               : layout.format == SAMPLEFORMAT_IEEEFP && layout.bits == 32;
    if (!bitsFit || layout.samples < layout.colors()) return false;
    switch (layout.photometric) {
        case PHOTOMETRIC_MINISBLACK:
        case PHOTOMETRIC_MINISWHITE:
        case PHOTOMETRIC_RGB:
            return true;
        case PHOTOMETRIC_PALETTE:
            return layout.bits <= 8;  // no float is that short
        case PHOTOMETRIC_SEPARATED: {
            std::uint16_t inks = INKSET_CMYK;
            TIFFGetFieldDefaulted(tiff, TIFFTAG_INKSET, &inks);
            return inks == INKSET_CMYK;
        }
        default:
            return false;
    }
}

bool unpacksToTooMuch(TIFF* tiff, const TiffLayout& layout, std::uint64_t fileBytes) {
    constexpr double kLeastBlockBytes = 128 << 20;
    constexpr double kBlockBytesAPixel = 12;  // that decoding may take besides, as of a whole codec
    constexpr double kBytesAPixel = 24;       // inks, alpha and another sample, 32 bits each
    constexpr double kBytesAFileByte = 1032;  // as much as deflate can pack into one
    constexpr double kSpareBytes = 64 << 20;
    const Unpacked unpacked = unpackedBytes(tiff, layout);
    const double pixels = double{1} * layout.width * layout.height;
    const double packed = static_cast<double>(fileBytes) * kBytesAFileByte;
    // A picture may be one tile.
    const double mostInBlock =
        std::max(kLeastBlockBytes, std::min(pixels * kBlockBytesAPixel, packed));
    return unpacked.block > mostInBlock ||
           unpacked.all > pixels * kBytesAPixel + packed + kSpareBytes;
}

}  // namespace skarnel::io
