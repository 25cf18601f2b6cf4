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

namespace scalar {
void combineRows(std::uint8_t* target, const std::uint8_t* const* rows, const Taps& taps,
                 std::size_t bytes);
void combineColumns(std::uint8_t* target, const std::uint8_t* source, std::size_t sourcePixels,
                    const Taps* taps, std::size_t pixels);
}  // namespace scalar

#if SKARNEL_VECTOR
namespace vector {
void combineRows(std::uint8_t* target, const std::uint8_t* const* rows, const Taps& taps,
                 std::size_t bytes);
void combineColumns(std::uint8_t* target, const std::uint8_t* source, std::size_t sourcePixels,
                    const Taps* taps, std::size_t pixels);
}  // namespace vector
#endif

}  // namespace skarnel::kernels
