#include "render/exact_weight.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

namespace skarnel {
namespace {

constexpr int kOrder = 255;
constexpr int kCells = 65536;
constexpr int kDyadicStep = 512;  // multiples of this in 2^-16 are fractions with q <= 128
constexpr double kExactFrom = 256;
constexpr double kNear = 0x1p-42;  // closer than this to a boundary, rounding might cross it

/// The fraction inside a cell; denominator 0 where there is none.
struct Boundary {
    std::uint8_t numerator = 0;
    std::uint8_t denominator = 0;
};

/// Walks the Farey fractions of order 255 in rising order.
std::vector<Boundary> boundariesByCell() {
    std::vector<Boundary> cells(kCells);
    int a = 0;
    int b = 1;
    int c = 1;
    int d = kOrder;
    while (c < d) {
        const int scaled = c * kCells;
        if (scaled % d != 0)  // the fractions on a cell's edge need no entry
            cells[static_cast<std::size_t>(scaled / d)] = {static_cast<std::uint8_t>(c),
                                                           static_cast<std::uint8_t>(d)};
        const int k = (kOrder + b) / d;
        const int nextC = k * c - a;
        const int nextD = k * d - b;
        a = c;
        b = d;
        c = nextC;
        d = nextD;
    }
    return cells;
}

bool isNear(double fraction, double boundary) {
    return std::abs(fraction - boundary) < kNear;
}

/// The cell's edges are fractions that a double holds; on them the arithmetic is exact. Those
/// inside the cell are none, so what looks equal is only close.
bool nearAnyBoundary(double fraction, int cell, Boundary inside) {
    for (const int edge : {cell, cell + 1}) {
        const double boundary = edge * 0x1p-16;
        if (edge % kDyadicStep == 0 && fraction != boundary && isNear(fraction, boundary))
            return true;
    }
    return inside.denominator != 0 &&
           isNear(fraction, static_cast<double>(inside.numerator) / inside.denominator);
}

}  // namespace

ExactWeight exactWeight(double position) {
    static const std::vector<Boundary> cells = boundariesByCell();
    const double fraction = position - std::floor(position);
    const double scaled = fraction * kCells;
    const int cell = static_cast<int>(scaled);
    const Boundary inside = cells[static_cast<std::size_t>(cell)];
    int weight = cell;
    if (inside.denominator != 0 && fraction * inside.denominator >= inside.numerator) ++weight;
    if (cell % kDyadicStep == 0 && scaled != cell) ++weight;
    return {static_cast<std::uint16_t>(weight),
            position < kExactFrom && nearAnyBoundary(fraction, cell, inside)};
}

}  // namespace skarnel
