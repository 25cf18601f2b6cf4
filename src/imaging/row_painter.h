// Puts one row of pixels onto another by a compositing operation, wholly or under a mask.
#pragma once

#include <cstddef>
#include <cstdint>

#include "imaging/cgcontext.h"

namespace skarnel {

/// `mask` holds a coverage of 0..255 for each pixel; null means 255 everywhere. A partly covered
/// pixel lies between what it was and what the operation makes of it. Source and target do not
/// overlap.
void paintRow(std::uint8_t* target, const std::uint8_t* source, const std::uint8_t* mask,
              std::size_t pixels, CompositeOperation operation);

}  // namespace skarnel
