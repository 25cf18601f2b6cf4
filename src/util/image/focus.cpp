#include "util/image/focus.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <utility>
#include <vector>

#include "util/geometry/integers.h"

namespace skarnel {
namespace {

thread_local NSGraphicsContext* currentContext = nullptr;

constexpr CompositeOperation kOver = CompositeOperation::SourceOver;

/// The nearest whole number of pixels of a positive extent, at least 1; 0 for one too large.
int pixelsOf(double points) {
    return points > 0 && points < 0.5 ? 1 : toInt32(std::round(points));
}

bool hasPositiveSize(CGSize size) {
    return size.width > 0 && size.height > 0;
}

std::unique_ptr<CGContext> makeContext(CGSize size, int pixelsWide, int pixelsHigh) {
    if (!hasPositiveSize(size))
        throw NSException("NSImageCacheException",
                          "Can't lock focus on an image without a positive width and height");
    std::unique_ptr<CGContext> context = CGContext::create(pixelsWide, pixelsHigh);
    if (!context)
        throw NSException("NSMallocException", "Can't allocate the pixels of the image in focus");
    return context;
}

/// The representation whose pixels are drawn for the image; null when there is none.
std::shared_ptr<NSImageRep> drawnRepresentation(const NSImage& image) {
    const auto all = image.representations();
    const auto exact = std::find_if(
        all.begin(), all.end(), [&image](const auto& one) { return one->size() == image.size(); });
    return exact != all.end() ? *exact : image.bestRepresentationForDevice();
}

int pixelsWideOf(const NSImageRep& representation) {
    const auto* bitmap = dynamic_cast<const NSBitmapImageRep*>(&representation);
    return bitmap != nullptr ? bitmap->pixelsWide() : pixelsOf(representation.size().width);
}

int pixelsHighOf(const NSImageRep& representation) {
    const auto* bitmap = dynamic_cast<const NSBitmapImageRep*>(&representation);
    return bitmap != nullptr ? bitmap->pixelsHigh() : pixelsOf(representation.size().height);
}

}  // namespace

NSGraphicsContext::NSGraphicsContext(CGSize sizePoints, int pixelsWide, int pixelsHigh)
    : size_(sizePoints),
      scaleX_(pixelsWide / sizePoints.width),
      scaleY_(pixelsHigh / sizePoints.height),
      context_(makeContext(sizePoints, pixelsWide, pixelsHigh)) {
    setColor(NSColor::blackColor());
}

CGRect NSGraphicsContext::toPixels(CGRect rect) const {
    return {rect.x * scaleX_, rect.y * scaleY_, rect.width * scaleX_, rect.height * scaleY_};
}

void NSGraphicsContext::setImageInterpolation(InterpolationQuality quality) {
    context_->setInterpolationQuality(quality);
}

void NSGraphicsContext::setShouldAntialias(bool antialias) {
    context_->setShouldAntialias(antialias);
}

void NSGraphicsContext::setColor(const NSColor& color) {
    context_->setFillColor(color.deviceColor());
    context_->setStrokeColor(color.deviceColor());
}

void NSGraphicsContext::clipToRect(CGRect rect) {
    context_->clipToRect(toPixels(rect));
}

void NSGraphicsContext::fillRect(CGRect rect, CompositeOperation operation) {
    changed_ = true;
    context_->setCompositeOperation(operation);
    context_->fillRect(toPixels(rect));
}

void NSGraphicsContext::strokeRect(CGRect rect) {
    changed_ = true;
    context_->setCompositeOperation(kOver);
    context_->strokeRect(toPixels(rect), CGSize{scaleX_, scaleY_});
}

void NSGraphicsContext::drawImage(const NSImage& image, CGRect destination, CGRect source,
                                  CompositeOperation operation, double fraction) {
    const CGSize size = image.size();
    const auto representation = drawnRepresentation(image);
    if (!representation || !hasPositiveSize(size)) return;
    const std::optional<CGImage> pixels = representation->bitmap();
    if (!pixels) return;
    changed_ = true;
    const double across = pixels->width() / size.width;
    const double up = pixels->height() / size.height;
    const CGRect sourcePixels{source.x * across, source.y * up, source.width * across,
                              source.height * up};
    context_->drawImage(*pixels, sourcePixels, toPixels(destination), operation, fraction);
}

void NSGraphicsContext::compositeImage(const NSImage& image, CGPoint point,
                                       CompositeOperation operation) {
    const CGSize size = image.size();
    drawImage(image, {point.x, point.y, size.width, size.height}, rectFromSize(size), operation, 1);
}

void NSGraphicsContext::drawRepresentation(const std::shared_ptr<NSImageRep>& representation,
                                           CGRect destination) {
    if (!representation) return;
    const std::optional<CGImage> pixels = representation->bitmap();
    if (!pixels) return;
    changed_ = true;
    context_->setCompositeOperation(kOver);
    context_->drawImage(*pixels, toPixels(destination));
}

std::shared_ptr<NSBitmapImageRep> NSGraphicsContext::bitmapOfRect(CGRect rect) {
    const CGRect pixels = toPixels(rect);
    const int width = toInt32(std::round(pixels.width));
    const int height = toInt32(std::round(pixels.height));
    std::optional<CGImage> all = context_->createImage();
    if (!all || width < 1 || height < 1) return nullptr;
    if (pixels.x != 0 || pixels.y != 0 || width != all->width() || height != all->height()) {
        const std::unique_ptr<CGContext> part = CGContext::create(width, height);
        if (!part) return nullptr;
        part->setCompositeOperation(CompositeOperation::Copy);
        part->drawImage(
            *all, {-std::round(pixels.x), -std::round(pixels.y), static_cast<double>(all->width()),
                   static_cast<double>(all->height())});
        all = part->createImage();
        if (!all) return nullptr;
    }
    auto representation = NSBitmapImageRep::initWithCGImage(*all);
    representation->setSize(rect.size());
    return representation;
}

FocusLock::FocusLock(const NSImage& image)
    : image_(image),
      context_(image.size(), pixelsOf(image.size().width), pixelsOf(image.size().height)) {
    context_.drawRepresentation(drawnRepresentation(image), rectFromSize(image.size()));
    enter();
}

FocusLock::FocusLock(const NSImage& image, std::shared_ptr<NSImageRep> representation)
    : image_(image),
      representation_(std::move(representation)),
      context_(representation_->size(), pixelsWideOf(*representation_),
               pixelsHighOf(*representation_)) {
    context_.drawRepresentation(representation_, rectFromSize(representation_->size()));
    enter();
}

void FocusLock::enter() {
    context_.changed_ = false;
    outer_ = std::exchange(currentContext, &context_);
    locked_ = true;
}

void FocusLock::leave() {
    assert(currentContext == &context_);
    currentContext = outer_;
    locked_ = false;
}

FocusLock::~FocusLock() {
    if (locked_) leave();
}

void FocusLock::unlock() {
    assert(locked_);
    leave();
    const auto before = image_.representations();
    if (!context_.isChanged() && !before.empty()) return;
    const CGSize size = context_.size();
    auto drawn = NSBitmapImageRep::initWithCGImage(std::move(*context_.context_).takeImage());
    drawn->setSize(size);
    assert(!representation_ ||
           std::find(before.begin(), before.end(), representation_) != before.end());
    // The list can only be added to at its end, so it is taken down and put up again.
    for (const auto& one : before) image_.removeRepresentation(one);
    if (!representation_) {
        image_.addRepresentation(drawn);
        return;
    }
    for (const auto& one : before) image_.addRepresentation(one == representation_ ? drawn : one);
}

NSGraphicsContext* FocusLock::current() {
    return currentContext;
}

}  // namespace skarnel
