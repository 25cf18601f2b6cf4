// The filters that look beyond one pixel, or at a part of the picture: blur and crop.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "imaging/cgcontext.h"
#include "imaging/filter_registry.h"
#include "imaging/recipe.h"
#include "util/geometry/integers.h"

namespace skarnel {
namespace {

/// Beyond three standard deviations less than 0.3 % of the weight is left.
constexpr double kReach = 3.0;
/// The largest radius that is taken; a larger one is cut to it.
constexpr double kMaxRadius = 1000.0;

/// Weights of the pixels -n..n of a Gaussian with this standard deviation; they sum up to 1.
std::vector<double> gaussianWeights(double radius) {
    const int reach = toInt32(std::ceil(kReach * radius));
    std::vector<double> weights;
    double sum = 0;
    for (int at = -reach; at <= reach; ++at) {
        // The square of a tiny radius would be 0.
        const double deviations = at / radius;
        weights.push_back(std::exp(-0.5 * deviations * deviations));
        sum += weights.back();
    }
    for (double& weight : weights) weight /= sum;
    return weights;
}

/// Blurs along one axis. Sample i of line j of the source lies at source[j * lineStep + i *
/// sampleStep]; `count` samples are written, each from `weights.size()` of the source's.
struct Lines {
    const double* source;
    double* target;
    std::ptrdiff_t sourceLine, sourceSample;
    std::ptrdiff_t targetLine, targetSample;
    int lines, count;
};

void blurLines(const Lines& on, const std::vector<double>& weights) {
    for (int line = 0; line < on.lines; ++line) {
        const double* from = on.source + line * on.sourceLine;
        double* to = on.target + line * on.targetLine;
        for (int at = 0; at < on.count; ++at) {
            double sum = 0;
            for (std::size_t tap = 0; tap < weights.size(); ++tap)
                sum +=
                    weights[tap] * from[(at + static_cast<std::ptrdiff_t>(tap)) * on.sourceSample];
            to[at * on.targetSample] = sum;
        }
    }
}

class BlurRecipe final : public CIImage::Recipe {
  public:
    BlurRecipe(CIImage input, double radius)
        : input_(std::move(input)),
          weights_(gaussianWeights(radius)),
          reach_(static_cast<int>(weights_.size() / 2)) {}

    /// Grown by the reach of the blur on every side.
    CGRect extent() const override {
        const CGRect inner = input_.extent();
        if (inner.width <= 0 || inner.height <= 0) return inner;
        return {inner.x - reach_, inner.y - reach_, inner.width + 2 * reach_,
                inner.height + 2 * reach_};
    }

    std::optional<CGImage> rasterize(CGPoint lowerLeft, int width, int height) const override {
        const std::int64_t grownWidth = std::int64_t{width} + 2 * reach_;
        const std::int64_t grownHeight = std::int64_t{height} + 2 * reach_;
        if (grownWidth > INT32_MAX / 4 || grownHeight > INT32_MAX) return std::nullopt;
        const std::optional<CGImage> before =
            input_.rasterize({lowerLeft.x - reach_, lowerLeft.y - reach_},
                             static_cast<int>(grownWidth), static_cast<int>(grownHeight));
        auto buffer = PixelBuffer::uninitialized(width, height);
        if (!before || !buffer) return std::nullopt;
        for (int sample = 0; sample < 4; ++sample) blurSample(before->pixels(), *buffer, sample);
        return CGImage(*std::move(buffer));
    }

  private:
    /// One of R, G, B and A; premultiplied, so that what is transparent adds no colour.
    void blurSample(PixelView source, PixelBuffer& target, int sample) const {
        const int width = target.width();
        const int height = target.height();
        const auto wide = static_cast<std::size_t>(source.width);
        std::vector<double> plane(wide * static_cast<std::size_t>(source.height));
        for (int y = 0; y < source.height; ++y)
            for (int x = 0; x < source.width; ++x)
                plane[static_cast<std::size_t>(y) * wide + static_cast<std::size_t>(x)] =
                    source.row(y)[4 * x + sample];
        std::vector<double> across(static_cast<std::size_t>(width) *
                                   static_cast<std::size_t>(source.height));
        blurLines({plane.data(), across.data(), source.width, 1, width, 1, source.height, width},
                  weights_);
        std::vector<double> both(static_cast<std::size_t>(width) *
                                 static_cast<std::size_t>(height));
        blurLines({across.data(), both.data(), 1, width, 1, width, width, height}, weights_);
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                target.view().row(y)[4 * x + sample] = static_cast<std::uint8_t>(
                    std::lround(both[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                                     static_cast<std::size_t>(x)]));
    }

    CIImage input_;
    std::vector<double> weights_;
    int reach_;
};

/// Without a positive radius the very input.
std::optional<CIImage> gaussianBlur(const FilterInputs& inputs) {
    const auto radius = inputs.value<double>("inputRadius");
    if (std::isnan(radius)) return std::nullopt;
    if (radius <= 0) return inputs.image();
    return CIImage(std::make_shared<BlurRecipe>(inputs.image(), std::min(radius, kMaxRadius)));
}

class CropRecipe final : public CIImage::Recipe {
  public:
    CropRecipe(CIImage input, const CGRect& rect)
        : input_(std::move(input)), extent_(NSIntersectionRect(input_.extent(), rect)) {}

    CGRect extent() const override { return extent_; }

    /// An edge inside a pixel leaves it the covered share.
    std::optional<CGImage> rasterize(CGPoint lowerLeft, int width, int height) const override {
        const std::optional<CGImage> whole = input_.rasterize(lowerLeft, width, height);
        const std::unique_ptr<CGContext> context = CGContext::create(width, height);
        if (!whole || !context) return std::nullopt;
        context->clipToRect(NSOffsetRect(extent_, -lowerLeft.x, -lowerLeft.y));
        context->drawImage(*whole, {0, 0, static_cast<double>(width), static_cast<double>(height)});
        return std::move(*context).takeImage();
    }

  private:
    CIImage input_;
    CGRect extent_;
};

std::optional<CIImage> crop(const FilterInputs& inputs) {
    return CIImage(
        std::make_shared<CropRecipe>(inputs.image(), inputs.value<CGRect>("inputRectangle")));
}

}  // namespace

std::vector<FilterEntry> areaFilters() {
    return {
        {"CIGaussianBlur", {{"inputRadius", 10.0}}, gaussianBlur},
        {"CICrop", {{"inputRectangle", CGRect{0, 0, 300, 300}}}, crop},
    };
}

}  // namespace skarnel
