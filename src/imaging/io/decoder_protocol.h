// What the decoder's helper hands back: a memory file with one picture or one error.
#pragma once

#include <cstdint>

#include "imaging/io/image_io.h"
#include "util/log/result.h"

namespace skarnel::io {

/// The descriptors that the helper is started with.
inline constexpr int kPictureDescriptor = 3;  // the file to decode, read only
inline constexpr int kAnswerDescriptor = 4;   // the empty memory file for the answer

/// The first bytes of the memory file. What follows is found by the offsets, in the machine's own
/// byte order: both programs run on it.
///
///     | AnswerHeader | ... | pixels, page aligned | ... | text |
///
/// The text is the type and the properties of a picture, or the message of an error.
struct AnswerHeader {
    std::uint32_t magic = 0;
    std::uint32_t isPicture = 0;  // 0 = an error
    std::uint32_t errorCode = 0;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t reserved = 0;
    std::uint64_t pixelOffset = 0;
    std::uint64_t textOffset = 0;
    std::uint64_t textBytes = 0;
};
inline constexpr std::uint32_t kAnswerMagic = 0x534B4431;
inline constexpr std::uint64_t kAnswerPage = 4096;

/// Type and properties as bytes, and back. Reading takes nothing on trust: lengths are checked
/// against what is there, and anything left over is an error (Damaged).
Bytes packProperties(std::string_view type, const ImageProperties& properties);
struct PackedProperties {
    std::string type;
    ImageProperties properties;
};
Result<PackedProperties> unpackProperties(ByteView bytes);

/// Checks a header against the size of the file it stands in and against the limits. Afterwards
/// the pixels (4 * width * height bytes) and the text lie inside the file, apart from the header.
Result<void> checkAnswer(const AnswerHeader& header, std::uint64_t fileBytes,
                         const DecodeLimits& limits);

}  // namespace skarnel::io
