#include "imaging/io/riff_chunks.h"

#include <array>

namespace skarnel::io {
namespace {

void putNumber(std::uint8_t* out, std::size_t value, unsigned bytes) {
    for (unsigned i = 0; i < bytes; ++i) out[i] = static_cast<std::uint8_t>(value >> 8 * i);
}

}  // namespace

RiffChunk::RiffChunk(Bytes& out, std::string_view name) : out_(out) {
    out_.insert(out_.end(), name.begin(), name.end());
    out_.resize(out_.size() + 4);
    start_ = out_.size();
}

void RiffChunk::end() {
    const std::size_t size = out_.size() - start_;
    putNumber(out_.data() + start_ - 4, size, 4);
    if (size % 2 != 0) out_.push_back(0);
}

void appendRiffChunk(Bytes& out, std::string_view name, ByteView data) {
    RiffChunk chunk(out, name);
    out.insert(out.end(), data.begin(), data.end());
    chunk.end();
}

void appendWebPFeatures(Bytes& out, const WebPFeatures& features) {
    constexpr unsigned kHasAlpha = 0x10;
    constexpr unsigned kHasExif = 0x08;
    std::array<std::uint8_t, 10> header{};
    header[0] = static_cast<std::uint8_t>((features.exif ? kHasExif : 0) |
                                          (features.alpha ? kHasAlpha : 0));
    putNumber(header.data() + 4, static_cast<std::size_t>(features.width - 1), 3);
    putNumber(header.data() + 7, static_cast<std::size_t>(features.height - 1), 3);
    appendRiffChunk(out, "VP8X", header);
}

}  // namespace skarnel::io
