// The render from the picture to the finished image.
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <utility>
#include <vector>

#include "imaging/column_turn.h"
#include "imaging/device_pixel.h"
#include "imaging/pixel_memory.h"
#include "imaging/row_source.h"
#include "imaging/streaming.h"
#include "render/canvas.h"
#include "render/reflection.h"
#include "render/turn.h"
#include "render/turned_strips.h"

namespace skarnel {
namespace {

constexpr int kReadBeyond = CanvasPieces::kReadBeyond;

/// The canvas as it is. Keeps the picture that the rows are drawn from.
class PlainCanvas final : public RowSource {
  public:
    PlainCanvas(CGImage picture, CanvasRows rows)
        : picture_(std::move(picture)), rows_(std::move(rows)) {}

    SourceRow row(int y, std::uint8_t* scratch) override {
        rows_.keepPlans();
        return rows_.row(y, scratch);
    }

    void drawAll(MutablePixelView target) override {
        const bool streaming = usesStreaming(target);
        rows_.inReadingOrder(1, [&](int y) {
            if (streaming)
                rows_.stream(y, target.row(y));
            else
                rows_.draw(y, target.row(y));
        });
    }

  private:
    CGImage picture_;
    CanvasRows rows_;
};

/// The canvas, turned, without ever being a bitmap itself: its rows are squeezed as soon as some
/// are drawn.
class TurnedCanvas final : public RowSource {
  public:
    /// `block` has room for twice turn.blockRows(0) rows of the canvas, and behind each for
    /// kReadBeyond pixels.
    TurnedCanvas(CGImage picture, CanvasRows rows, ColumnTurn turn, PixelBuffer block,
                 SqueezedPicture squeezed)
        : picture_(std::move(picture)),
          rows_(std::move(rows)),
          turn_(std::move(turn)),
          block_(std::move(block)),
          squeezed_(std::move(squeezed)) {}

    /// Rows are walked in bands; of the two places for them, one keeps the band before.
    SourceRow row(int y, std::uint8_t* /*scratch*/) override {
        rows_.keepPlans();
        squeezeRows();
        // A turned row is no wider than the canvas, so the block has room for bands of them.
        MutablePixelView band = block_.view();
        band.height /= 2;
        const int number = y / band.height;
        const int place = number % 2;
        band.bytes = band.row(place * band.height);
        if (std::exchange(walkedBands_[place], number) != number)
            turn_.walkRows(squeezed_, number * band.height, band);
        return {band.row(y % band.height), 0, turn_.targetWidth(), true};
    }

    void drawAll(MutablePixelView target) override {
        squeezeRows();
        turn_.walkRows(squeezed_, 0, target);
    }

  private:
    void squeezeRows() {
        if (std::exchange(areSqueezed_, true)) return;
        const MutablePixelView block = block_.view();
        rows_.inReadingOrder(turn_.blockRows(0), [&](int y) {
            const std::uint8_t* sources[kernels::kBlockRows + 1];
            const int count = turn_.blockRows(y);
            if (const auto span = rows_.pictureAlone(y, count, sources))
                return turn_.squeezeSpans(y,
                                          {sources, span->first, span->end, span->readablePixels,
                                           kernels::kAheadInRow, span->belowWeight},
                                          squeezed_);
            for (int i = 0; i < count; ++i) {
                rows_.draw(y + i, block.row(i));
                sources[i] = block.row(i);
            }
            turn_.squeezeRows(y, sources, static_cast<std::size_t>(block.width), squeezed_);
        });
    }

    CGImage picture_;
    CanvasRows rows_;
    ColumnTurn turn_;
    PixelBuffer block_;
    SqueezedPicture squeezed_;
    bool areSqueezed_ = false;
    int walkedBands_[2] = {-1, -1};  // the bands of turned rows that the block holds
};

/// Memory for a result: of one that is read row by row it is likely never touched.
std::optional<PixelBuffer> roomFor(int width, int height, Drawing drawing) {
    if (drawing == Drawing::AtOnce) return PixelBuffer::uninitialized(width, height);
    if (width > std::numeric_limits<int>::max() / 4) return std::nullopt;
    auto bytes = allocatePixelMemory(
        std::size_t{4} * static_cast<std::size_t>(width) * static_cast<std::size_t>(height),
        PixelContents::Reserved);
    if (!bytes) return std::nullopt;
    return PixelBuffer::adopt(std::move(bytes), width, height);
}

/// Without memory for it nothing is left out.
void leaveOutEmpty(ColumnTurn& turn, const CanvasRows& rows) try {
    if (const std::vector<int> empty = rows.emptyRows(); !empty.empty()) turn.leaveOut(empty);
} catch (const std::bad_alloc&) {
    return;
}

/// None when the turn cannot be made; then the rows are still the caller's.
std::optional<CGImage> turnedCanvas(const CGImage& picture, CanvasRows& rows,
                                    const CanvasLayout& layout, const Quad& corners,
                                    Drawing drawing) {
    const auto bitmap = turnedBitmap(corners);
    if (!bitmap || layout.width > std::numeric_limits<int>::max() - kReadBeyond)
        return std::nullopt;
    auto turn = ColumnTurn::plan(layout.width, layout.height, corners, bitmap->lowerLeft,
                                 bitmap->width, bitmap->height);
    if (!turn) return std::nullopt;
    leaveOutEmpty(*turn, rows);
    auto block = PixelBuffer::zeroed(layout.width + kReadBeyond, 2 * turn->blockRows(0));
    auto room = roomFor(bitmap->width, bitmap->height, drawing);
    if (!block || !room) return std::nullopt;
    // A picture that leaves the caches before its reflection wants it is read once only by two
    // passes over everything.
    const bool staysInCaches =
        !passesCaches(picture.bytesPerRow() * static_cast<std::size_t>(picture.height()));
    if (staysInCaches && rows.drawsInPieces()) {
        auto passes = turn->roomToDraw(room->view());
        auto bands = TurnedStrips::bandsFor(*turn);
        if (!passes || !bands) return std::nullopt;
        TurnedStrips::Room strips{*std::move(block), *std::move(bands), *std::move(passes)};
        return CGImage(*std::move(room),
                       std::make_unique<TurnedStrips>(picture, std::move(rows), *std::move(turn),
                                                      bitmap->height, std::move(strips)));
    }
    auto squeezed = turn->squeezedPicture();
    if (!squeezed) return std::nullopt;
    return CGImage(*std::move(room),
                   std::make_unique<TurnedCanvas>(picture, std::move(rows), *std::move(turn),
                                                  *std::move(block), *std::move(squeezed)));
}

std::optional<CGImage> plainCanvas(const CGImage& picture, CanvasRows& rows,
                                   const CanvasLayout& layout, Drawing drawing) {
    auto room = roomFor(layout.width, layout.height, drawing);
    if (!room) return std::nullopt;
    return CGImage(*std::move(room), std::make_unique<PlainCanvas>(picture, std::move(rows)));
}

/// The result whose rows are yet to be made.
std::optional<ReflectionResult> undrawnResult(const CGImage& picture, CanvasRows rows,
                                              const CanvasLayout& layout, float imagePerspective,
                                              Drawing drawing) {
    const Quad corners = turnCorners(layout.width, layout.height, imagePerspective);
    const bool unturned = isUnturned(corners, layout.width, layout.height);
    if (!unturned)
        if (auto turned = turnedCanvas(picture, rows, layout, corners, drawing))
            return ReflectionResult{*std::move(turned), TurnOutcome::Turned};
    auto canvas = plainCanvas(picture, rows, layout, drawing);
    if (!canvas) return std::nullopt;
    return ReflectionResult{*std::move(canvas),
                            unturned ? TurnOutcome::Turned : TurnOutcome::Unturned};
}

}  // namespace

std::optional<ReflectionResult> addReflectionToCGImage(const CGImage& image, float perspectiveW,
                                                       float perspectiveH, float reflectionOffset,
                                                       float gradientOffset, float gradient,
                                                       const RenderInputReaders& readers,
                                                       Drawing drawing) {
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
    try {
        auto result = undrawnResult(*picture, *std::move(rows), *layout, imagePerspective, drawing);
        if (result && drawing == Drawing::AtOnce) result->image.pixels();
        return result;
    } catch (const std::bad_alloc&) {
        return std::nullopt;
    }
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
