// Conversions from floating point to whole numbers that are defined for every input.
#pragma once

#include <cmath>
#include <cstdint>

namespace skarnel {

/// Toward zero; 0 for NaN and for a value whose truncation a 32-bit signed integer cannot hold.
constexpr std::int32_t toInt32(double value) {
    return value > -2147483649.0 && value < 2147483648.0 ? static_cast<std::int32_t>(value) : 0;
}

/// Toward zero; 0 for NaN and for a value that a 64-bit signed integer cannot hold.
constexpr std::int64_t toInt64(double value) {
    return value >= -9223372036854775808.0 && value < 9223372036854775808.0
               ? static_cast<std::int64_t>(value)
               : 0;
}

/// The low 8 bits of the value truncated toward zero; wraps modulo 256 on purpose, also for
/// negative values. 0 for NaN and outside the 32-bit range.
constexpr std::uint8_t toLowByte(double value) {
    return static_cast<std::uint8_t>(toInt32(value));
}

}  // namespace skarnel
