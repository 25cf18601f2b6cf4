// The boxes of a HEIF or AVIF file in memory.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "imaging/io/byte_reader.h"
#include "imaging/io/image_io.h"

namespace skarnel::io {

/// Version and flags of a box.
inline constexpr std::size_t kKindBytes = 4;

inline std::string_view textOf(ByteView bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// Calls `each` with the type and the content of the boxes that lie side by side, until it says
/// that it is done.
template <typename Each>
void forEachBox(ByteView bytes, Each each) {
    ByteReader in(bytes, ByteOrder::Big);
    while (in.left() > 0) {
        const std::size_t start = in.position();
        std::uint64_t size = in.u32();
        const std::string_view type = textOf(in.take(4));
        if (size == 1) size = in.u64();
        const std::size_t headBytes = in.position() - start;
        if (size == 0) size = headBytes + in.left();
        if (in.failed() || size < headBytes) return;
        const ByteView content = in.take(std::min<std::uint64_t>(size - headBytes, in.left()));
        if (each(type, content)) return;
    }
}

inline std::optional<ByteView> findBox(ByteView bytes, std::string_view wanted) {
    std::optional<ByteView> found;
    forEachBox(bytes, [&](std::string_view type, ByteView content) {
        if (type == wanted) found = content;
        return found.has_value();
    });
    return found;
}

}  // namespace skarnel::io
