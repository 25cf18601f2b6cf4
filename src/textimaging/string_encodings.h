// Text to bytes and back under the platform's numeric string-encoding codes.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "imaging/io/image_io.h"

namespace skarnel {

/// The name that a document declares for an encoding ("utf-8", "iso-8859-1", ...); none for a code
/// that is not known.
std::optional<std::string_view> charsetOfEncoding(std::int32_t encoding);

/// None when a character has no place in the encoding, a surrogate is unpaired, or the code is not
/// known. The two Unicode codes write what their names say: 10 begins with a byte order mark.
std::optional<Bytes> encodeString(std::u16string_view text, std::int32_t encoding);

/// None when the bytes break the encoding's rules or the code is not known.
std::optional<std::u16string> decodeString(ByteView data, std::int32_t encoding);

/// UTF-8 to UTF-16; bytes that are no UTF-8 become U+FFFD, one for each that cannot be used.
std::u16string utf16FromUtf8(std::string_view text);

/// UTF-16 to UTF-8; an unpaired surrogate becomes U+FFFD.
std::string utf8FromUtf16(std::u16string_view text);

/// The text with U+FFFD in place of every unpaired surrogate.
std::u16string withPairedSurrogates(std::u16string_view text);

}  // namespace skarnel
