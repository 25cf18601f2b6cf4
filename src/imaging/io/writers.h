// The encoders behind encodeImage; each takes a picture of RGBA8 (premultiplied) or packed RGB8.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

#include "imaging/cgimage.h"
#include "imaging/io/image_io.h"
#include "imaging/io/picture_rows.h"
#include "util/log/result.h"

namespace skarnel::io {

Result<Bytes> writeTiff(const CGImage& image, const ImageProperties& properties);

/// An opaque picture is smaller without its alpha; the frames of an animation must be alike.
enum class PngColor { AlphaWhereNeeded, AlwaysWithAlpha };
Result<Bytes> writePng(const CGImage& image, const ImageProperties& properties,
                       PngColor color = PngColor::AlphaWhereNeeded);
/// Appends a chunk with its length and check.
void appendPngChunk(Bytes& out, std::string_view type, ByteView data);

Result<Bytes> writeJpeg(const CGImage& image, const ImageProperties& properties);
Result<Bytes> writeBmp(const CGImage& image, const ImageProperties& properties);

/// Their libraries may end the process where memory runs out.
Result<Bytes> writeJpeg2000(PictureRows& rows, const ImageProperties& properties);
Result<Bytes> writeWebP(PictureRows& rows, const ImageProperties& properties);
/// Either of the two by its type.
Result<Bytes> writeWithLibrary(PictureRows& rows, std::string_view type,
                               const ImageProperties& properties);

/// A number under the key, whole or not; none for another type or no entry.
std::optional<double> numberProperty(const ImageProperties& properties, std::string_view key);

struct Resolution {
    double horizontal;  // pixels an inch
    double vertical;
};
/// Both numbers of the dictionary where they are positive and finite; one alone counts for both.
std::optional<Resolution> resolutionOf(const ImageProperties& properties);

/// 0..1; `fallback` when absent or no number.
double qualityOf(const ImageProperties& properties, double fallback);

/// White unless the dictionary has "#RRGGBB".
std::array<std::uint8_t, 3> matteOf(const ImageProperties& properties);

}  // namespace skarnel::io
