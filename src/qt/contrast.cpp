#include "qt/contrast.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace skarnel {
namespace {

constexpr double kFlare = 0.05;  // light that every screen gives back from the room
constexpr int kSteps = 50;

double linear(double value) {
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

double luminance(const QColor& color) {
    return 0.2126 * linear(static_cast<double>(color.redF())) +
           0.7152 * linear(static_cast<double>(color.greenF())) +
           0.0722 * linear(static_cast<double>(color.blueF()));
}

int mixed(int from, int to, double part) {
    return static_cast<int>(std::lround(from + (to - from) * part));
}

QColor mixed(const QColor& from, const QColor& to, double part) {
    return {mixed(from.red(), to.red(), part), mixed(from.green(), to.green(), part),
            mixed(from.blue(), to.blue(), part)};
}

}  // namespace

double contrast(const QColor& one, const QColor& other) {
    const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
    return (lighter + kFlare) / (darker + kFlare);
}

QColor blended(const QColor& over, const QColor& ground) {
    return mixed(ground, over, static_cast<double>(over.alphaF()));
}

QColor readableOn(const QColor& ground) {
    return contrast(ground, Qt::white) >= contrast(ground, Qt::black) ? Qt::white : Qt::black;
}

QColor groundFor(const QColor& text, QColor ground) {
    const QColor end =
        contrast(text, Qt::black) > contrast(text, Qt::white) ? Qt::black : Qt::white;
    const QColor start = ground;
    for (int step = 1; contrast(text, ground) < kTextContrast && step <= kSteps; ++step)
        ground = mixed(start, end, static_cast<double>(step) / kSteps);
    return ground;
}

}  // namespace skarnel
