#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "imaging/io/decoder_protocol.h"

using namespace skarnel;

/// The first bytes are an answer's header, the rest is its text.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    io::AnswerHeader header;
    if (size < sizeof header) return 0;
    std::memcpy(&header, data, sizeof header);
    const std::uint64_t fileBytes = 1U << 24U;
    if (io::checkAnswer(header, fileBytes, {}) && header.isPicture != 0) {
        const std::uint64_t pixels = std::uint64_t{4} * header.width * header.height;
        if (pixels == 0 || header.pixelOffset + pixels > fileBytes) std::abort();
    }
    const auto packed = io::unpackProperties(ByteView(data + sizeof header, size - sizeof header));
    if (!packed) return 0;
    // What was understood is written down and understood alike.
    const auto again = io::unpackProperties(io::packProperties(packed->type, packed->properties));
    if (!again || again->type != packed->type ||
        again->properties.size() != packed->properties.size()) {
        std::abort();
    }
    return 0;
}
