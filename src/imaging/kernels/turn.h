// The inner loops of a turn about a vertical axis, which keeps vertical lines vertical: first every
// row is resampled along x by one shared map, then every column along y by a map of its own.
//
// In between, the pixels lie column by column, so that both loops read runs of neighbours:
//
//   rows  --squeezeRows-->  column 0: row 0, row 1, ... | column 1: row 0, ...  --walkColumns-->
//   rows
//
// Both work on blocks of kBlockRows rows, which are turned over in registers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>

namespace skarnel::kernels {

/// Weights of the second of two neighbours are fractions of this.
inline constexpr int kLerpUnit = 1 << 15;

/// Rows that are worked on together; a column's part of a block is one cache line.
inline constexpr int kBlockRows = 16;

inline constexpr std::size_t kLineBytes = 64;

/// Pixels behind the last column that a walk may read; their content plays no part.
inline constexpr int kReadBehindColumns = 32;

/// How far ahead the pixels of one row are asked for. Sixteen rows at once are too many for the
/// processor to find out by itself what comes next.
inline constexpr std::ptrdiff_t kAheadInRow = 6 * static_cast<std::ptrdiff_t>(kLineBytes);

/// Columns are walked in strips of at least this many, if there are as many.
inline constexpr std::size_t kStripColumns = 128;

/// first + round((second - first) * weight / kLerpUnit) for a weight of 0 .. kLerpUnit - 1; lies
/// between the two.
constexpr std::uint8_t lerpByte(int first, int second, int weight) {
    return static_cast<std::uint8_t>(first + (((second - first) * weight + kLerpUnit / 2) >> 15));
}

/// What the columns of a squeezed picture show, the same for all of its rows.
struct SqueezeMap {
    const std::int32_t* from;     // source pixel left of the sample; does not fall
    const std::uint32_t* weight;  // of the next one, twice, in the low and the high 16 bits
    std::size_t columns;
    std::int32_t firstPixel = 0;  // the number of the pixel that each source begins with
    /// How far behind a source's pixels those lie that will be wanted next. They are only asked
    /// for, so that any distance does.
    std::ptrdiff_t aheadBytes = kAheadInRow;
    /// 0, or the weight of the row below as a fraction of kLerpUnit: each source row then is first
    /// mixed with the next one, of which there is one more.
    int belowWeight = 0;
};

/// Where one block of squeezed rows goes: row r of column x is pixel x * columnStride + r.
struct SqueezeTarget {
    std::uint8_t* bytes;
    std::ptrdiff_t columnStride;  // pixels; at least the rows
    int rows;                     // 1 .. kBlockRows
    bool stream;  // store past the caches; `bytes` and each column begin a cache line then
};

/// Pixel x of each row = lerp of the pixels map.from[x] and map.from[x] + 1 of its source row, for
/// every component. `sources` are target.rows rows from map.firstPixel on, with belowWeight one
/// more, of each of which readablePixels may be read; after the last of these comes that one again.
/// Sources and target are disjoint.
void squeezeRows(const SqueezeTarget& target, const std::uint8_t* const* sources,
                 std::size_t readablePixels, const SqueezeMap& map);

/// Which target rows each column of a turned picture covers.
///
///   row begin      covered by firstLevel / 255
///   fullBegin ..   covered wholly
///   row end - 1    covered by lastLevel / 255; where it is row `begin` too, firstLevel holds
struct ColumnCover {
    const std::int32_t* begin;
    const std::int32_t* fullBegin;
    const std::int32_t* fullEnd;
    const std::int32_t* end;
    const std::uint8_t* firstLevel;
    const std::uint8_t* lastLevel;
};

/// Where the rows lie in each column of a squeezed picture: from row `first` on, up to `wrap`; row
/// `wrap` and what follows lie from the column's start again. Behind the row before `wrap` the next
/// kReadBehindColumns rows lie a second time.
struct RowRing {
    std::int32_t first = 0;
    std::int32_t wrap = std::numeric_limits<std::int32_t>::max();

    constexpr std::int32_t placeOf(std::int32_t row) const {
        return row - (row < wrap ? first : wrap);
    }
};

/// Which part of a wider target a walk writes; with Only all of its columns. First, Middle and Last
/// leave whole cache lines behind only together.
enum class Strip { Only, First, Middle, Last };

/// The way through the columns of a squeezed picture. Positions are kLerpUnit-ths of source rows.
struct ColumnWalk {
    const std::uint8_t* source;   // of column 0; kReadBehindColumns pixels follow the last
    std::ptrdiff_t columnStride;  // pixels; more than the place of the last row
    std::size_t columns;
    const float* centre;  // each column's position at the middle row
    const float* step;    // and how it grows for each target row, >= 0
    float last;           // positions are clamped to 0 .. last, a whole number of rows
    int middleRow;
    ColumnCover cover;
    /// For targets that the caches would not hold, stored past them: scratch of kLineBytes for each
    /// row that is written, where the pixels wait that do not fill a cache line yet. Null
    /// otherwise.
    std::uint8_t* unfinishedLines;
    /// The strips of a target are walked from left to right with the same unfinishedLines, each at
    /// least kStripColumns wide and all but the last a multiple of kBlockRows.
    Strip strip = Strip::Only;
    RowRing ring;
};

/// Which rows a walk writes, and where.
struct WalkTarget {
    std::uint8_t* bytes;         // of the first row; with unfinishedLines a multiple of 4
    std::ptrdiff_t strideBytes;  // at least 4 * walk.columns
    int firstRow;                // counted from the top of the turned picture
    int rows;
};

/// Writes walk.columns pixels of each of the target's rows. Pixel x of row y is the lerp of the
/// source rows floor(p) and floor(p) + 1 of column x, where p = centre[x] + (y - middleRow) *
/// step[x] in single precision, product and sum rounded each; times the level where the column
/// covers the row partly, and transparent where it does not.
void walkColumns(const WalkTarget& target, const ColumnWalk& walk);

namespace scalar {
void squeezeRows(const SqueezeTarget& target, const std::uint8_t* const* sources,
                 std::size_t readablePixels, const SqueezeMap& map);
void walkColumns(const WalkTarget& target, const ColumnWalk& walk);
/// One pixel of the walk.
void walkPixel(std::uint8_t* target, const ColumnWalk& walk, std::size_t column, int row);
}  // namespace scalar

#if SKARNEL_VECTOR
namespace vector {
void squeezeRows(const SqueezeTarget& target, const std::uint8_t* const* sources,
                 std::size_t readablePixels, const SqueezeMap& map);
void walkColumns(const WalkTarget& target, const ColumnWalk& walk);
}  // namespace vector
#endif

}  // namespace skarnel::kernels
