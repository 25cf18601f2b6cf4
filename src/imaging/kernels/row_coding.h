// The inner loops of writing picture files: rows as a format takes them.
//
// As in pixel_ops.h, every function has a scalar definition and vector twins of equal bytes. Rows
// need no alignment.
#pragma once

#include <cstddef>
#include <cstdint>

namespace skarnel::kernels {

/// From premultiplied to straight RGBA: each colour becomes round(c * 255 / a), half upwards, at
/// most 255, and 0 where a is 0. The rows may be the same.
void unpremultiplyRow(std::uint8_t* target, const std::uint8_t* source, std::size_t pixels);

/// difference = row - other modulo 256, byte by byte; `difference` overlaps neither. Gives the sum
/// of the differences taken as signed bytes without their signs, the usual measure of how well they
/// compress. For at most 2^31 bytes.
std::uint64_t subtractRow(std::uint8_t* difference, const std::uint8_t* row,
                          const std::uint8_t* other, std::size_t bytes);

namespace scalar {
void unpremultiplyRow(std::uint8_t* target, const std::uint8_t* source, std::size_t pixels);
std::uint64_t subtractRow(std::uint8_t* difference, const std::uint8_t* row,
                          const std::uint8_t* other, std::size_t bytes);
}  // namespace scalar

#if SKARNEL_VECTOR
namespace vector {
void unpremultiplyRow(std::uint8_t* target, const std::uint8_t* source, std::size_t pixels);
std::uint64_t subtractRow(std::uint8_t* difference, const std::uint8_t* row,
                          const std::uint8_t* other, std::size_t bytes);
}  // namespace vector
#endif

}  // namespace skarnel::kernels
