#include "imaging/nscolor.h"

#include <algorithm>
#include <cassert>
#include <ostream>

namespace skarnel {
namespace {

bool isRGB(std::string_view space) {
    return space == NSDeviceRGBColorSpace || space == NSCalibratedRGBColorSpace;
}

}  // namespace

NSColor NSColor::colorWithDeviceRed(double red, double green, double blue, double alpha) {
    NSColor color;
    color.space_ = NSDeviceRGBColorSpace;
    color.components_[0] = red;
    color.components_[1] = green;
    color.components_[2] = blue;
    color.alpha_ = alpha;
    return color;
}

NSColor NSColor::colorWithDeviceWhite(double white, double alpha) {
    NSColor color;
    color.components_[0] = white;
    color.alpha_ = alpha;
    return color;
}

NSColor NSColor::colorWithDeviceCyan(double cyan, double magenta, double yellow, double black,
                                     double alpha) {
    NSColor color;
    color.space_ = NSDeviceCMYKColorSpace;
    color.components_[0] = cyan;
    color.components_[1] = magenta;
    color.components_[2] = yellow;
    color.components_[3] = black;
    color.alpha_ = alpha;
    return color;
}

NSColor NSColor::blackColor() {
    return colorWithDeviceWhite(0, 1);
}
NSColor NSColor::whiteColor() {
    return colorWithDeviceWhite(1, 1);
}

std::optional<NSColor> NSColor::colorUsingColorSpaceName(std::string_view space) const {
    if (space == space_) return *this;
    if (!isRGB(space)) return std::nullopt;
    NSColor color = *this;
    // A name of the caller's may not live as long as the colour, so the constant is kept.
    color.space_ =
        space == NSDeviceRGBColorSpace ? NSDeviceRGBColorSpace : NSCalibratedRGBColorSpace;
    if (space_ == NSDeviceWhiteColorSpace) {
        color.components_[1] = color.components_[2] = color.components_[0];
    } else if (space_ == NSDeviceCMYKColorSpace) {
        const double black = components_[3];
        for (int i = 0; i < 3; ++i)
            color.components_[i] = 1.0 - std::min(1.0, components_[i] + black);
        color.components_[3] = 0;
    }
    return color;
}

double NSColor::redComponent() const {
    assert(isRGB(space_));
    return components_[0];
}

double NSColor::greenComponent() const {
    assert(isRGB(space_));
    return components_[1];
}

double NSColor::blueComponent() const {
    assert(isRGB(space_));
    return components_[2];
}

DeviceColor NSColor::deviceColor() const {
    const std::optional<NSColor> rgb = colorUsingColorSpaceName(NSDeviceRGBColorSpace);
    if (!rgb) return {0, 0, 0, alpha_};
    return {rgb->components_[0], rgb->components_[1], rgb->components_[2], rgb->alpha_};
}

std::ostream& operator<<(std::ostream& out, const NSColor& color) {
    out << color.space_ << " (";
    for (const double component : color.components_) out << component << ' ';
    return out << "alpha " << color.alpha_ << ')';
}

}  // namespace skarnel
