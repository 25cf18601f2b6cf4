// From a file's own colours to sRGB.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "imaging/io/image_io.h"
#include "imaging/io/readers.h"
#include "util/log/result.h"

namespace skarnel::io {

/// Converts the rows of one picture in place to sRGB by its profile, or by the built-in inks for
/// CMYK without one: relative colorimetric, with black-point compensation, on straight colours.
/// Premultiplied pictures are divided first. A profile that is damaged or of another kind of colour
/// than the picture counts as none: the pixels are right, only their tint is unsure.
class ColorConversion {
  public:
    /// Takes the alpha of a CMYK picture away from it.
    static Result<ColorConversion> prepare(SourcePicture& picture);

    /// `rows` are those of the picture from row `firstRow` on, each once.
    void apply(MutablePixelView rows, int firstRow) const;

    /// What alpha the rows have then.
    Alpha alphaAfterwards() const;

  private:
    ColorConversion() = default;

    std::shared_ptr<void> transform_;  // null = colours stay
    Samples samples_ = Samples::Rgb;
    Alpha alpha_ = Alpha::Opaque;
    Bytes cmykAlpha_;  // as SourcePicture has it
};

struct Chromaticity {
    double x;
    double y;
};

/// The primaries of sRGB unless others are given.
struct RgbPrimaries {
    Chromaticity white = {0.3127, 0.3290};
    Chromaticity red = {0.64, 0.33};
    Chromaticity green = {0.30, 0.60};
    Chromaticity blue = {0.15, 0.06};
};

enum class RgbCurve : std::uint8_t { Srgb, Linear, Gamma22, Gamma28 };

/// A profile for files that name their colours instead of carrying a profile; empty when the
/// primaries make no colour space.
Bytes makeRgbProfile(const RgbPrimaries& primaries, RgbCurve curve);

/// The description in the profile, empty when there is none.
std::string profileName(ByteView profile);

}  // namespace skarnel::io
