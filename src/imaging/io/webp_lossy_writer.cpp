#include "imaging/io/webp_lossy_writer.h"

#include <algorithm>
#include <new>
#include <string_view>
#include <utility>

#include "imaging/io/pixel_rows.h"
#include "imaging/io/riff_chunks.h"
#include "imaging/io/webp_alpha.h"
#include "imaging/io/webp_picture.h"

namespace skarnel::io {
namespace {

constexpr int kBandRows = 64;  // an even number, since chroma is halved

const Error& unusable() {
    static const Error error{ErrorCode::Failed, "The WebP encoder cannot be used"};
    return error;
}

/// A row as the library takes it: straight red, green, blue, alpha.
void straightRow(const std::uint8_t* row, int samples, std::uint8_t* out, std::size_t width) {
    if (samples == 4) return unpremultiplyRow(row, out, width);
    for (std::size_t x = 0; x < width; ++x) {
        std::copy_n(row + 3 * x, 3, out + 4 * x);
        out[4 * x + 3] = 255;
    }
}

struct Plane {
    const std::uint8_t* bytes;
    int strideBytes;
};

void copyPlane(Plane from, std::uint8_t* to, int toStrideBytes, int width, int height) {
    for (int y = 0; y < height; ++y) {
        std::copy_n(from.bytes + std::ptrdiff_t{y} * from.strideBytes, width,
                    to + std::ptrdiff_t{y} * toStrideBytes);
    }
}

/// The picture's luma and chroma, and its alpha.
class Planes {
  public:
    explicit Planes(PictureRows& rows) : rows_(rows) {}

    Result<void> fill() {
        const PictureRows::Shape& shape = rows_.shape();
        if (WebPPictureInitInternal(&picture_, WEBP_ENCODER_ABI_VERSION) == 0) return unusable();
        picture_.width = shape.width;
        picture_.height = shape.height;
        if (WebPPictureAlloc(&picture_) == 0) throw std::bad_alloc();
        const auto width = static_cast<std::size_t>(shape.width);
        if (!shape.opaque) alpha_.reserve(width * static_cast<std::size_t>(shape.height));
        Bytes straight(4 * width * kBandRows);
        for (int top = 0; top < shape.height; top += kBandRows) {
            if (auto added = addBand(top, straight); !added) return added.error();
        }
        return {};
    }
    WebPPicture& picture() { return picture_; }
    /// Gives it away; empty where the picture is opaque.
    Bytes takeAlpha() { return std::move(alpha_); }

  private:
    Result<void> addBand(int top, Bytes& straight) {
        WebPPictureHolder band;
        if (WebPPictureInitInternal(&band, WEBP_ENCODER_ABI_VERSION) == 0) return unusable();
        band.width = picture_.width;
        band.height = std::min(kBandRows, picture_.height - top);
        const auto width = static_cast<std::size_t>(band.width);
        std::uint8_t* out = straight.data();
        for (int y = 0; y < band.height; ++y, out += 4 * width) {
            const std::uint8_t* row = rows_.next();
            if (row == nullptr) return {ErrorCode::Failed, "The picture ends early"};
            straightRow(row, rows_.shape().samples, out, width);
            if (rows_.shape().opaque) continue;
            for (std::size_t x = 0; x < width; ++x) alpha_.push_back(out[4 * x + 3]);
        }
        // Chroma is averaged by alpha, so the library sees all four.
        if (WebPPictureImportRGBA(&band, straight.data(), 4 * band.width) == 0) {
            throw std::bad_alloc();
        }
        copyBand(band, top);
        return {};
    }

    void copyBand(const WebPPicture& band, int top) {
        copyPlane({band.y, band.y_stride}, picture_.y + std::ptrdiff_t{top} * picture_.y_stride,
                  picture_.y_stride, band.width, band.height);
        const std::ptrdiff_t offset = std::ptrdiff_t{top / 2} * picture_.uv_stride;
        const int halfWidth = (band.width + 1) / 2;
        const int halfHeight = (band.height + 1) / 2;
        copyPlane({band.u, band.uv_stride}, picture_.u + offset, picture_.uv_stride, halfWidth,
                  halfHeight);
        copyPlane({band.v, band.uv_stride}, picture_.v + offset, picture_.uv_stride, halfWidth,
                  halfHeight);
    }

    PictureRows& rows_;
    WebPPictureHolder picture_;
    Bytes alpha_;
};

/// Appends what the library writes to a file, less the front that it puts around its one chunk.
struct ChunkSink {
    Bytes& out;
    std::size_t front = 12;

    static int write(const std::uint8_t* data, std::size_t size, const WebPPicture* picture) try {
        auto& sink = *static_cast<ChunkSink*>(picture->custom_ptr);
        const std::size_t skipped = std::min(size, sink.front);
        sink.front -= skipped;
        sink.out.insert(sink.out.end(), data + skipped, data + size);
        return 1;
    } catch (const std::bad_alloc&) {
        return 0;
    }
};

Result<void> appendColors(WebPPicture& picture, double quality, Bytes& out) {
    WebPConfig config;
    if (WebPConfigInitInternal(&config, WEBP_PRESET_DEFAULT, static_cast<float>(quality * 100),
                               WEBP_ENCODER_ABI_VERSION) == 0) {
        return unusable();
    }
    config.low_memory = 1;  // otherwise all that is coded is kept until the end
    ChunkSink sink{out};
    picture.writer = ChunkSink::write;
    picture.custom_ptr = &sink;
    if (WebPEncode(&config, &picture) != 0) return {};
    const bool memory = picture.error_code == VP8_ENC_ERROR_OUT_OF_MEMORY ||
                        picture.error_code == VP8_ENC_ERROR_BITSTREAM_OUT_OF_MEMORY ||
                        picture.error_code == VP8_ENC_ERROR_BAD_WRITE;  // by the sink alone
    return {memory ? ErrorCode::OutOfMemory : ErrorCode::Failed,
            "The picture could not be encoded as WebP"};
}

}  // namespace

Result<Bytes> writeLossyWebPInBands(PictureRows& rows, double quality, const Bytes& exif) {
    if (auto library = webpLibrary().need(); !library) return library.error();
    const PictureRows::Shape& shape = rows.shape();
    Planes planes(rows);
    if (auto filled = planes.fill(); !filled) return filled.error();
    Bytes out;
    // Grown piece by piece, the file would be held twice; untouched pages cost nothing.
    out.reserve(static_cast<std::size_t>(shape.width) * static_cast<std::size_t>(shape.height));
    RiffChunk riff(out, "RIFF");
    constexpr std::string_view kForm = "WEBP";
    out.insert(out.end(), kForm.begin(), kForm.end());
    if (!shape.opaque || !exif.empty()) {
        appendWebPFeatures(out, {shape.width, shape.height, !shape.opaque, !exif.empty()});
    }
    if (!shape.opaque) {
        RiffChunk chunk(out, "ALPH");
        appendWebPAlpha(out, planes.takeAlpha(), static_cast<std::size_t>(shape.width));
        chunk.end();
    }
    if (auto coded = appendColors(planes.picture(), quality, out); !coded) return coded.error();
    if (!exif.empty()) appendRiffChunk(out, "EXIF", exif);
    riff.end();
    return out;
}

}  // namespace skarnel::io
