// How the items of a HEIF or AVIF file are made of each other, which its library follows blindly.
#pragma once

#include <cstdint>

#include "imaging/io/image_io.h"

namespace skarnel::io {

/// False where the file has several boxes of a kind of which only one can count: which one that is,
/// readers decide differently.
bool hasOneMeaning(ByteView file);

/// How many steps a reader takes that looks through all tables of the items for each of them: how
/// many there are, times the bytes of what is said of them.
std::uint64_t tableSteps(ByteView file);

/// How many items are decoded for that one: itself, what it is derived from, and what it has for
/// transparency, each as often as it is met; one in a file without references. `most` + 1 for more
/// than `most`, where an item is made of itself or of what is no picture, or a canvas of another
/// one, also through what stands for that, where it is said to be of two types, and where
/// references are damaged.
std::uint64_t decodedItems(ByteView file, std::uint32_t item, std::uint64_t most);

/// The same of the pixels of each of them, at least 1024, once more for each time that it is
/// turned, mirrored or cut: those that the file states, or, if that is more, those that the headers
/// inside its data state, for each picture that is made of that. What stands for another item has
/// that one's. Also `most` + 1 where an item
/// has several sizes or decoders, is turned more than eight times, or where the headers inside are
/// damaged or state a larger picture than belongs to the stated one.
std::uint64_t decodedPixels(ByteView file, std::uint32_t item, std::uint64_t most);

}  // namespace skarnel::io
