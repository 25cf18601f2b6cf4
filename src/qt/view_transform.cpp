#include "qt/view_transform.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace skarnel {
namespace {

CGRect intersection(CGRect a, CGRect b) {
    const double left = std::max(a.minX(), b.minX());
    const double top = std::max(a.minY(), b.minY());
    return {left, top, std::max(0.0, std::min(a.maxX(), b.maxX()) - left),
            std::max(0.0, std::min(a.maxY(), b.maxY()) - top)};
}

/// Sine and cosine of whole quarter turns come out exact, so that such turns stay on the grid.
double exact(double value) {
    return std::abs(value) < 1e-12                 ? 0.0
           : std::abs(std::abs(value) - 1) < 1e-12 ? std::round(value)
                                                   : value;
}

/// The middle of one axis after clamping: centred when it fits, else without a gap at an edge.
double settledMiddle(double middle, double contentLength, double viewportLength, double factor) {
    const double slack = (contentLength * factor - viewportLength) / 2 / factor;
    return slack <= 0 ? 0.0 : std::clamp(middle, -slack, slack);
}

}  // namespace

double ViewTransform::devicePixels(double logicalLength, double deviceRatio) {
    // The small addend keeps 1201 * 1.25 and the like from losing a pixel to rounding.
    return std::floor(std::max(0.0, logicalLength) * deviceRatio + 1e-6);
}

void ViewTransform::setViewport(CGSize devicePixels) {
    viewport_ = {std::max(0.0, devicePixels.width), std::max(0.0, devicePixels.height)};
    settle();
}

void ViewTransform::setImageSize(CGSize imagePixels) {
    image_ = {std::max(0.0, imagePixels.width), std::max(0.0, imagePixels.height)};
    setPart(wholeImage_ ? CGRect{} : part_);
}

void ViewTransform::setPart(CGRect imagePart) {
    const CGRect whole{0, 0, image_.width, image_.height};
    const CGRect clipped = intersection(imagePart, whole);
    wholeImage_ = clipped.width <= 0 || clipped.height <= 0;
    part_ = wholeImage_ ? whole : clipped;
    settle();
}

void ViewTransform::setRotation(double degrees) {
    if (!std::isfinite(degrees)) return;
    degrees_ = std::fmod(degrees, 360.0);
    const double radians = degrees_ * std::numbers::pi / 180;
    cosine_ = exact(std::cos(radians));
    sine_ = exact(std::sin(radians));
    settle();
}

CGSize ViewTransform::turnedSize() const {
    const double c = std::abs(cosine_);
    const double s = std::abs(sine_);
    return {part_.width * c + part_.height * s, part_.width * s + part_.height * c};
}

double ViewTransform::fittingFactor() const {
    const CGSize size = turnedSize();
    if (size.width <= 0 || size.height <= 0) return 1;
    if (viewport_.width <= 0 || viewport_.height <= 0) return 1;
    return std::clamp(std::min(viewport_.width / size.width, viewport_.height / size.height),
                      kMinFactor, kMaxFactor);
}

void ViewTransform::settle() {
    if (fits_) {
        factor_ = fittingFactor();
        middle_ = {};
        return;
    }
    const CGSize size = turnedSize();
    middle_ = {settledMiddle(middle_.x, size.width, viewport_.width, factor_),
               settledMiddle(middle_.y, size.height, viewport_.height, factor_)};
}

void ViewTransform::zoomToFit() {
    fits_ = true;
    settle();
}

void ViewTransform::setFactor(double factor) {
    if (!std::isfinite(factor) || factor <= 0) return;
    fits_ = false;
    factor_ = std::clamp(factor, kMinFactor, kMaxFactor);
    settle();
}

void ViewTransform::zoomAt(double factor, CGPoint anchor) {
    if (!std::isfinite(factor) || factor <= 0) return;
    const CGPoint kept = toImage(anchor);
    setFactor(factor);
    const CGPoint now = toView(kept);
    scrollBy(anchor.x - now.x, anchor.y - now.y);
}

void ViewTransform::scrollBy(double dx, double dy) {
    middle_.x -= dx / factor_;
    middle_.y -= dy / factor_;
    settle();
}

void ViewTransform::setScroll(CGPoint position) {
    const CGPoint now = scroll();
    scrollBy(now.x - position.x, now.y - position.y);
}

CGRect ViewTransform::content() const {
    const CGSize size = turnedSize();
    const double width = size.width * factor_;
    const double height = size.height * factor_;
    return {std::floor((viewport_.width - width) / 2 - middle_.x * factor_ + 0.5),
            std::floor((viewport_.height - height) / 2 - middle_.y * factor_ + 0.5), width, height};
}

CGPoint ViewTransform::toView(CGPoint image) const {
    const CGRect box = content();
    const double x = (image.x - part_.midX()) * factor_;
    const double y = (image.y - part_.midY()) * factor_;
    return {box.midX() + x * cosine_ - y * sine_, box.midY() + x * sine_ + y * cosine_};
}

CGPoint ViewTransform::toImage(CGPoint view) const {
    const CGRect box = content();
    const double x = (view.x - box.midX()) / factor_;
    const double y = (view.y - box.midY()) / factor_;
    return {part_.midX() + x * cosine_ + y * sine_, part_.midY() - x * sine_ + y * cosine_};
}

CGPoint ViewTransform::scroll() const {
    const CGRect box = content();
    const CGPoint range = scrollRange();
    return {range.x > 0 ? std::clamp(-box.x, 0.0, range.x) : 0.0,
            range.y > 0 ? std::clamp(-box.y, 0.0, range.y) : 0.0};
}

CGPoint ViewTransform::scrollRange() const {
    const CGSize size = turnedSize();
    return {std::max(0.0, std::ceil(size.width * factor_ - viewport_.width - 1e-6)),
            std::max(0.0, std::ceil(size.height * factor_ - viewport_.height - 1e-6))};
}

bool ViewTransform::hits(CGPoint view) const {
    if (isEmpty()) return false;
    const CGPoint image = toImage(view);
    return image.x >= part_.minX() && image.x < part_.maxX() && image.y >= part_.minY() &&
           image.y < part_.maxY();
}

}  // namespace skarnel
