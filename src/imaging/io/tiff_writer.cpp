// TIFF that keeps every byte: associated alpha, lossless compression, strips of about 256 KB.
#include <algorithm>
#include <cstring>
#include <new>
#include <optional>
#include <string>
#include <vector>

#include "imaging/io/deflate.h"
#include "imaging/io/exif_block.h"
#include "imaging/io/tiff_common.h"
#include "imaging/io/tiff_strips.h"
#include "imaging/io/writers.h"
#include "imaging/pixel_memory.h"

namespace skarnel::io {
namespace {

constexpr std::int64_t kStripBytes = 256 << 10;

struct MemoryFile {
    Bytes bytes;
    toff_t at = 0;
    bool outOfMemory = false;
};

tmsize_t readMemory(thandle_t handle, void* target, tmsize_t count) {
    auto& file = *static_cast<MemoryFile*>(handle);
    if (file.at >= file.bytes.size() || count <= 0) return 0;
    const auto left = static_cast<tmsize_t>(file.bytes.size() - file.at);
    const tmsize_t part = std::min(count, left);
    std::memcpy(target, file.bytes.data() + file.at, static_cast<std::size_t>(part));
    file.at += static_cast<toff_t>(part);
    return part;
}

tmsize_t writeMemory(thandle_t handle, void* source, tmsize_t count) try {
    auto& file = *static_cast<MemoryFile*>(handle);
    if (count <= 0) return 0;
    if (source == nullptr) {
        // The library passes on what it had no memory for without looking at it.
        file.outOfMemory = true;
        return 0;
    }
    const auto* bytes = static_cast<const std::uint8_t*>(source);
    if (file.at > file.bytes.size()) file.bytes.resize(file.at);
    const std::size_t over =
        std::min<std::size_t>(file.bytes.size() - file.at, static_cast<std::size_t>(count));
    std::copy_n(bytes, over, file.bytes.data() + file.at);
    file.bytes.insert(file.bytes.end(), bytes + over, bytes + count);
    file.at += static_cast<toff_t>(count);
    return count;
} catch (const std::bad_alloc&) {
    static_cast<MemoryFile*>(handle)->outOfMemory = true;
    return 0;
}

toff_t seekMemory(thandle_t handle, toff_t offset, int whence) {
    auto& file = *static_cast<MemoryFile*>(handle);
    if (whence == SEEK_CUR) offset += file.at;
    if (whence == SEEK_END) offset += file.bytes.size();
    return file.at = offset;
}

TiffHandle openMemory(MemoryFile& file, TiffErrors& errors, bool large) {
    const TiffClient client{
        &file, readMemory, writeMemory, seekMemory,
        [](thandle_t handle) -> toff_t { return static_cast<MemoryFile*>(handle)->bytes.size(); }};
    return openTiff(client, large ? "w8m" : "wm", errors, 0);
}

std::uint16_t compressionOf(const ImageProperties& properties) {
    const double number =
        numberProperty(properties, kPropertyTiffCompression).value_or(COMPRESSION_LZW);
    if (number == COMPRESSION_NONE) return COMPRESSION_NONE;
    if (number == COMPRESSION_ADOBE_DEFLATE || number == COMPRESSION_DEFLATE) {
        return COMPRESSION_ADOBE_DEFLATE;
    }
    if (number == COMPRESSION_PACKBITS) return COMPRESSION_PACKBITS;
    // LZW also for those that a photo cannot be written with (fax, old JPEG).
    return COMPRESSION_LZW;
}

/// Leaves a file that was not finished open, also where an exception passes. Closing would write
/// the unfinished directory, and the library crashes over the holes that a want of memory leaves in
/// it. A few kilobytes lost are the lesser evil.
class LeftOpen {
  public:
    explicit LeftOpen(TiffHandle& tiff) : tiff_(tiff) {}
    ~LeftOpen() { static_cast<void>(tiff_.release()); }
    LeftOpen(const LeftOpen&) = delete;
    LeftOpen& operator=(const LeftOpen&) = delete;

  private:
    TiffHandle& tiff_;
};

/// Stops at the first tag that cannot be set: a codec whose state found no memory must not be
/// asked for anything.
class TagSetter {
  public:
    explicit TagSetter(TIFF* tiff) : tiff_(tiff) {}

    template <typename... Values>
    void set(std::uint32_t tag, Values... values) {
        ok_ = ok_ && TIFFSetField(tiff_, tag, values...) == 1;
    }
    bool ok() const { return ok_; }

  private:
    TIFF* tiff_;
    bool ok_ = true;
};

bool setTags(TIFF* tiff, const CGImage& image, const ImageProperties& properties,
             std::uint32_t rowsPerStrip) {
    TagSetter tags(tiff);
    const int samples = image.bitsPerPixel() / 8;
    const std::uint16_t compression = compressionOf(properties);
    tags.set(TIFFTAG_IMAGEWIDTH, static_cast<std::uint32_t>(image.width()));
    tags.set(TIFFTAG_IMAGELENGTH, static_cast<std::uint32_t>(image.height()));
    tags.set(TIFFTAG_BITSPERSAMPLE, 8);
    tags.set(TIFFTAG_SAMPLESPERPIXEL, samples);
    tags.set(TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB);
    tags.set(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    tags.set(TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    tags.set(TIFFTAG_ROWSPERSTRIP, rowsPerStrip);
    tags.set(TIFFTAG_COMPRESSION, compression);
    if (samples == 4) {
        const std::uint16_t kind = EXTRASAMPLE_ASSOCALPHA;
        tags.set(TIFFTAG_EXTRASAMPLES, 1, &kind);
        // Without memory for its copy the library says nothing and writes another kind of alpha.
        std::uint16_t count = 0;
        const std::uint16_t* kept = nullptr;
        if (TIFFGetField(tiff, TIFFTAG_EXTRASAMPLES, &count, &kept) != 1 || count != 1 ||
            kept == nullptr || *kept != kind) {
            return false;
        }
    }
    if (compression == COMPRESSION_LZW || compression == COMPRESSION_ADOBE_DEFLATE) {
        tags.set(TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
    }
    if (const auto resolution = resolutionOf(properties)) {
        tags.set(TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
        tags.set(TIFFTAG_XRESOLUTION, resolution->horizontal);
        tags.set(TIFFTAG_YRESOLUTION, resolution->vertical);
    }
    return tags.ok();
}

/// Puts the camera's facts into the file: texts as tags of the picture itself, the rest as
/// directories of their own in front of the strips.
bool writeExif(TIFF* tiff, MemoryFile& file, const ExifTree& tree) {
    TagSetter tags(tiff);
    for (const ExifField& field : tree.main) {
        const std::string text(field.value.begin(), field.value.end());
        tags.set(field.tag, text.c_str());
    }
    auto append = [&](const ExifDirectory& directory, std::uint32_t tag) {
        if (directory.empty()) return;
        const auto offset = static_cast<std::uint32_t>(file.bytes.size());
        const Bytes bytes = writeExifDirectory(directory, offset);
        file.bytes.insert(file.bytes.end(), bytes.begin(), bytes.end());
        tags.set(tag, static_cast<std::uint64_t>(offset));
    };
    append(tree.exif, TIFFTAG_EXIFIFD);
    append(tree.gps, TIFFTAG_GPSIFD);
    return tags.ok();
}

/// The library checks what it is given and keeps the account; the coding is ours.
bool writeCodedStrips(TIFF* tiff, const CGImage& image, const ImageProperties& properties,
                      std::uint32_t rowsPerStrip) {
    const StripCode code =
        compressionOf(properties) == COMPRESSION_LZW ? StripCode::Lzw : StripCode::Deflate;
    std::optional<int> level;
    if (const auto wanted = numberProperty(properties, kPropertyCompressionLevel)) {
        level =
            static_cast<int>(std::clamp(*wanted, double{kFastestLevel}, double{kSmallestLevel}));
    }
    return codeStrips(image.pixels(), static_cast<int>(rowsPerStrip), code, level,
                      [tiff](std::uint32_t number, ByteView codes) {
                          // It does not write to them; its interface is older than const.
                          const auto size = static_cast<tmsize_t>(codes.size());
                          return TIFFWriteRawStrip(tiff, number,
                                                   const_cast<std::uint8_t*>(codes.data()),
                                                   size) == size;
                      });
}

bool writeStrips(TIFF* tiff, const CGImage& image, const ImageProperties& properties,
                 std::uint32_t rowsPerStrip) {
    const std::uint16_t compression = compressionOf(properties);
    if (compression == COMPRESSION_LZW || compression == COMPRESSION_ADOBE_DEFLATE) {
        return writeCodedStrips(tiff, image, properties, rowsPerStrip);
    }
    const PixelView view = image.pixels();
    const std::size_t rowBytes =
        static_cast<std::size_t>(view.width) * static_cast<std::size_t>(view.samplesPerPixel);
    const bool packed = static_cast<std::size_t>(view.strideBytes) == rowBytes;
    std::vector<std::uint8_t> strip;
    std::uint32_t number = 0;
    for (std::int64_t y = 0; y < view.height; y += rowsPerStrip, ++number) {
        const std::int64_t rows = std::min<std::int64_t>(rowsPerStrip, view.height - y);
        // The library does not write to what it is given; its interface is older than const.
        auto* source = const_cast<std::uint8_t*>(view.row(static_cast<int>(y)));
        if (!packed) {
            strip.resize(rowBytes * static_cast<std::size_t>(rows));
            for (std::int64_t i = 0; i < rows; ++i) {
                std::memcpy(strip.data() + rowBytes * static_cast<std::size_t>(i),
                            view.row(static_cast<int>(y + i)), rowBytes);
            }
            source = strip.data();
        }
        const auto size = static_cast<tmsize_t>(rowBytes * static_cast<std::size_t>(rows));
        if (TIFFWriteEncodedStrip(tiff, number, source, size) != size) return false;
    }
    return true;
}

}  // namespace

Result<Bytes> writeTiff(const CGImage& image, const ImageProperties& properties) {
    if (auto library = tiffLibrary().need(); !library) return library.error();
    const std::int64_t rowBytes = std::int64_t{image.width()} * (image.bitsPerPixel() / 8);
    const std::int64_t allBytes = rowBytes * image.height();
    MemoryFile file;
    // Room for pictures that do not compress; untouched pages of it cost nothing.
    file.bytes.reserve(static_cast<std::size_t>(allBytes + allBytes / 64 + 65536));
    preferHugePages(file.bytes.data(), file.bytes.capacity());
    TiffErrors errors;
    // Offsets of the classic form are 32 bits; some codecs let a picture grow by half.
    constexpr std::int64_t kClassicBytes = std::int64_t{2600} << 20;
    const bool large = allBytes > kClassicBytes;
    TiffHandle tiff = openMemory(file, errors, large);
    const LeftOpen unfinished(tiff);
    auto failure = [&]() -> Error {
        if (errors.message[0] == 0 || file.outOfMemory) {
            return {ErrorCode::OutOfMemory, "Not enough memory to encode the TIFF"};
        }
        return {ErrorCode::Failed, errors.message.data()};
    };
    if (!tiff) return failure();
    // Nothing can be gained from cutting rows that are stored as they are.
    const std::int64_t rows =
        compressionOf(properties) == COMPRESSION_NONE
            ? image.height()
            : std::clamp<std::int64_t>(kStripBytes / rowBytes, 1, image.height());
    if (!setTags(tiff.get(), image, properties, static_cast<std::uint32_t>(rows))) {
        return failure();
    }
    // The large form counts in 64 bits, also in these directories.
    if (!large && !writeExif(tiff.get(), file, exifTreeOf(properties))) return failure();
    if (!writeStrips(tiff.get(), image, properties, static_cast<std::uint32_t>(rows)))
        return failure();
    if (TIFFWriteDirectory(tiff.get()) != 1) return failure();
    tiff.reset();
    // A tag that could not be kept for want of memory is reported and then left out.
    if (errors.message[0] != 0 || file.outOfMemory) return failure();
    return std::move(file.bytes);
}

}  // namespace skarnel::io
