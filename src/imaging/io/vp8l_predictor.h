// The predictors of lossless WebP (RFC 9649, 4.1): what is left of a pixel beside its neighbours.
#pragma once

#include <cstddef>
#include <cstdint>

namespace skarnel::io {

inline constexpr unsigned kVp8lModes = 14;

/// Writes `count` pixels of four bytes less their prediction by `mode`, byte by byte, modulo 256.
/// `row` and `above` point at the first of them in its row and in the one above; both need a pixel
/// before it, and `above` one behind the last.
void vp8lResidual(unsigned mode, const std::uint8_t* row, const std::uint8_t* above,
                  std::uint8_t* out, std::size_t count);

/// The sum of what is left, taken as signed bytes: how badly a mode predicts.
std::uint32_t vp8lCost(const std::uint8_t* residual, std::size_t bytes);

}  // namespace skarnel::io
