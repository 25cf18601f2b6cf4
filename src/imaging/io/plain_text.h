// Text from programs that are not trusted, made fit to be shown.
#pragma once

#include <cstddef>
#include <string>

#include "imaging/io/image_io.h"

namespace skarnel::io {

/// The text as whole characters of UTF-8, `maxBytes` bytes at most. A question mark stands for each
/// byte that is part of none, for each control character, and for those that turn the direction of
/// writing around, so that a terminal or a label shows what is there and nothing else.
std::string plainText(ByteView text, std::size_t maxBytes);

/// Whether it is a name as this program gives them: printable ASCII, 1 to 128 characters.
bool isPlainName(std::string_view name);

}  // namespace skarnel::io
