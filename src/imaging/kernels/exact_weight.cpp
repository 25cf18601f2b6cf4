#include "imaging/kernels/exact_weight.h"

#include <cmath>
#include <cstddef>
#include <vector>

#include "imaging/kernels/dispatch.h"

namespace skarnel::kernels {
namespace {

constexpr int kOrder = 255;
constexpr int kCells = 65536;
constexpr std::uint64_t kLastPart = 255;
constexpr int kDyadicStep = 512;  // multiples of this in 2^-16 are fractions with q <= 128
// Product and sum are each off by 2^-46 at most. A product d * f with d a multiple of q is off the
// whole number it stands for by at least |f * q - p|; from here on neither rounding can close that.
constexpr double kNear = 0x1p-44;

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

std::vector<std::uint32_t> boundaryParts() {
    const std::int32_t* cells = boundaryTable();
    std::vector<std::uint32_t> fours(kCells / 4);
    for (std::uint64_t cell = 0; cell < kCells; ++cell) {
        const auto numerator = static_cast<std::uint64_t>(cells[cell] >> 8);
        const auto denominator = static_cast<std::uint64_t>(cells[cell] & 0xFF);
        std::uint64_t part = kLastPart;
        if (cell % kDyadicStep == 0)
            part = 0;
        else if (denominator != 0)
            part = (numerator << 24) / denominator - (cell << 8);
        fours[cell / 4] |= static_cast<std::uint32_t>(part << 8 * (cell % 4));
    }
    return fours;
}

/// A cell's edges that are boundaries k / 128 are numbers that a double holds; on them the
/// arithmetic is exact. The fraction inside the cell is no such number: what looks equal is close.
bool nearAnyBoundary(double fraction, int cell, std::int32_t inside) {
    for (const int edge : {cell, cell + 1}) {
        const double distance = std::abs(fraction - edge * 0x1p-16);  // its q is 1 at least
        if (edge % kDyadicStep == 0 && distance != 0 && distance < kNear) return true;
    }
    return inside != kNoBoundary && std::abs(fraction * (inside & 0xFF) - (inside >> 8)) < kNear;
}

/// std::floor of what is not negative and below 2^31, without a call.
double wholePart(double position) {
    return static_cast<double>(static_cast<std::int32_t>(position));
}

}  // namespace

const std::int32_t* boundaryTable() {
    static const std::vector<std::int32_t> cells = boundariesByCell();
    return cells.data();
}

const std::uint32_t* boundaryPartTable() {
    static const std::vector<std::uint32_t> fours = boundaryParts();
    return fours.data();
}

ExactWeight exactWeight(double position) {
    const double fraction = position - wholePart(position);
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
        const double before = wholePart(position);
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
