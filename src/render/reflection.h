// From one source picture to its finished reflection image: the whole render as pure functions.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <utility>

#include "imaging/cgcontext.h"
#include "imaging/cgimage.h"
#include "imaging/ciimage.h"

namespace skarnel {

/// Everything beside the five numbers that a render reads.
struct RenderInputs {
    float peakOpacity = 200;                // 0..255; above 255 bright pixels wrap around
    std::optional<DeviceColor> background;  // laid under everything when present
    float imagePerspective = 50;            // phase of the turn: neutral at 0, 50 and 100
};

/// The same inputs as questions, each asked once at the step that uses it: the peak opacity by the
/// shaping, the background after the canvas was made, the turn last of all. A render that ends
/// early does not ask for what comes later.
struct RenderInputReaders {
    RenderInputReaders(std::function<float()> peakOpacityReader,
                       std::function<std::optional<DeviceColor>()> backgroundReader,
                       std::function<float()> imagePerspectiveReader)
        : peakOpacity(std::move(peakOpacityReader)),
          background(std::move(backgroundReader)),
          imagePerspective(std::move(imagePerspectiveReader)) {}
    std::function<float()> peakOpacity;
    std::function<std::optional<DeviceColor>()> background;
    std::function<float()> imagePerspective;
};

/// When the result's pixels are made. WhenRead: with the first reader, who may take them row by row
/// without a bitmap of the whole size (CGImage::rowSource). The bytes are the same, and all that
/// can fail has happened before.
enum class Drawing { AtOnce, WhenRead };

enum class TurnOutcome { Turned, Unturned };  // Unturned: the turn could not be made

struct ReflectionResult {
    CGImage image;
    TurnOutcome turn;
};

/// The whole render. None when any step before the turn yields nothing (a vertical scale of 0,
/// sizes beyond 32 bits, no memory). A turn that cannot be made leaves the unturned canvas.
///   perspectiveW: percent of the width gained on each side at the far edge
///   perspectiveH: vertical scale in percent; negative flips the reflection upright
///   reflectionOffset: gap in percent of the reflection's height
///   gradientOffset: lift of the fade ramp in percent
///   gradient: fade exponent times 10
std::optional<ReflectionResult> addReflectionToCGImage(const CGImage& image, float perspectiveW,
                                                       float perspectiveH, float reflectionOffset,
                                                       float gradientOffset, float gradient,
                                                       const RenderInputs& inputs);

/// As above, with inputs that are asked for when they are needed.
std::optional<ReflectionResult> addReflectionToCGImage(const CGImage& image, float perspectiveW,
                                                       float perspectiveH, float reflectionOffset,
                                                       float gradientOffset, float gradient,
                                                       const RenderInputReaders& readers,
                                                       Drawing drawing = Drawing::AtOnce);

/// The vertically mirrored image.
std::optional<CIImage> ReflectCIImage(const CIImage& image);

/// The shaped (squashed, widened, faded) reflection of an already mirrored image.
std::optional<CIImage> PerspectiveCIImage(const CIImage& image, float perspectiveW,
                                          float perspectiveH, float gradientOffset, float gradient,
                                          float peakOpacity);

/// Rasterises a filter image from its extent's lower left corner; extents are truncated to whole
/// pixels. None when that leaves nothing, does not fit 32-bit sizes, or memory is short.
std::optional<CGImage> CIImageGetCGImage(const CIImage& image);

/// A transparent canvas, or none.
std::unique_ptr<CGContext> MyCreateBitmapContext(int width, int height);

/// (x - a) * ((d - c) / (b - a)) + c for a <= x <= b, -1 otherwise.
double map_index(double x, double a, double b, double c, double d);

/// low + (high - low) * (fractional part of x).
double linear_interpolate(double x, double low, double high);

/// The turn about a vertical axis; none when it cannot be made.
std::optional<CGImage> perspectiveImage(const CGImage& image, float imagePerspective);

}  // namespace skarnel
