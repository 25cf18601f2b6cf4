// How the items of a HEIF or AVIF file are made of each other, which its library follows blindly.
#pragma once

#include <cstdint>

#include "imaging/io/image_io.h"

namespace skarnel::io {

/// How many items are decoded for that one: itself, what it is derived from, and what it has for
/// transparency, each as often as it is met; one in a file without references. `most` + 1 for more
/// than `most`, where an item is made of itself or of what is no picture, and where references are
/// damaged.
std::uint64_t decodedItems(ByteView file, std::uint32_t item, std::uint64_t most);

}  // namespace skarnel::io
