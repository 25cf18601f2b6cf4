// What goes to the helper program that encodes a picture, and what comes back.
#pragma once

#include <cstdint>
#include <string_view>

namespace skarnel::io {

/// The helper's argument is "encode,PIXELS,TYPE": the picture's pixels, for the bound on memory,
/// and the type identifier of the format. The request comes through a socket in place of the
/// picture's file, in the machine's own byte order:
///
///     EncodeRequest
///     propertiesSize bytes, as packProperties writes them
///     height rows of width * samples bytes, from the top
///
/// The answer is one record of the decoder's protocol and what it announces; nothing follows:
///
///     Encoded  size, size >> 32                  the file
///     Failed   size, ErrorCode                   message
inline constexpr std::string_view kEncodeArgument = "encode,";

struct EncodeRequest {
    std::int32_t width;
    std::int32_t height;
    std::int32_t samples;
    std::int32_t opaque;  // 0 or 1
    std::uint64_t propertiesSize;
};

}  // namespace skarnel::io
