#include "imaging/device_pixel.h"

#include <algorithm>
#include <cmath>

namespace skarnel {
namespace {

double clampedUnit(double value) {
    return std::isnan(value) ? 0 : std::clamp(value, 0.0, 1.0);
}

}  // namespace

std::uint8_t unitToByte(double unit) {
    return static_cast<std::uint8_t>(std::lround(clampedUnit(unit) * 255));
}

kernels::Pixel premultipliedPixel(const DeviceColor& color) {
    const double alpha = clampedUnit(color.alpha);
    const auto component = [&](double value) { return unitToByte(clampedUnit(value) * alpha); };
    return {component(color.red), component(color.green), component(color.blue), unitToByte(alpha)};
}

}  // namespace skarnel
