// WebP: lossless unless a quality below 1 is asked for.
#include <algorithm>
#include <memory>
#include <new>

#include "imaging/io/exif_block.h"
#include "imaging/io/pixel_rows.h"
#include "imaging/io/webp_library.h"
#include "imaging/io/webp_lossy_writer.h"
#include "imaging/io/webp_picture.h"
#include "imaging/io/writers.h"

namespace skarnel::io {
namespace {

struct WriterHolder : WebPMemoryWriter {
    WriterHolder() : WebPMemoryWriter() { WebPMemoryWriterInit(this); }
    ~WriterHolder() { WebPMemoryWriterClear(this); }
    WriterHolder(const WriterHolder&) = delete;
    WriterHolder& operator=(const WriterHolder&) = delete;
};

bool configure(WebPConfig& config, double quality) {
    if (WebPConfigInitInternal(&config, WEBP_PRESET_DEFAULT, 75, WEBP_ENCODER_ABI_VERSION) == 0)
        return false;
    config.exact = 1;  // colours under no alpha are zeros already and must stay so
    if (quality >= 1) return WebPConfigLosslessPreset(&config, 2) != 0;
    config.quality = static_cast<float>(quality * 100);
    return WebPValidateConfig(&config) != 0;
}

/// The codec's own pixels: alpha, red, green, blue from the highest byte down.
Result<void> fillPixels(PictureRows& rows, WebPPicture& target) {
    const PictureRows::Shape& shape = rows.shape();
    target.use_argb = 1;
    target.width = shape.width;
    target.height = shape.height;
    if (WebPPictureAlloc(&target) == 0) throw std::bad_alloc();
    const auto samples = static_cast<std::size_t>(shape.samples);
    Bytes straight(static_cast<std::size_t>(shape.width) * 4);
    for (int y = 0; y < shape.height; ++y) {
        const std::uint8_t* row = rows.next();
        if (row == nullptr) return {ErrorCode::Failed, "The picture ends early"};
        if (samples == 4) {
            unpremultiplyRow(row, straight.data(), static_cast<std::size_t>(shape.width));
            row = straight.data();
        }
        std::uint32_t* out = target.argb + std::ptrdiff_t{y} * target.argb_stride;
        for (int x = 0; x < shape.width; ++x, row += samples) {
            const std::uint32_t alpha = samples == 4 ? row[3] : 255;
            out[x] =
                alpha << 24U | std::uint32_t{row[0]} << 16U | std::uint32_t{row[1]} << 8U | row[2];
        }
    }
    return {};
}

/// Whether a lossless file holds these very pixels. Where one of its requests for memory was
/// refused, the library may write a damaged file and say nothing.
bool holdsPixels(const WebPMemoryWriter& file, const WebPPicture& picture) {
    const auto width = static_cast<std::size_t>(picture.width);
    Bytes decoded(4 * width * static_cast<std::size_t>(picture.height));
    if (WebPDecodeRGBAInto(file.mem, file.size, decoded.data(), decoded.size(),
                           4 * picture.width) == nullptr) {
        return false;
    }
    const std::uint8_t* pixel = decoded.data();
    for (int y = 0; y < picture.height; ++y) {
        const std::uint32_t* row = picture.argb + std::ptrdiff_t{y} * picture.argb_stride;
        for (std::size_t x = 0; x < width; ++x, pixel += 4) {
            if (row[x] != (std::uint32_t{pixel[3]} << 24U | std::uint32_t{pixel[0]} << 16U |
                           std::uint32_t{pixel[1]} << 8U | pixel[2])) {
                return false;
            }
        }
    }
    return true;
}

struct DeleteMux {
    void operator()(WebPMux* mux) const { WebPMuxDelete(mux); }
};

/// The file with an EXIF chunk, which is also where WebP keeps the resolution.
Result<Bytes> withExif(const WebPMemoryWriter& file, const Bytes& exif) {
    const WebPData image{file.mem, file.size};
    const WebPData chunk{exif.data(), exif.size()};
    const std::unique_ptr<WebPMux, DeleteMux> mux(
        WebPMuxCreateInternal(&image, 0, WEBP_MUX_ABI_VERSION));
    WebPData assembled{};
    if (!mux || WebPMuxSetChunk(mux.get(), "EXIF", &chunk, 0) != WEBP_MUX_OK ||
        WebPMuxAssemble(mux.get(), &assembled) != WEBP_MUX_OK) {
        return {ErrorCode::OutOfMemory, "Not enough memory to encode the WebP picture"};
    }
    struct Owner {
        WebPData data;
        ~Owner() { WebPFree(const_cast<std::uint8_t*>(data.bytes)); }
    };
    Owner owner{assembled};
    return Bytes(owner.data.bytes, owner.data.bytes + owner.data.size);
}

}  // namespace

Result<Bytes> writeWebP(PictureRows& rows, const ImageProperties& properties) {
    const PictureRows::Shape& shape = rows.shape();
    if (shape.width > WEBP_MAX_DIMENSION || shape.height > WEBP_MAX_DIMENSION) {
        return {ErrorCode::TooLarge, "WebP pictures have at most 16383 pixels a side"};
    }
    if (auto library = webpLibrary().need(); !library) return library.error();
    const Bytes exif = writeExifBlock(exifTreeOf(properties), resolutionOf(properties));
    const double quality = std::clamp(qualityOf(properties, 1.0), 0.0, 1.0);
    if (quality < 1 && std::int64_t{shape.width} * shape.height >= kLossyInBandsPixels) {
        return writeLossyWebPInBands(rows, quality, exif);
    }
    WebPConfig config;
    WebPPictureHolder picture;
    WriterHolder writer;
    if (!configure(config, quality) ||
        WebPPictureInitInternal(&picture, WEBP_ENCODER_ABI_VERSION) == 0) {
        return {ErrorCode::Failed, "The WebP encoder cannot be used"};
    }
    if (auto filled = fillPixels(rows, picture); !filled) return filled.error();
    picture.writer = WebPMemoryWrite;
    picture.custom_ptr = &writer;
    if (WebPEncode(&config, &picture) == 0) {
        const bool memory = picture.error_code == VP8_ENC_ERROR_OUT_OF_MEMORY ||
                            picture.error_code == VP8_ENC_ERROR_BITSTREAM_OUT_OF_MEMORY;
        return {memory ? ErrorCode::OutOfMemory : ErrorCode::Failed,
                "The picture could not be encoded as WebP"};
    }
    if (config.lossless != 0 && !holdsPixels(writer, picture)) throw std::bad_alloc();
    if (!exif.empty()) return withExif(writer, exif);
    return Bytes(writer.mem, writer.mem + writer.size);
}

}  // namespace skarnel::io
