// Files of the formats whose libraries are loaded late, which state more pixels than they have.
// LATE_FILES is the folder of the honest ones.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

#include "imaging/io/file_builders.h"

namespace skarnel::testing {

/// A JPEG XL stream that begins with its size and says nothing more.
inline Bytes jxlHeader(std::uint32_t side) {
    // From the lowest bit: not small, 18 bits of height, as wide as high, all else as usual.
    const std::uint64_t bits = std::uint64_t{2} << 1U | std::uint64_t{side - 1} << 3U |
                               std::uint64_t{1} << 21U | std::uint64_t{1} << 24U;
    return ByteSink(false).u16(0x0AFF).u64(bits).bytes;
}

/// A picture whose box of its size says something else.
inline Bytes withSide(const char* name, std::uint32_t side) {
    std::ifstream stream(std::string(LATE_FILES "/") + name, std::ios::binary);
    Bytes file{std::istreambuf_iterator<char>(stream), {}};
    const std::string_view type = "ispe";
    const auto at = std::search(file.begin(), file.end(), type.begin(), type.end());
    EXPECT_NE(at, file.end()) << name;
    const Bytes number = ByteSink(true).u32(side).u32(side).bytes;
    std::copy(number.begin(), number.end(), at + 8);
    return file;
}

}  // namespace skarnel::testing
