// The writers of deflate blocks with bytes of any kind, in pieces of any size: the reference
// decoder gives them back.
#include <libdeflate.h>

#include <algorithm>

#include "imaging/io/deflate.h"
#include "input.h"

using namespace skarnel;

namespace {

/// The bytes, then parts of what is there already, as the bytes themselves tell.
Bytes repeated(std::span<const std::uint8_t> seed, std::size_t size) {
    Bytes bytes(seed.begin(), seed.end());
    for (std::size_t i = 0; !seed.empty() && bytes.size() < size; ++i) {
        const std::size_t far = seed[i % seed.size()] * std::size_t{257} % bytes.size() + 1;
        const std::size_t length = seed[(i + 1) % seed.size()] * std::size_t{3} % 400 + 1;
        for (std::size_t k = 0; k < length; ++k) bytes.push_back(bytes[bytes.size() - far]);
        bytes.push_back(static_cast<std::uint8_t>(i));
    }
    return bytes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const std::uint8_t shape = input.byte();
    // Each piece is a block of its own: with bytes that were multiplied not a block for each byte.
    const std::size_t least = (shape & 3) != 0 ? 200 : 1;
    const std::size_t piece = least + input.number<std::uint16_t>() * std::size_t{9};
    constexpr std::size_t kAll = 300'000;  // more than a block
    const Bytes bytes = repeated(input.rest(), (shape & 1) != 0   ? kAll
                                               : (shape & 2) != 0 ? kAll / 30
                                                                  : 0);
    for (const io::DeflateWay way : {io::DeflateWay::Runs, io::DeflateWay::Repeats}) {
        Bytes out;
        const auto deflater = io::makeBlockDeflater(way, out, (shape & 4) != 0 ? 3 : 4);
        for (std::size_t at = 0; at < bytes.size(); at += piece) {
            deflater->add(ByteView(bytes).subspan(at, std::min(piece, bytes.size() - at)));
        }
        deflater->finish();
        Bytes back(bytes.size() + 1);
        std::size_t got = 0;
        libdeflate_decompressor* decoder = libdeflate_alloc_decompressor();
        const bool read = libdeflate_zlib_decompress(decoder, out.data(), out.size(), back.data(),
                                                     back.size(), &got) == LIBDEFLATE_SUCCESS;
        libdeflate_free_decompressor(decoder);
        back.resize(got);
        fuzz::demand(read && back == bytes);
    }
    return 0;
}
