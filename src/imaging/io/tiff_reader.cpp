// TIFF: strips and tiles, interleaved and separate planes read directly; the rarer colour models
// through the library's own conversion.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <vector>

#include "imaging/io/exif.h"
#include "imaging/io/exif_block.h"
#include "imaging/io/readers.h"
#include "imaging/io/tiff_common.h"
#include "imaging/io/tiff_layout.h"
#include "util/log/message.h"

namespace skarnel::io {
namespace {

/// Strips above this are read row by row, so that a picture in one strip needs no second copy.
constexpr tmsize_t kMaxStripBytes = 4 << 20;

struct MemoryFile {
    ByteView bytes;
    toff_t at = 0;
};

tmsize_t readMemory(thandle_t handle, void* target, tmsize_t count) {
    auto& file = *static_cast<MemoryFile*>(handle);
    const ByteView left = file.bytes.subspan(std::min<std::size_t>(file.at, file.bytes.size()));
    const auto wanted = static_cast<std::size_t>(std::max<tmsize_t>(count, 0));
    const ByteView part = left.first(std::min(wanted, left.size()));
    std::copy(part.begin(), part.end(), static_cast<std::uint8_t*>(target));
    file.at += part.size();
    return static_cast<tmsize_t>(part.size());
}

toff_t seekMemory(thandle_t handle, toff_t offset, int whence) {
    auto& file = *static_cast<MemoryFile*>(handle);
    static_assert(SEEK_SET == 0 && SEEK_CUR == 1 && SEEK_END == 2);
    const std::array<toff_t, 3> origins = {0, file.at, file.bytes.size()};
    return file.at = origins[static_cast<std::size_t>(whence)] + offset;
}

int mapMemory(thandle_t handle, void** base, toff_t* size) {
    auto& file = *static_cast<MemoryFile*>(handle);
    *base = const_cast<std::uint8_t*>(file.bytes.data());
    *size = file.bytes.size();
    return 1;
}

TiffHandle openMemory(MemoryFile& file, TiffErrors& errors) {
    const TiffClient client{
        &file,
        readMemory,
        [](thandle_t, void*, tmsize_t) -> tmsize_t { return 0; },
        seekMemory,
        [](thandle_t handle) -> toff_t { return static_cast<MemoryFile*>(handle)->bytes.size(); },
        mapMemory};
    // Nothing that the library keeps of a directory is larger than the file it stands in.
    const auto cap = static_cast<tmsize_t>(file.bytes.size()) + (64 << 20);
    return openTiff(client, "rm", errors, cap);
}

std::uint8_t byteOfFloat(float value) {
    if (!(value > 0)) return 0;  // also for NaN
    return value >= 1 ? 255 : static_cast<std::uint8_t>(value * 255 + 0.5F);
}

/// Takes one sample of each pixel out of a row of `count` pixels into every `step`th byte.
class SampleTaker {
  public:
    explicit SampleTaker(const TiffLayout& layout) : layout_(layout) {}

    void take(const std::uint8_t* row, std::size_t samplesInRow, std::size_t sample,
              std::size_t count, std::uint8_t* out, std::size_t step) const {
        for (std::size_t x = 0; x < count; ++x, out += step) {
            *out = sampleAt(row, x * samplesInRow + sample);
        }
    }

  private:
    std::uint8_t sampleAt(const std::uint8_t* row, std::size_t index) const {
        switch (layout_.bits) {
            case 8:
                return row[index];
            case 16: {
                std::uint16_t value;
                std::memcpy(&value, row + 2 * index, 2);
                return static_cast<std::uint8_t>((value * 255U + 32767U) / 65535U);
            }
            case 32:
                if (layout_.format == SAMPLEFORMAT_IEEEFP) {
                    float value;
                    std::memcpy(&value, row + 4 * index, 4);
                    return byteOfFloat(value);
                } else {
                    std::uint32_t value;
                    std::memcpy(&value, row + 4 * index, 4);
                    return static_cast<std::uint8_t>((value * std::uint64_t{255} + 0x7FFFFFFF) /
                                                     0xFFFFFFFF);
                }
            default:
                return bitsAt(row, index);
        }
    }

    /// Packed samples, the highest bit first; a palette's are not scaled.
    std::uint8_t bitsAt(const std::uint8_t* row, std::size_t index) const {
        const std::size_t first = index * layout_.bits;
        unsigned value = 0;
        for (std::size_t bit = first; bit < first + layout_.bits; ++bit) {
            value = value << 1U | (row[bit / 8] >> (7 - bit % 8) & 1U);
        }
        if (layout_.photometric == PHOTOMETRIC_PALETTE) return static_cast<std::uint8_t>(value);
        const unsigned maximum = (1U << layout_.bits) - 1;
        return static_cast<std::uint8_t>((value * 255 + maximum / 2) / maximum);
    }

    const TiffLayout& layout_;
};

/// Reads the blocks of all planes and spreads their samples over the picture's four bytes.
class DirectReader {
  public:
    DirectReader(TIFF* tiff, const TiffLayout& layout, SourcePicture& picture)
        : tiff_(tiff), layout_(layout), picture_(picture), taker_(layout) {}

    bool run() {
        if (layout_.photometric == PHOTOMETRIC_SEPARATED && layout_.hasAlpha()) {
            picture_.cmykAlpha.resize(std::size_t{layout_.width} * layout_.height);
        }
        const bool separate = layout_.planar == PLANARCONFIG_SEPARATE;
        const int used = layout_.colors() + (layout_.hasAlpha() ? 1 : 0);
        for (int plane = 0; plane < (separate ? used : 1); ++plane) {
            plane_ = static_cast<std::uint16_t>(plane);
            if (!(TIFFIsTiled(tiff_) != 0 ? readTiles() : readStrips())) return false;
        }
        return true;
    }

  private:
    bool separate() const { return layout_.planar == PLANARCONFIG_SEPARATE; }

    bool readStrips() {
        const tmsize_t rowBytes = TIFFScanlineSize(tiff_);
        if (!holds(rowBytes, layout_.width)) return false;
        std::uint32_t rowsPerStrip = layout_.height;
        TIFFGetFieldDefaulted(tiff_, TIFFTAG_ROWSPERSTRIP, &rowsPerStrip);
        rowsPerStrip = std::clamp<std::uint32_t>(rowsPerStrip, 1, layout_.height);
        const tmsize_t stripBytes = rowBytes * static_cast<tmsize_t>(rowsPerStrip);
        if (stripBytes > kMaxStripBytes) return readScanlines(rowBytes);
        block_.resize(static_cast<std::size_t>(stripBytes));
        for (std::uint32_t y = 0; y < layout_.height; y += rowsPerStrip) {
            const std::uint32_t rows = std::min(rowsPerStrip, layout_.height - y);
            const tmsize_t wanted = rowBytes * static_cast<tmsize_t>(rows);
            const std::uint32_t strip = TIFFComputeStrip(tiff_, y, plane_);
            if (TIFFReadEncodedStrip(tiff_, strip, block_.data(), wanted) != wanted) return false;
            for (std::uint32_t i = 0; i < rows; ++i) {
                spread(block_.data() + rowBytes * static_cast<tmsize_t>(i), y + i, 0,
                       layout_.width);
            }
        }
        return true;
    }

    bool readScanlines(tmsize_t rowBytes) {
        block_.resize(static_cast<std::size_t>(rowBytes));
        for (std::uint32_t y = 0; y < layout_.height; ++y) {
            if (TIFFReadScanline(tiff_, block_.data(), y, plane_) != 1) return false;
            spread(block_.data(), y, 0, layout_.width);
        }
        return true;
    }

    bool readTiles() {
        std::uint32_t tileWidth = 0;
        std::uint32_t tileHeight = 0;
        TIFFGetField(tiff_, TIFFTAG_TILEWIDTH, &tileWidth);
        TIFFGetField(tiff_, TIFFTAG_TILELENGTH, &tileHeight);
        // The library opens no file whose tiles have no size; with one each they only fail to read.
        tileWidth = std::max(tileWidth, 1U);
        tileHeight = std::max(tileHeight, 1U);
        const tmsize_t rowBytes = TIFFTileRowSize(tiff_);
        if (!holds(rowBytes, tileWidth)) return false;
        block_.resize(static_cast<std::size_t>(rowBytes) * tileHeight);
        for (std::uint64_t y = 0; y < layout_.height; y += tileHeight) {
            for (std::uint64_t x = 0; x < layout_.width; x += tileWidth) {
                if (!readTile(static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y),
                              tileWidth, tileHeight, rowBytes)) {
                    return false;
                }
            }
        }
        return true;
    }

    bool readTile(std::uint32_t x, std::uint32_t y, std::uint32_t tileWidth,
                  std::uint32_t tileHeight, tmsize_t rowBytes) {
        const auto size = static_cast<tmsize_t>(block_.size());
        const std::uint32_t tile = TIFFComputeTile(tiff_, x, y, 0, plane_);
        if (TIFFReadEncodedTile(tiff_, tile, block_.data(), size) != size) return false;
        const std::uint32_t rows = std::min(tileHeight, layout_.height - y);
        for (std::uint32_t i = 0; i < rows; ++i) {
            spread(block_.data() + rowBytes * static_cast<tmsize_t>(i), y + i, x,
                   std::min(tileWidth, layout_.width - x));
        }
        return true;
    }

    /// The size that the library computes must cover every sample that is taken.
    bool holds(tmsize_t rowBytes, std::uint32_t pixels) const {
        const std::uint64_t samples = separate() ? 1 : layout_.samples;
        const std::uint64_t bits = std::uint64_t{pixels} * samples * layout_.bits;
        return rowBytes >= static_cast<tmsize_t>((bits + 7) / 8);
    }

    void spread(const std::uint8_t* row, std::uint32_t y, std::uint32_t x, std::uint32_t count) {
        std::uint8_t* out = picture_.pixels.view().row(static_cast<int>(y)) + std::ptrdiff_t{4} * x;
        if (!separate() && layout_.bits == 8 && layout_.samples == 4 && layout_.colors() >= 3) {
            std::memcpy(out, row, std::size_t{4} * count);
            return;
        }
        if (separate()) {
            spreadSample(row, 1, 0, plane_, y, x, count, out);
            return;
        }
        const int used = layout_.colors() + (layout_.hasAlpha() ? 1 : 0);
        for (int sample = 0; sample < used; ++sample) {
            spreadSample(row, layout_.samples, static_cast<std::size_t>(sample), sample, y, x,
                         count, out);
        }
    }

    void spreadSample(const std::uint8_t* row, std::size_t samplesInRow, std::size_t sample,
                      int meaning, std::uint32_t y, std::uint32_t x, std::uint32_t count,
                      std::uint8_t* out) {
        if (meaning < layout_.colors()) {
            taker_.take(row, samplesInRow, sample, count, out + meaning, 4);
        } else if (!picture_.cmykAlpha.empty()) {
            taker_.take(row, samplesInRow, sample, count,
                        picture_.cmykAlpha.data() + std::size_t{layout_.width} * y + x, 1);
        } else {
            taker_.take(row, samplesInRow, sample, count, out + 3, 4);
        }
    }

    TIFF* tiff_;
    const TiffLayout& layout_;
    SourcePicture& picture_;
    SampleTaker taker_;
    std::uint16_t plane_ = 0;
    std::vector<std::uint8_t> block_;
};

/// Black without a palette. Old files hold 8-bit palettes in the 16-bit entries.
std::vector<std::uint8_t> readPalette(TIFF* tiff, const TiffLayout& layout) {
    std::uint16_t* channels[3] = {};
    const std::size_t count = std::size_t{1} << layout.bits;
    std::vector<std::uint8_t> palette(count * 3);
    if (TIFFGetField(tiff, TIFFTAG_COLORMAP, &channels[0], &channels[1], &channels[2]) == 0) {
        return palette;
    }
    bool wide = false;
    for (const auto* channel : channels) {
        wide = wide || std::any_of(channel, channel + count, [](auto v) { return v > 255; });
    }
    for (std::size_t i = 0; i < count * 3; ++i) {
        const unsigned value = channels[i % 3][i / 3];
        palette[i] = static_cast<std::uint8_t>(wide ? (value * 255 + 32767) / 65535 : value);
    }
    return palette;
}

/// Completes what the samples left open: grey three times, palette colours, full alpha.
void completePixels(TIFF* tiff, const TiffLayout& layout, SourcePicture& picture) {
    if (layout.photometric == PHOTOMETRIC_SEPARATED) return;
    const bool paletted = layout.photometric == PHOTOMETRIC_PALETTE;
    std::vector<std::uint8_t> palette;
    if (paletted) palette = readPalette(tiff, layout);
    const std::uint8_t flip = layout.photometric == PHOTOMETRIC_MINISWHITE ? 255 : 0;
    const MutablePixelView view = picture.pixels.view();
    for (int y = 0; y < view.height; ++y) {
        std::uint8_t* pixel = view.row(y);
        for (int x = 0; x < view.width; ++x, pixel += 4) {
            if (paletted) {
                std::memcpy(pixel, palette.data() + std::size_t{3} * pixel[0], 3);
            } else if (layout.colors() == 1) {
                pixel[0] = pixel[1] = pixel[2] = pixel[0] ^ flip;
            }
            if (!layout.hasAlpha()) pixel[3] = 255;
        }
    }
}

bool readThroughLibrary(TIFF* tiff, SourcePicture& picture) {
    // Orientation is applied later; told that the picture is upright, the library leaves it.
    TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    const MutablePixelView view = picture.pixels.view();
    auto* raster = reinterpret_cast<std::uint32_t*>(view.bytes);
    if (TIFFReadRGBAImageOriented(tiff, static_cast<std::uint32_t>(view.width),
                                  static_cast<std::uint32_t>(view.height), raster,
                                  ORIENTATION_TOPLEFT, 1) == 0) {
        return false;
    }
    const std::size_t count = std::size_t(view.width) * static_cast<std::size_t>(view.height);
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint32_t pixel = raster[i];
        view.bytes[4 * i] = static_cast<std::uint8_t>(TIFFGetR(pixel));
        view.bytes[4 * i + 1] = static_cast<std::uint8_t>(TIFFGetG(pixel));
        view.bytes[4 * i + 2] = static_cast<std::uint8_t>(TIFFGetB(pixel));
        view.bytes[4 * i + 3] = static_cast<std::uint8_t>(TIFFGetA(pixel));
    }
    picture.alpha = Alpha::Premultiplied;
    return true;
}

void describe(TIFF* tiff, ByteView bytes, const TiffLayout& layout, SourcePicture& picture) {
    picture.orientation = layout.orientation;  // 1 to 8: the library takes others for 1
    std::uint32_t profileBytes = 0;
    const void* profile = nullptr;
    if (TIFFGetField(tiff, TIFFTAG_ICCPROFILE, &profileBytes, &profile) != 0) {
        const auto* first = static_cast<const std::uint8_t*>(profile);
        picture.profile.assign(first, first + profileBytes);
    }
    float x = 0;
    float y = 0;
    std::uint16_t unit = RESUNIT_INCH;
    TIFFGetFieldDefaulted(tiff, TIFFTAG_RESOLUTIONUNIT, &unit);
    if (unit != RESUNIT_NONE) {
        TIFFGetField(tiff, TIFFTAG_XRESOLUTION, &x);
        TIFFGetField(tiff, TIFFTAG_YRESOLUTION, &y);
        const double perInch = unit == RESUNIT_CENTIMETER ? 2.54 : 1;
        setResolution(picture.properties, double{x} * perInch, double{y} * perInch);
    }
    if (const ExifTree tree = readExifTree(bytes); !tree.empty()) {
        (void)readExif(writeExifBlock(tree, std::nullopt), picture.properties);
    }
    picture.properties.insert_or_assign(std::string(kPropertyTiffCompression),
                                        std::int64_t{layout.compression});
    const bool gray = layout.photometric == PHOTOMETRIC_MINISBLACK ||
                      layout.photometric == PHOTOMETRIC_MINISWHITE;
    const bool inks = picture.samples == Samples::Cmyk;
    describePicture(picture, gray ? "Gray" : inks ? "CMYK" : "RGB", layout.bits, layout.hasAlpha());
}

}  // namespace

Result<SourcePicture> readTiff(ByteView bytes, const DecodeLimits& limits) {
    if (auto library = tiffLibrary().need(); !library) return library.error();
    MemoryFile file{bytes};
    TiffErrors errors;
    const TiffHandle tiff = openMemory(file, errors);
    auto damaged = [&errors] {
        const char* message = errors.message.data();
        return Error{ErrorCode::Damaged, *message != 0 ? message : marked("The TIFF is damaged")};
    };
    if (!tiff) return damaged();
    const TiffLayout layout = readTiffLayout(tiff.get());
    auto pixels = allocatePicture(layout.width, layout.height, limits);
    if (!pixels) return pixels.error();
    if (layout.compression == COMPRESSION_JBIG) {
        // Its strips have sizes of their own, which nobody looks at before they are unpacked.
        return {ErrorCode::Unsupported, "TIFF with JBIG compression"};
    }
    if (unpacksToTooMuch(tiff.get(), layout, bytes.size())) {
        return {ErrorCode::TooLarge, "The TIFF unpacks to too much for a picture of its size"};
    }
    SourcePicture picture(*std::move(pixels));
    if (isReadDirectly(tiff.get(), layout)) {
        picture.alpha = layout.alpha;
        if (layout.photometric == PHOTOMETRIC_SEPARATED) picture.samples = Samples::Cmyk;
        if (layout.photometric == PHOTOMETRIC_MINISBLACK ||
            layout.photometric == PHOTOMETRIC_MINISWHITE) {
            picture.samples = Samples::Gray;
        }
        if (!DirectReader(tiff.get(), layout, picture).run()) return damaged();
        completePixels(tiff.get(), layout, picture);
    } else if (!readThroughLibrary(tiff.get(), picture)) {
        return damaged();
    }
    describe(tiff.get(), bytes, layout, picture);
    return picture;
}

}  // namespace skarnel::io
