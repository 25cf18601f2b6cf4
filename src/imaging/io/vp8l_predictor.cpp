#include "imaging/io/vp8l_predictor.h"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace skarnel::io {
namespace {

using Byte = std::uint8_t;

constexpr unsigned average(unsigned a, unsigned b) {
    return (a + b) / 2;
}

constexpr int clamped(int value) {
    return std::min(std::max(value, 0), 255);
}

// Each predicts a byte from the same one of its neighbours: left, top, top left, top right.
struct Left {
    static unsigned of(Byte l, Byte, Byte, Byte) { return l; }
};
struct Top {
    static unsigned of(Byte, Byte t, Byte, Byte) { return t; }
};
struct TopRight {
    static unsigned of(Byte, Byte, Byte, Byte tr) { return tr; }
};
struct TopLeft {
    static unsigned of(Byte, Byte, Byte tl, Byte) { return tl; }
};
struct LeftTopRightTop {
    static unsigned of(Byte l, Byte t, Byte, Byte tr) { return average(average(l, tr), t); }
};
struct LeftTopLeft {
    static unsigned of(Byte l, Byte, Byte tl, Byte) { return average(l, tl); }
};
struct LeftTop {
    static unsigned of(Byte l, Byte t, Byte, Byte) { return average(l, t); }
};
struct TopLeftTop {
    static unsigned of(Byte, Byte t, Byte tl, Byte) { return average(tl, t); }
};
struct TopTopRight {
    static unsigned of(Byte, Byte t, Byte, Byte tr) { return average(t, tr); }
};
struct AllFour {
    static unsigned of(Byte l, Byte t, Byte tl, Byte tr) {
        return average(average(l, tl), average(t, tr));
    }
};
struct Gradient {
    static unsigned of(Byte l, Byte t, Byte tl, Byte) {
        return static_cast<unsigned>(clamped(l + t - tl));
    }
};
struct HalfGradient {
    static unsigned of(Byte l, Byte t, Byte tl, Byte) {
        const int mean = (l + t) / 2;
        return static_cast<unsigned>(clamped(mean + (mean - tl) / 2));
    }
};

template <typename Predictor>
void subtract(const Byte* row, const Byte* above, Byte* __restrict out, std::size_t bytes) {
    const Byte* left = row - 4;
    const Byte* topLeft = above - 4;
    const Byte* topRight = above + 4;
    for (std::size_t i = 0; i < bytes; ++i) {
        out[i] =
            static_cast<Byte>(row[i] - Predictor::of(left[i], above[i], topLeft[i], topRight[i]));
    }
}

/// Black, opaque.
void subtractBlack(const Byte* row, const Byte*, Byte* out, std::size_t bytes) {
    for (std::size_t i = 0; i < bytes; ++i) {
        out[i] = static_cast<Byte>(row[i] - (i % 4 == 3 ? 255 : 0));
    }
}

/// The left or the top pixel, whichever lies nearer to left + top - top left in all four bytes.
void subtractSelected(const Byte* row, const Byte* above, Byte* out, std::size_t bytes) {
    for (std::size_t i = 0; i < bytes; i += 4) {
        int toLeft = 0;
        int toTop = 0;
        for (std::size_t k = i; k < i + 4; ++k) {
            const int topLeft = above[static_cast<std::ptrdiff_t>(k) - 4];
            toLeft += std::abs(above[k] - topLeft);
            toTop += std::abs(row[static_cast<std::ptrdiff_t>(k) - 4] - topLeft);
        }
        const Byte* predicted = toLeft < toTop ? row + i - 4 : above + i;
        for (std::size_t k = 0; k < 4; ++k)
            out[i + k] = static_cast<Byte>(row[i + k] - predicted[k]);
    }
}

using Subtract = void (*)(const Byte*, const Byte*, Byte*, std::size_t);
constexpr std::array<Subtract, kVp8lModes> kSubtract = {
    subtractBlack,         subtract<Left>,         subtract<Top>,
    subtract<TopRight>,    subtract<TopLeft>,      subtract<LeftTopRightTop>,
    subtract<LeftTopLeft>, subtract<LeftTop>,      subtract<TopLeftTop>,
    subtract<TopTopRight>, subtract<AllFour>,      subtractSelected,
    subtract<Gradient>,    subtract<HalfGradient>,
};

}  // namespace

void vp8lResidual(unsigned mode, const std::uint8_t* row, const std::uint8_t* above,
                  std::uint8_t* out, std::size_t count) {
    kSubtract[mode](row, above, out, 4 * count);
}

std::uint32_t vp8lCost(const std::uint8_t* residual, std::size_t bytes) {
    std::uint32_t sum = 0;
    for (std::size_t i = 0; i < bytes; ++i) {
        sum += std::min<std::uint32_t>(residual[i], 256U - residual[i]);
    }
    return sum;
}

}  // namespace skarnel::io
