// The render from the picture to the finished image.
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include "imaging/column_turn.h"
#include "imaging/device_pixel.h"
#include "imaging/streaming.h"
#include "render/canvas.h"
#include "render/reflection.h"
#include "render/turn.h"

namespace skarnel {
namespace {

/// Pixels behind the row that is squeezed, so that its last vectors need no special case.
constexpr int kReadBeyond = 64;

/// The canvas, turned, without ever being a bitmap itself: each of its rows is squeezed as soon as
/// it is drawn. None when the turn cannot be made.
std::optional<CGImage> turnedCanvas(CanvasRows& rows, const CanvasLayout& layout,
                                    const Quad& corners) {
    const auto bitmap = turnedBitmap(corners);
    if (!bitmap) return std::nullopt;
    const auto turn = ColumnTurn::plan(layout.width, layout.height, corners, bitmap->lowerLeft,
                                       bitmap->width, bitmap->height);
    if (!turn) return std::nullopt;
    auto target = PixelBuffer::uninitialized(bitmap->width, bitmap->height);
    auto squeezed = squeezedBuffer(bitmap->width, layout.height);
    if (layout.width > std::numeric_limits<int>::max() - kReadBeyond) return std::nullopt;
    auto row = PixelBuffer::zeroed(layout.width + kReadBeyond, 1);
    if (!target || !squeezed || !row) return std::nullopt;
    const MutablePixelView view = squeezed->view();
    for (int y = 0; y < layout.height; ++y) {
        rows.draw(y, row->view().bytes);
        turn->squeezeRow(row->view().bytes, static_cast<std::size_t>(row->width()), view.row(y));
    }
    std::memset(view.row(layout.height), 0, static_cast<std::size_t>(view.strideBytes));
    turn->walkRows(view, target->view());
    return CGImage(*std::move(target));
}

std::optional<CGImage> plainCanvas(CanvasRows& rows, const CanvasLayout& layout) {
    auto canvas = PixelBuffer::uninitialized(layout.width, layout.height);
    if (!canvas) return std::nullopt;
    const MutablePixelView view = canvas->view();
    const bool streaming = usesStreaming(view);
    for (int y = 0; y < layout.height; ++y) {
        if (streaming)
            rows.stream(y, view.row(y));
        else
            rows.draw(y, view.row(y));
    }
    return CGImage(*std::move(canvas));
}

}  // namespace

std::optional<ReflectionResult> addReflectionToCGImage(const CGImage& image, float perspectiveW,
                                                       float perspectiveH, float reflectionOffset,
                                                       float gradientOffset, float gradient,
                                                       const RenderInputReaders& readers) {
    const auto size = ShapeSize::of(image.width(), image.height(), perspectiveW, perspectiveH);
    if (!size) return std::nullopt;
    const FadeParameters fade{gradientOffset, gradient, readers.peakOpacity()};
    if (!size->fits()) return std::nullopt;
    const auto layout = CanvasLayout::of(image.width(), image.height(), *size, reflectionOffset);
    if (!layout) return std::nullopt;
    const auto background = readers.background();
    const float imagePerspective = readers.imagePerspective();

    const auto picture = image.withAlpha();
    if (!picture) return std::nullopt;
    const auto fill = background ? std::optional(premultipliedPixel(*background)) : std::nullopt;
    auto rows = CanvasRows::create(picture->pixels(), *layout, *size, perspectiveH < 0, fade, fill);
    if (!rows) return std::nullopt;
    const Quad corners = turnCorners(layout->width, layout->height, imagePerspective);
    const bool unturned = isUnturned(corners, layout->width, layout->height);
    if (!unturned)
        if (auto turned = turnedCanvas(*rows, *layout, corners))
            return ReflectionResult{*std::move(turned), TurnOutcome::Turned};
    auto canvas = plainCanvas(*rows, *layout);
    if (!canvas) return std::nullopt;
    return ReflectionResult{*std::move(canvas),
                            unturned ? TurnOutcome::Turned : TurnOutcome::Unturned};
}

std::optional<ReflectionResult> addReflectionToCGImage(const CGImage& image, float perspectiveW,
                                                       float perspectiveH, float reflectionOffset,
                                                       float gradientOffset, float gradient,
                                                       const RenderInputs& inputs) {
    return addReflectionToCGImage(
        image, perspectiveW, perspectiveH, reflectionOffset, gradientOffset, gradient,
        RenderInputReaders([&] { return inputs.peakOpacity; }, [&] { return inputs.background; },
                           [&] { return inputs.imagePerspective; }));
}

}  // namespace skarnel
