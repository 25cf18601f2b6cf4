// Turns the fraction of an interpolation into a 16-bit weight that loses nothing.
//
// The interpolated byte is floor(M0 + d * f) with bytes M0, M1, d = M1 - M0 in -255..255, and a
// fraction f in [0, 1). As a function of f it only changes where d * f is whole, that is at the
// fractions p / q with q <= 255 (the Farey fractions of order 255). Two of them lie at least
// 1 / (255 * 254) > 2^-16 apart, so between any two neighbours there is a multiple of 2^-16, and
// that multiple does for every d what f does. Each interval of 2^-16 holds at most one of the
// fractions, so one look into a table of 65,536 entries decides between its two ends.
//
// For negative d the boundaries belong to the other side: floor(d * f) steps just above p / q.
// A weight that is itself such a fraction (a multiple of 1 / 128, hence of 512 in 2^-16) would
// stand on a boundary while f stands just above it, and is therefore moved up by one.
#pragma once

#include <cstddef>
#include <cstdint>

namespace skarnel::kernels {

struct ExactWeight {
    std::uint16_t weight;
    /// The double arithmetic M0 + d * f may round a sum onto a whole number that the exact value
    /// only comes close to; such a column has to be calculated in doubles. False for every
    /// position of kExactFrom or more: there the fraction has at most 45 bits after the point,
    /// products and sums below 256 have 53 bits, and all of them are exact.
    bool needsDoubles;
};

/// `position` >= 0 and below 2^31; its fraction is what is turned into a weight.
ExactWeight exactWeight(double position);

/// From here on no position needs doubles.
inline constexpr double kExactFrom = 128;

/// Equally spaced positions in a row of source pixels: column x lies at (x - origin) * scale, in
/// double precision, difference and product rounded each. All are >= 0 and below 2^31.
struct ColumnPositions {
    double origin;
    double scale;
    std::int32_t lastPixel;  // positions from here on count as this pixel alone
};

/// For the columns first .. first + count - 1 writes the source pixel before each and the weight of
/// the next one, twice, as ShapeColumns has them. Appends the columns that need doubles to
/// `inDoubles`, which has room for `count`, and returns how many these are. Any column may be among
/// them, since doubles are always right.
std::size_t planShapeColumns(const ColumnPositions& positions, std::int32_t first,
                             std::size_t count, std::int32_t* from, std::uint32_t* weight,
                             std::int32_t* inDoubles);

namespace scalar {
std::size_t planShapeColumns(const ColumnPositions& positions, std::int32_t first,
                             std::size_t count, std::int32_t* from, std::uint32_t* weight,
                             std::int32_t* inDoubles);
}  // namespace scalar

#if SKARNEL_VECTOR
namespace vector {
std::size_t planShapeColumns(const ColumnPositions& positions, std::int32_t first,
                             std::size_t count, std::int32_t* from, std::uint32_t* weight,
                             std::int32_t* inDoubles);
}  // namespace vector
#endif

/// The fraction inside each cell of 2^-16 as numerator << 8 | denominator, or kNoBoundary, whose
/// numerator of 1 over 0 no fraction reaches.
inline constexpr std::int32_t kNoBoundary = 1 << 8;
const std::int32_t* boundaryTable();

/// In which of 256 parts of its cell each boundary lies, four cells an entry, the first one lowest:
/// a fraction's weight is its cell before that part and one more behind it. Part 0 for a cell that
/// begins at a boundary, 255 for one without; a fraction in that part itself needs a closer look.
/// A quarter of the table above, so that it stays in a cache between two rows.
const std::uint32_t* boundaryPartTable();

}  // namespace skarnel::kernels
