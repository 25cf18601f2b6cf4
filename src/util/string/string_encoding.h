// Text to bytes and back in the encodings that are used by number.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "util/string/nsstring.h"

namespace skarnel {

/// The numbers are the platform's.
enum class NSStringEncoding : std::uint32_t {
    UTF8 = 4,
    Unicode = 10,     // UTF-16; made with a byte-order mark, in little-endian order
    MacOSRoman = 30,  // 8 bits, with the euro sign at 0xDB
};

/// None when a character has no form in the encoding: nothing is replaced. Every text, lone
/// surrogates included, has a Unicode form.
std::optional<std::vector<std::uint8_t>> dataUsingEncoding(const NSString& text,
                                                           NSStringEncoding encoding);

/// What the bytes say about their own encoding.
struct DetectedEncoding {
    NSStringEncoding encoding;
    bool bigEndian;          // of Unicode
    std::size_t markLength;  // bytes of the byte-order mark
};

/// By the byte-order mark (UTF-8 or UTF-16 in either order); none without one.
std::optional<DetectedEncoding> encodingOfMark(std::span<const std::uint8_t> bytes);

/// Decodes by the byte-order mark, bytes without one in Mac OS Roman. What cannot be decoded
/// (half a unit at the end, wrong UTF-8) becomes U+FFFD.
NSString stringWithDetectedEncoding(std::span<const std::uint8_t> bytes);

}  // namespace skarnel
