// JPEG: transparent parts over a matte colour, chroma at full size from quality 0.9 up.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <vector>

#include "imaging/io/exif_block.h"
#include "imaging/io/jpeg_common.h"
#include "imaging/io/pixel_rows.h"
#include "imaging/io/writers.h"

namespace skarnel::io {
namespace {

constexpr int kMaxSide = 65500;  // the library's own bound

/// The destination grows by malloc inside the library; this frees it on every path.
struct JpegMemory {
    unsigned char* bytes = nullptr;
    unsigned long size = 0;
    JpegMemory() = default;
    JpegMemory(const JpegMemory&) = delete;
    JpegMemory& operator=(const JpegMemory&) = delete;
    ~JpegMemory() { std::free(bytes); }
};

class JpegEncoder {
  public:
    JpegEncoder() {
        info_.err = &errors_.base;
        created_ = guarded(errors_, [this] { jpeg_create_compress(&info_); });
    }
    ~JpegEncoder() { jpeg_destroy_compress(&info_); }
    JpegEncoder(const JpegEncoder&) = delete;
    JpegEncoder& operator=(const JpegEncoder&) = delete;

    bool start(const CGImage& image, const ImageProperties& properties) {
        if (!created_) return false;
        const int quality =
            static_cast<int>(std::lround(std::clamp(qualityOf(properties, 0.9), 0.0, 1.0) * 100));
        const auto resolution = resolutionOf(properties);
        return guarded(errors_, [&] {
            jpeg_mem_dest(&info_, &memory_.bytes, &memory_.size);
            info_.image_width = static_cast<JDIMENSION>(image.width());
            info_.image_height = static_cast<JDIMENSION>(image.height());
            info_.input_components = 3;
            info_.in_color_space = JCS_RGB;
            jpeg_set_defaults(&info_);
            jpeg_set_quality(&info_, std::max(quality, 1), TRUE);
            if (quality >= 90)
                info_.comp_info[0].h_samp_factor = info_.comp_info[0].v_samp_factor = 1;
            if (resolution) {
                info_.density_unit = 1;
                info_.X_density = density(resolution->horizontal);
                info_.Y_density = density(resolution->vertical);
            }
            jpeg_start_compress(&info_, TRUE);
        });
    }

    bool writeMarker(int code, ByteView data) {
        return guarded(errors_, [&] {
            jpeg_write_marker(&info_, code, data.data(), static_cast<unsigned>(data.size()));
        });
    }

    bool writeRow(const std::uint8_t* rgb) {
        return guarded(errors_, [&] {
            JSAMPROW row = const_cast<std::uint8_t*>(rgb);
            jpeg_write_scanlines(&info_, &row, 1);
        });
    }

    bool finish() {
        return guarded(errors_, [this] { jpeg_finish_compress(&info_); });
    }

    Bytes bytes() const { return Bytes(memory_.bytes, memory_.bytes + memory_.size); }
    Error error() const {
        Error error = errors_.error();
        if (error.code == ErrorCode::Damaged) error.code = ErrorCode::Failed;
        return error;
    }

  private:
    static UINT16 density(double perInch) {
        return static_cast<UINT16>(std::clamp(std::round(perInch), 1.0, 65535.0));
    }

    JpegErrors errors_;
    jpeg_compress_struct info_{};
    JpegMemory memory_;
    bool created_ = false;
};

}  // namespace

Result<Bytes> writeJpeg(const CGImage& image, const ImageProperties& properties) {
    if (image.width() > kMaxSide || image.height() > kMaxSide) {
        return {ErrorCode::TooLarge, "JPEG pictures have at most 65500 pixels a side"};
    }
    if (auto library = jpegLibrary().need(); !library) return library.error();
    JpegEncoder encoder;
    if (!encoder.start(image, properties)) return encoder.error();
    Bytes exif = {'E', 'x', 'i', 'f', 0, 0};
    const Bytes block = writeExifBlock(exifTreeOf(properties), std::nullopt);
    exif.insert(exif.end(), block.begin(), block.end());
    constexpr std::size_t kMaxMarker = 65533;
    if (!block.empty() && exif.size() <= kMaxMarker && !encoder.writeMarker(JPEG_APP0 + 1, exif)) {
        return encoder.error();
    }
    const PixelView view = image.pixels();
    const auto matte = matteOf(properties);
    const auto count = static_cast<std::size_t>(view.width);
    std::vector<std::uint8_t> flat(3 * count);
    for (int y = 0; y < view.height; ++y) {
        const std::uint8_t* row = view.row(y);
        if (view.samplesPerPixel == 4) {
            flattenRow(row, flat.data(), count, matte);
            row = flat.data();
        }
        if (!encoder.writeRow(row)) return encoder.error();
    }
    if (!encoder.finish()) return encoder.error();
    return encoder.bytes();
}

}  // namespace skarnel::io
