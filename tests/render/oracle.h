// The shaping of the reflection written down once more, slowly and in doubles, one component at a
// time. It shares no code with the product, which must give the same bytes.
#pragma once

#include <cmath>
#include <cstdint>
#include <vector>

#include "imaging/cgimage.h"

namespace skarnel::test::oracle {

struct Settings {
    float perspectiveW = 0;
    float start = 0;
    float gradient = 7;
    float alpha = 200;
};

inline int wholeNumber(double value) {
    return value > -2147483649.0 && value < 2147483648.0 ? static_cast<int>(value) : 0;
}

inline double mapIndex(double x, double a, double b, double c, double d) {
    if (x < a || x > b) return -1.0;
    return (x - a) * ((d - c) / (b - a)) + c;
}

inline double interpolated(double x, double low, double high) {
    double whole;
    const double fraction = std::modf(x, &whole);
    return low + (high - low) * fraction;
}

inline double fadeOfRow(int r, int h, const Settings& settings) {
    const int hm1 = h - 1;
    const float floatHm1 = static_cast<float>(hm1);
    const float product = settings.start * floatHm1;
    const double startRow = static_cast<double>(product) / 100.0;
    const float e = settings.gradient / 10.0F;
    const double fadePos = (r - 1) + startRow;
    double f = hm1;
    if (fadePos < hm1) f = fadePos;
    float clamped = 0;
    if (f > 0) clamped = static_cast<float>(f);
    const float base = clamped / floatHm1;
    const float scaled = powf(base, e) * settings.alpha;
    return static_cast<double>(scaled) / 255.0;
}

/// The bytes of the shaped reflection of the mirror M, W1 x h pixels.
inline std::vector<std::uint8_t> shape(PixelView M, const Settings& settings) {
    const int w = M.width;
    const int h = M.height;
    const int inset = wholeNumber(w * (static_cast<double>(settings.perspectiveW) / 100.0));
    const int W1 = w + 2 * inset;
    if (W1 <= 0) return {};
    std::vector<std::uint8_t> out(static_cast<std::size_t>(W1) * 4 * static_cast<std::size_t>(h));
    for (int i = 0; i < h; ++i) {
        const int r = h - i;
        const double rowInset = wholeNumber(static_cast<double>(r) * static_cast<double>(inset) /
                                            static_cast<double>(h));
        const double a = rowInset;
        const double b = static_cast<double>(W1) - rowInset;
        const double factor = fadeOfRow(r, h, settings);
        for (int x = 0; x < W1; ++x) {
            const double sx = mapIndex(x, a, b, 0, w - 1);
            if (sx < 0) continue;
            int fl = wholeNumber(std::floor(sx));
            int ce = wholeNumber(std::ceil(sx));
            if (fl >= w) fl = w - 1;
            if (ce >= w) ce = w - 1;
            for (int k = 0; k < 4; ++k) {
                const double v = interpolated(sx, M.row(i)[4 * fl + k], M.row(i)[4 * ce + k]);
                const int t = wholeNumber(v) & 255;
                out[(static_cast<std::size_t>(i) * static_cast<std::size_t>(W1) +
                     static_cast<std::size_t>(x)) *
                        4 +
                    static_cast<std::size_t>(k)] =
                    static_cast<std::uint8_t>(wholeNumber(t * factor) & 255);
            }
        }
    }
    return out;
}

}  // namespace skarnel::test::oracle
