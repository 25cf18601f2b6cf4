// From a picture to the bytes of a file.
#include <cmath>
#include <new>
#include <stdexcept>

#include "imaging/io/decoder_wall.h"
#include "imaging/io/encoded_file.h"
#include "imaging/io/encoder_wall.h"
#include "imaging/io/image_io.h"
#include "imaging/io/read_file.h"
#include "imaging/io/vp8l_writer.h"
#include "imaging/io/writers.h"
#include "util/log/message.h"

namespace skarnel {
namespace io {

std::optional<double> numberProperty(const ImageProperties& properties, std::string_view key) {
    const auto found = properties.find(key);
    if (found == properties.end()) return std::nullopt;
    if (const auto* whole = std::get_if<std::int64_t>(&found->second)) {
        return static_cast<double>(*whole);
    }
    const auto* number = std::get_if<double>(&found->second);
    return number != nullptr && !std::isnan(*number) ? std::optional(*number) : std::nullopt;
}

std::optional<Resolution> resolutionOf(const ImageProperties& properties) {
    auto usable = [&](std::string_view key) -> std::optional<double> {
        const auto value = numberProperty(properties, key);
        return value && std::isfinite(*value) && *value > 0 ? value : std::nullopt;
    };
    const auto horizontal = usable(kPropertyDpiWidth);
    const auto vertical = usable(kPropertyDpiHeight);
    if (!horizontal && !vertical) return std::nullopt;
    return Resolution{horizontal ? *horizontal : *vertical, vertical ? *vertical : *horizontal};
}

double qualityOf(const ImageProperties& properties, double fallback) {
    const double quality = numberProperty(properties, kPropertyLossyQuality).value_or(fallback);
    return quality < 0 ? 0 : quality > 1 ? 1 : quality;
}

std::array<std::uint8_t, 3> matteOf(const ImageProperties& properties) {
    std::array<std::uint8_t, 3> color = {255, 255, 255};
    const auto found = properties.find(kPropertyMatteColor);
    const auto* text =
        found == properties.end() ? nullptr : std::get_if<std::string>(&found->second);
    if (text == nullptr || text->size() != 7 || (*text)[0] != '#') return color;
    std::array<std::uint8_t, 3> parsed{};
    for (std::size_t i = 1; i < 7; ++i) {
        const char c = (*text)[i];
        int digit = 0;
        if (c >= '0' && c <= '9') {
            digit = c - '0';
        } else if (c >= 'a' && c <= 'f') {
            digit = c - 'a' + 10;
        } else if (c >= 'A' && c <= 'F') {
            digit = c - 'A' + 10;
        } else {
            return color;
        }
        auto& channel = parsed[(i - 1) / 2];
        channel = static_cast<std::uint8_t>(channel * 16 + digit);
    }
    return parsed;
}

Result<Bytes> writeWithLibrary(PictureRows& rows, std::string_view type,
                               const ImageProperties& properties) {
    return type == kUTTypeWebP ? writeWebP(rows, properties) : writeJpeg2000(rows, properties);
}

namespace {

/// By our own writer where that takes much less memory, otherwise by the library: in a process of
/// its own, where the helper is installed.
Result<Bytes> encodeBesides(const CGImage& image, std::string_view type,
                            const ImageProperties& properties) {
    const std::int64_t pixels = std::int64_t{image.width()} * image.height();
    if (type == kUTTypeWebP && pixels >= kOwnLosslessPixels && qualityOf(properties, 1) >= 1) {
        return writeLosslessWebP(image, properties);
    }
    if (const auto& program = decoderProgram()) {
        return encodeBehindWall(*program, image, type, properties);
    }
    ImageRows rows(image);
    return writeWithLibrary(rows, type, properties);
}

Result<Bytes> encodeAs(std::string_view type, const CGImage& image,
                       const ImageProperties& properties) {
    if (type == kUTTypeTIFF) return writeTiff(image, properties);
    if (type == kUTTypePNG) return writePng(image, properties);
    if (type == kUTTypeJPEG) return writeJpeg(image, properties);
    if (type == kUTTypeBMP) return writeBmp(image, properties);
    if (type == kUTTypeJPEG2000 || type == kUTTypeWebP) {
        return encodeBesides(image, type, properties);
    }
    return {ErrorCode::Unsupported, filled("Pictures of type %1 cannot be written", {type})};
}

}  // namespace
}  // namespace io

Result<Bytes> encodeImage(const CGImage& image, std::string_view typeIdentifier,
                          const ImageProperties& properties) try {
    return checkedFile(io::encodeAs(typeIdentifier, image, properties), typeIdentifier,
                       {image.width(), image.height()});
} catch (const std::bad_alloc&) {
    return {ErrorCode::OutOfMemory, io::kNoMemory};
} catch (const std::length_error&) {
    return {ErrorCode::OutOfMemory, io::kNoMemory};
}

}  // namespace skarnel
