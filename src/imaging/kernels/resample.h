// The inner loops of resampling rows of RGBA8 pixels.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace skarnel::kernels {

/// Weights of taps are fractions of this; the taps of one sample add up to exactly this.
inline constexpr int kTapUnit = 1 << 14;

/// One sample as a weighted sum of `count` neighbours from `first` on.
struct Taps {
    int first = 0;
    int count = 0;
    const std::int16_t* weights = nullptr;  // count of them, >= 0
};

/// Byte i of the target = round(sum of rows[j][i] * taps.weights[j] / kTapUnit) for taps.count
/// rows. The target overlaps no row.
void combineRows(std::uint8_t* target, const std::uint8_t* const* rows, const Taps& taps,
                 std::size_t bytes);

/// Pixel x of the target = the same weighted sum over the pixels taps[x].first onwards of a row of
/// sourcePixels.
void combineColumns(std::uint8_t* target, const std::uint8_t* source, std::size_t sourcePixels,
                    const Taps* taps, std::size_t pixels);

/// The taps of many samples side by side, four neighbours at a time, for vectors: sample x is the
/// sum over g < groups and j < 4 of source[first[x] + 4 g + j] * weights[4 (g samples + x) + j].
struct PackedTaps {
    const std::int32_t* first;
    const std::int16_t* weights;  // 4 * groups * samples of them; 0 where a sample has no tap
    std::size_t groups;           // >= 1
    std::size_t samples;
    std::size_t sourcePixels;  // of the row: 4 * groups of them from any first[x] on
    /// Only the first of its 4 * groups places that a sample uses, but for samples whose places end
    /// with the row; >= 1.
    std::size_t usedPlaces;
};

/// combineColumns with packed taps, for all samples.
void combinePackedColumns(std::uint8_t* target, const std::uint8_t* source, const PackedTaps& taps);

namespace scalar {
void combinePackedColumns(std::uint8_t* target, const std::uint8_t* source, const PackedTaps& taps);
void combineRows(std::uint8_t* target, const std::uint8_t* const* rows, const Taps& taps,
                 std::size_t bytes);
void combineColumns(std::uint8_t* target, const std::uint8_t* source, std::size_t sourcePixels,
                    const Taps* taps, std::size_t pixels);
}  // namespace scalar

#if SKARNEL_VECTOR
namespace vector {
void combinePackedColumns(std::uint8_t* target, const std::uint8_t* source, const PackedTaps& taps);
void combineRows(std::uint8_t* target, const std::uint8_t* const* rows, const Taps& taps,
                 std::size_t bytes);
void combineColumns(std::uint8_t* target, const std::uint8_t* source, std::size_t sourcePixels,
                    const Taps* taps, std::size_t pixels);
}  // namespace vector
#endif

}  // namespace skarnel::kernels
