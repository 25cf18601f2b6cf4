#include "render/fitting.h"

namespace skarnel {

namespace {

/// How far an extent must shrink to fit; compared in double precision, kept in single.
float shrinkFactor(double source, double destination) {
    const double factor = destination / source;
    return factor > 1 ? 1.0F : static_cast<float>(factor);
}

double centringOffset(double room) {
    return room > 0 ? static_cast<double>(static_cast<float>(room) * 0.5F) : 0.0;
}

}  // namespace

CGRect GetDestinationRect(const CGRect& src, const CGRect& dst) {
    const float fx = shrinkFactor(src.width, dst.width);
    const float fy = shrinkFactor(src.height, dst.height);
    const double factor = fx < fy ? fx : fy;
    const double width = src.width * factor;
    const double height = src.height * factor;
    return {dst.x + centringOffset(dst.width - width), dst.y + centringOffset(dst.height - height),
            width, height};
}

}  // namespace skarnel
