// How the items of a HEIF or AVIF file are made of each other, which its library follows blindly.
#pragma once

#include <cstdint>

#include "imaging/io/image_io.h"

namespace skarnel::io {

/// How many items are decoded for that one: itself, what it is derived from, and what it has for
/// transparency, each as often as it is met. `most` + 1 for more than `most`, and where an item is
/// made of itself. A file without references, or damaged ones, needs one.
std::uint64_t decodedItems(ByteView file, std::uint32_t item, std::uint64_t most);

}  // namespace skarnel::io
