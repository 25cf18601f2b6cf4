#include "imaging/kernels/exact_weight.h"

#include <cmath>
#include <cstddef>
#include <vector>

#include "imaging/kernels/dispatch.h"

namespace skarnel::kernels {
namespace {

constexpr int kOrder = 255;
constexpr int kCells = 65536;
constexpr int kDyadicStep = 512;  // multiples of this in 2^-16 are fractions with q <= 128
constexpr double kExactFrom = 256;
constexpr double kNear = 0x1p-42;  // closer than this to a boundary, rounding might cross it

/// Walks the Farey fractions of order 255 in rising order.
std::vector<std::int32_t> boundariesByCell() {
    std::vector<std::int32_t> cells(kCells, kNoBoundary);
    int a = 0;
    int b = 1;
    int c = 1;
    int d = kOrder;
    while (c < d) {
        const int scaled = c * kCells;
        // The fractions on a cell's edge need no entry.
        if (scaled % d != 0) cells[static_cast<std::size_t>(scaled / d)] = c << 8 | d;
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
bool nearAnyBoundary(double fraction, int cell, std::int32_t inside) {
    for (const int edge : {cell, cell + 1}) {
        const double boundary = edge * 0x1p-16;
        if (edge % kDyadicStep == 0 && fraction != boundary && isNear(fraction, boundary))
            return true;
    }
    return inside != kNoBoundary &&
           isNear(fraction, static_cast<double>(inside >> 8) / (inside & 0xFF));
}

}  // namespace

const std::int32_t* boundaryTable() {
    static const std::vector<std::int32_t> cells = boundariesByCell();
    return cells.data();
}

ExactWeight exactWeight(double position) {
    const double fraction = position - std::floor(position);
    const double scaled = fraction * kCells;
    const int cell = static_cast<int>(scaled);
    const std::int32_t inside = boundaryTable()[cell];
    int weight = cell;
    if (fraction * (inside & 0xFF) >= inside >> 8) ++weight;
    if (cell % kDyadicStep == 0 && scaled != cell) ++weight;
    return {static_cast<std::uint16_t>(weight),
            position < kExactFrom && nearAnyBoundary(fraction, cell, inside)};
}

namespace scalar {

std::size_t planShapeColumns(const ColumnPositions& positions, std::int32_t first,
                             std::size_t count, std::int32_t* from, std::uint32_t* weight,
                             std::int32_t* inDoubles) {
    std::size_t found = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const std::int32_t x = first + static_cast<std::int32_t>(i);
        const double position = (x - positions.origin) * positions.scale;
        const double before = std::floor(position);
        if (before >= positions.lastPixel) {
            from[i] = positions.lastPixel;
            weight[i] = 0;
            continue;
        }
        const ExactWeight exact = exactWeight(position);
        from[i] = static_cast<std::int32_t>(before);
        weight[i] = exact.weight * 0x10001U;
        if (exact.needsDoubles) inDoubles[found++] = x;
    }
    return found;
}

}  // namespace scalar

std::size_t planShapeColumns(const ColumnPositions& positions, std::int32_t first,
                             std::size_t count, std::int32_t* from, std::uint32_t* weight,
                             std::int32_t* inDoubles) {
    return SKARNEL_RUN_KERNEL(planShapeColumns, positions, first, count, from, weight, inDoubles);
}

}  // namespace skarnel::kernels
