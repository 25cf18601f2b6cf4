#include "imaging/ciimage.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "imaging/axis_plan.h"
#include "imaging/column_turn.h"
#include "imaging/image_rows.h"
#include "imaging/kernels/pixel_ops.h"
#include "imaging/recipe.h"
#include "imaging/row_painter.h"
#include "util/geometry/integers.h"

namespace skarnel {
namespace {

constexpr double kPi = 3.141592653589793;

CGRect boundsOfTransformed(const CGRect& rect, const AffineTransform& transform) {
    const Quad corners{
        transform.apply({rect.minX(), rect.maxY()}), transform.apply({rect.maxX(), rect.maxY()}),
        transform.apply({rect.minX(), rect.minY()}), transform.apply({rect.maxX(), rect.minY()})};
    return corners.boundingBox();
}

/// Draws a placed picture, perhaps mirrored, into its upright `place`.
std::optional<CGImage> drawUpright(PixelView picture, const CGRect& place, CGPoint lowerLeft,
                                   int width, int height) {
    const double left = place.x - lowerLeft.x;
    const double top = lowerLeft.y + height - place.maxY();
    const Interval columns{left, left + place.width};
    const Interval rows{top, top + place.height};
    const AxisPlan across = planAxis({0, 1.0 * picture.width}, picture.width, columns,
                                     {0, 1.0 * width}, InterpolationQuality::High);
    const AxisPlan down = planAxis({0, 1.0 * picture.height}, picture.height, rows,
                                   {0, 1.0 * height}, InterpolationQuality::High);
    auto buffer = PixelBuffer::zeroed(width, height);
    auto made = ImageRows::create(picture, across, down);
    if (!buffer || !made) return std::nullopt;
    for (int j = 0; j < down.size() && across.size() > 0; ++j) {
        std::vector<std::uint8_t> mask(static_cast<std::size_t>(across.size()));
        for (int i = 0; i < across.size(); ++i)
            mask[static_cast<std::size_t>(i)] =
                kernels::multiply255(across.coverage(i), down.coverage(j));
        paintRow(buffer->view().row(down.first() + j) + std::ptrdiff_t{4} * across.first(),
                 made->row(j), mask.data(), mask.size(), CompositeOperation::Copy);
    }
    return CGImage(*std::move(buffer));
}

/// The picture with its columns in reverse order.
std::optional<CGImage> withReversedColumns(PixelView picture) {
    auto buffer = PixelBuffer::uninitialized(picture.width, picture.height);
    if (!buffer) return std::nullopt;
    for (int y = 0; y < picture.height; ++y)
        for (int x = 0; x < picture.width; ++x)
            std::memcpy(buffer->view().row(y) + std::ptrdiff_t{4} * x,
                        picture.row(y) + std::ptrdiff_t{4} * (picture.width - 1 - x), 4);
    return CGImage(*std::move(buffer));
}

/// A view of the same rows, last row first.
PixelView upsideDown(PixelView picture) {
    picture.bytes = picture.row(picture.height - 1);
    picture.strideBytes = -picture.strideBytes;
    return picture;
}

std::optional<CGImage> drawQuad(const CGImage& picture, const Quad& quad, CGPoint lowerLeft,
                                int width, int height) {
    if (auto turned = drawColumnTurn(picture, quad, lowerLeft, width, height)) return turned;
    const auto source = picture.withAlpha();
    auto buffer = PixelBuffer::zeroed(width, height);
    if (!source || !buffer || !drawProjected(source->pixels(), quad, lowerLeft, buffer->view()))
        return std::nullopt;
    return CGImage(*std::move(buffer));
}

struct BitmapRecipe final : CIImage::Recipe {
    explicit BitmapRecipe(CGImage bitmap) : image(std::move(bitmap)) {}
    CGRect extent() const override { return {0, 0, 1.0 * image.width(), 1.0 * image.height()}; }
    std::optional<CGImage> rasterize(CGPoint lowerLeft, int width, int height) const override {
        const auto source = image.withAlpha();
        if (!source) return std::nullopt;
        // Pixels never change, so the very same ones serve as the result.
        if (lowerLeft == CGPoint{} && width == image.width() && height == image.height())
            return source;
        return drawUpright(source->pixels(), extent(), lowerLeft, width, height);
    }
    CGImage image;
};

struct AffineRecipe final : CIImage::Recipe {
    AffineRecipe(CIImage source, AffineTransform map) : input(std::move(source)), transform(map) {}
    CGRect extent() const override { return boundsOfTransformed(input.extent(), transform); }
    std::optional<CGImage> rasterize(CGPoint lowerLeft, int width, int height) const override;
    std::optional<CGImage> rasterizeUpright(const PlacedPixels& pixels, CGPoint lowerLeft,
                                            int width, int height) const;

    CIImage input;
    AffineTransform transform;
};

std::optional<CGImage> AffineRecipe::rasterizeUpright(const PlacedPixels& pixels, CGPoint lowerLeft,
                                                      int width, int height) const {
    std::optional<CGImage> image = pixels.image;
    if (transform.a < 0) image = withReversedColumns(image->pixels());
    if (!image) return std::nullopt;
    const PixelView view = image->pixels();
    CGRect place = boundsOfTransformed(
        {pixels.lowerLeft.x, pixels.lowerLeft.y, 1.0 * view.width, 1.0 * view.height}, transform);
    // A fractional extent that is asked for as a whole gives up no part of a row or column: the
    // whole picture is scaled onto the whole pixels.
    if (lowerLeft == place.origin() && width == toInt32(place.width) &&
        height == toInt32(place.height))
        place = {lowerLeft.x, lowerLeft.y, 1.0 * width, 1.0 * height};
    return drawUpright(transform.d < 0 ? upsideDown(view) : view, place, lowerLeft, width, height);
}

std::optional<CGImage> AffineRecipe::rasterize(CGPoint lowerLeft, int width, int height) const {
    const auto pixels = wholePixels(input);
    if (!pixels) return std::nullopt;
    if (transform.b == 0 && transform.c == 0)
        return rasterizeUpright(*pixels, lowerLeft, width, height);
    const CGPoint at = pixels->lowerLeft;
    const double right = at.x + pixels->image.width();
    const double top = at.y + pixels->image.height();
    const Quad quad{transform.apply({at.x, top}), transform.apply({right, top}),
                    transform.apply(at), transform.apply({right, at.y})};
    return drawQuad(pixels->image, quad, lowerLeft, width, height);
}

struct ProjectionRecipe final : CIImage::Recipe {
    ProjectionRecipe(CIImage source, Quad target) : input(std::move(source)), quad(target) {}
    CGRect extent() const override { return quad.boundingBox(); }
    std::optional<CGImage> rasterize(CGPoint lowerLeft, int width, int height) const override {
        const auto pixels = wholePixels(input);
        if (!pixels) return std::nullopt;
        return drawQuad(pixels->image, quad, lowerLeft, width, height);
    }
    CIImage input;
    Quad quad;
};

}  // namespace

AffineTransform AffineTransform::scale(double x, double y) {
    return {x, 0, 0, y, 0, 0};
}

AffineTransform AffineTransform::rotationByDegrees(double degrees) {
    // Quarter turns are exact, so that they stay copies of pixels.
    const double quarter = degrees / 90;
    if (quarter == std::floor(quarter)) {
        constexpr double kCosine[4] = {1, 0, -1, 0};
        const auto turns = static_cast<int>(((toInt64(quarter) % 4) + 4) % 4);
        const double cosine = kCosine[turns];
        const double sine = kCosine[(turns + 3) % 4];
        return {cosine, sine, -sine, cosine, 0, 0};
    }
    const double radians = degrees * kPi / 180;
    const double cosine = std::cos(radians);
    const double sine = std::sin(radians);
    return {cosine, sine, -sine, cosine, 0, 0};
}

AffineTransform AffineTransform::translation(double x, double y) {
    return {1, 0, 0, 1, x, y};
}

AffineTransform AffineTransform::then(const AffineTransform& next) const {
    return {next.a * a + next.c * b,
            next.b * a + next.d * b,
            next.a * c + next.c * d,
            next.b * c + next.d * d,
            next.a * tx + next.c * ty + next.tx,
            next.b * tx + next.d * ty + next.ty};
}

CGPoint AffineTransform::apply(CGPoint point) const {
    return {a * point.x + c * point.y + tx, b * point.x + d * point.y + ty};
}

CIImage CIImage::imageWithCGImage(const CGImage& image) {
    return CIImage(std::make_shared<BitmapRecipe>(image));
}

CGRect CIImage::extent() const {
    return recipe_->extent();
}

std::optional<CGImage> CIImage::rasterize(CGPoint lowerLeft, int width, int height) const {
    if (width < 1 || height < 1 || !std::isfinite(lowerLeft.x) || !std::isfinite(lowerLeft.y))
        return std::nullopt;
    return recipe_->rasterize(lowerLeft, width, height);
}

std::optional<PlacedPixels> wholePixels(const CIImage& image) {
    const CGRect extent = image.extent();
    const CGPoint lowerLeft{std::floor(extent.minX()), std::floor(extent.minY())};
    const int width = toInt32(std::ceil(extent.maxX()) - lowerLeft.x);
    const int height = toInt32(std::ceil(extent.maxY()) - lowerLeft.y);
    std::optional<CGImage> pixels = image.rasterize(lowerLeft, width, height);
    if (!pixels) return std::nullopt;
    return PlacedPixels{*std::move(pixels), lowerLeft};
}

CIImage transformedImage(const CIImage& image, const AffineTransform& transform) {
    // A chain of transforms samples its pixels once.
    if (const auto* inner = dynamic_cast<const AffineRecipe*>(&image.recipe()))
        return CIImage(
            std::make_shared<AffineRecipe>(inner->input, inner->transform.then(transform)));
    return CIImage(std::make_shared<AffineRecipe>(image, transform));
}

std::optional<CIImage> projectedImage(const CIImage& image, const Quad& quad) {
    if (!quad.isConvex()) return std::nullopt;
    return CIImage(std::make_shared<ProjectionRecipe>(image, quad));
}

}  // namespace skarnel
