// What tests of deflate's writers need: bytes to compress, and the reference decoder.
#pragma once

#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <random>

#include "imaging/io/block_deflate.h"

namespace skarnel::testing {

/// The stream of a deflater that is made by `make(Bytes& out)` and given `piece` bytes at a time.
template <typename Make>
Bytes deflatedBy(Make make, const Bytes& bytes, std::size_t piece) {
    Bytes out = {1, 2, 3};  // what is there stays
    auto deflater = make(out);
    for (std::size_t at = 0; at < bytes.size(); at += piece) {
        deflater.add(ByteView(bytes).subspan(at, std::min(piece, bytes.size() - at)));
    }
    deflater.finish();
    EXPECT_EQ(Bytes(out.begin(), out.begin() + 3), (Bytes{1, 2, 3}));
    return Bytes(out.begin() + 3, out.end());
}

/// What the reference decoder makes of a whole stream, its check included; empty on any error.
inline Bytes inflated(const Bytes& stream, std::size_t size) {
    Bytes out(size + 1);
    uLongf got = out.size();
    uLong used = stream.size();
    if (uncompress2(out.data(), &got, stream.data(), &used) != Z_OK) return {};
    EXPECT_EQ(used, stream.size());
    out.resize(got);
    return out;
}

inline Bytes noise(std::size_t size, unsigned values, unsigned seed) {
    std::mt19937 random(seed);
    Bytes bytes(size);
    for (auto& byte : bytes) byte = static_cast<std::uint8_t>(random() % values);
    return bytes;
}

}  // namespace skarnel::testing
