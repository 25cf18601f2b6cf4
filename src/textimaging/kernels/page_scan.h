// The inner loops of the knock-out and of the trimming scan, on rows of RGBA8 pixels.
//
// Every function has a scalar definition (namespace scalar) and, where the build has vector
// kernels, a twin of equal results. Rows need no alignment.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace skarnel::kernels {

/// R, G, B, A.
using ScanPixel = std::array<std::uint8_t, 4>;

/// A pixel is used when the squared distance of its four bytes from the reference's is above the
/// limit. Distances of bytes are at most 4 * 255^2, so that any larger limit finds nothing.
struct UsedRule {
    ScanPixel reference{};
    std::int32_t squaredLimit = 0;
};

/// Copies the row; where red, green and blue equal the reference's, alpha becomes 0. Target and
/// source are disjoint.
void knockOutRow(std::uint8_t* target, const std::uint8_t* source, ScanPixel reference,
                 std::size_t pixels);

/// The index of the first used pixel; `pixels` when none is.
std::size_t firstUsed(const std::uint8_t* row, const UsedRule& rule, std::size_t pixels);

/// One past the index of the last used pixel; 0 when none is.
std::size_t endOfUsed(const std::uint8_t* row, const UsedRule& rule, std::size_t pixels);

namespace scalar {
void knockOutRow(std::uint8_t* target, const std::uint8_t* source, ScanPixel reference,
                 std::size_t pixels);
std::size_t firstUsed(const std::uint8_t* row, const UsedRule& rule, std::size_t pixels);
std::size_t endOfUsed(const std::uint8_t* row, const UsedRule& rule, std::size_t pixels);
}  // namespace scalar

#if SKARNEL_VECTOR
namespace vector {
void knockOutRow(std::uint8_t* target, const std::uint8_t* source, ScanPixel reference,
                 std::size_t pixels);
std::size_t firstUsed(const std::uint8_t* row, const UsedRule& rule, std::size_t pixels);
std::size_t endOfUsed(const std::uint8_t* row, const UsedRule& rule, std::size_t pixels);
}  // namespace vector
#endif

}  // namespace skarnel::kernels
