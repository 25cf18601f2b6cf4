// Filter images: recipes with an extent that are evaluated when they are rasterised.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "imaging/cgimage.h"
#include "util/geometry/geometry.h"

namespace skarnel {

class CIFilter;

/// x' = a x + c y + tx, y' = b x + d y + ty.
struct AffineTransform {
    double a = 1, b = 0, c = 0, d = 1, tx = 0, ty = 0;
    static AffineTransform scale(double x, double y);
    /// Counter-clockwise about the origin, y growing upward.
    static AffineTransform rotationByDegrees(double degrees);
    static AffineTransform translation(double x, double y);
    /// First this, then `next`.
    AffineTransform then(const AffineTransform& next) const;
    CGPoint apply(CGPoint point) const;
    friend bool operator==(const AffineTransform&, const AffineTransform&) = default;
};

/// A handle; copies share one recipe.
class CIImage {
  public:
    /// The extent is (0, 0, width, height).
    static CIImage imageWithCGImage(const CGImage& image);

    /// The bounding rectangle of the defined pixels, bottom-up; may start below zero. Infinite for
    /// no image; empty (zero width or height) where a transform leaves nothing.
    CGRect extent() const;

    /// True when both are the very same recipe object.
    bool isSame(const CIImage& other) const { return recipe_ == other.recipe_; }

    /// Evaluates the recipe over `bounds` (bottom-up, in the image's space), whose lower left
    /// corner becomes the lower left pixel of a width x height bitmap. None without memory.
    std::optional<CGImage> rasterize(CGPoint lowerLeft, int width, int height) const;

    struct Recipe;
    explicit CIImage(std::shared_ptr<const Recipe> recipe) : recipe_(std::move(recipe)) {}
    const Recipe& recipe() const { return *recipe_; }

  private:
    std::shared_ptr<const Recipe> recipe_;
};

/// A value of a filter's key: number, vector, transform or image.
using CIValue = std::variant<double, CGPoint, CGRect, AffineTransform, CIImage>;

/// A filter by name: set keys, then read "outputImage".
class CIFilter {
  public:
    /// None for a name that is not registered.
    static std::optional<CIFilter> filterWithName(std::string_view name);
    static std::vector<std::string> filterNames();

    const std::string& name() const { return name_; }
    /// Every input key except the image gets its registered default.
    void setDefaults();
    /// A key that the filter does not know, or a value of another type, is ignored and logged.
    void setValue(CIValue value, std::string_view key);
    /// None for a key without a value; "outputImage" is made from the inputs, and is none when
    /// the input image is missing or the inputs define no image.
    std::optional<CIValue> valueForKey(std::string_view key) const;
    std::optional<CIImage> outputImage() const;

  private:
    CIFilter() = default;
    std::string name_;
    std::vector<std::pair<std::string, CIValue>> values_;
};

}  // namespace skarnel
