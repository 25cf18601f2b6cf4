// Bytes as text in the alphabet of RFC 4648, section 4, with padding.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "imaging/io/image_io.h"

namespace skarnel {

std::string encodeBase64(ByteView bytes);

/// Strict: none for any other character, line ends included, for a length that is no multiple of
/// four, for misplaced padding and for bits behind the last byte that are not 0. So each sequence
/// of bytes has exactly one text.
std::optional<Bytes> decodeBase64(std::string_view text);

}  // namespace skarnel
