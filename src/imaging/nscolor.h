// A colour in a named colour space, as the window toolkit hands it around.
#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>

#include "imaging/cgcontext.h"

namespace skarnel {

inline constexpr std::string_view NSDeviceRGBColorSpace = "NSDeviceRGBColorSpace";
inline constexpr std::string_view NSCalibratedRGBColorSpace = "NSCalibratedRGBColorSpace";
inline constexpr std::string_view NSDeviceWhiteColorSpace = "NSDeviceWhiteColorSpace";
inline constexpr std::string_view NSDeviceCMYKColorSpace = "NSDeviceCMYKColorSpace";

/// A plain value with components as doubles, nominally 0..1.
class NSColor {
  public:
    static NSColor colorWithDeviceRed(double red, double green, double blue, double alpha);
    static NSColor colorWithDeviceWhite(double white, double alpha);
    static NSColor colorWithDeviceCyan(double cyan, double magenta, double yellow, double black,
                                       double alpha);
    /// Device white 0 with alpha 1; its colour space is not RGB.
    static NSColor blackColor();
    static NSColor whiteColor();

    std::string_view colorSpaceName() const { return space_; }
    /// None when the conversion is not known. To RGB: white gives three equal components; CMYK
    /// gives 1 - min(1, c + k) and so on.
    std::optional<NSColor> colorUsingColorSpaceName(std::string_view space) const;

    /// Of an RGB colour only (asserted).
    double redComponent() const;
    double greenComponent() const;
    double blueComponent() const;
    double alphaComponent() const { return alpha_; }

    /// Through device RGB; black where there is no conversion.
    DeviceColor deviceColor() const;

    friend bool operator==(const NSColor&, const NSColor&) = default;
    friend std::ostream& operator<<(std::ostream& out, const NSColor& color);

  private:
    std::string_view space_ = NSDeviceWhiteColorSpace;
    double components_[4] = {0, 0, 0, 0};
    double alpha_ = 1;
};

}  // namespace skarnel
