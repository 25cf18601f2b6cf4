// The frame that every part of a PNG file has: length, type, data, check.
#include <libdeflate.h>

#include <cstring>

#include "imaging/io/writers.h"

namespace skarnel::io {
namespace {

void putNumber(std::uint8_t* out, std::uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8) *out++ = static_cast<std::uint8_t>(value >> shift);
}

}  // namespace

void appendPngChunk(Bytes& out, std::string_view type, ByteView data) {
    const std::size_t at = out.size();
    out.resize(at + 12 + data.size());
    putNumber(out.data() + at, static_cast<std::uint32_t>(data.size()));
    std::memcpy(out.data() + at + 4, type.data(), 4);
    if (!data.empty()) std::memcpy(out.data() + at + 8, data.data(), data.size());
    const std::uint32_t check = libdeflate_crc32(0, out.data() + at + 4, data.size() + 4);
    putNumber(out.data() + at + 8 + data.size(), check);
}

}  // namespace skarnel::io
