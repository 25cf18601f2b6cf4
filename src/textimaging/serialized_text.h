// The lossless serialised form of styled text.
//
//   "SkText\r\n"  8 bytes; the line end shows a transfer that translated it
//   u32  version, 1
//   u32  n, then n string units of u16
//   u32  r, then r runs: u32 length, u32 bytes of the family's name, the name in UTF-8,
//        f64 size, u16 weight, u8 slant, u8 underline, u8 red, green, blue, alpha
//   u32  a, then a alignments of u8, one for each paragraph
//
// Numbers are little-endian. Nothing follows.
#pragma once

#include <optional>

#include "imaging/io/image_io.h"
#include "platform/styled_text.h"
#include "util/log/result.h"

namespace skarnel {

/// None when a style is none that can be read back: a size that is not a finite number above 0, a
/// weight outside 1..1000, or a text of more than 2^32 - 1 units.
std::optional<Bytes> serializeText(const StyledText& text);

/// Whether the data begin as the serialised form does.
bool isSerializedText(ByteView data);

/// The bytes are hostile: nothing is allocated that they do not themselves hold, and any breach of
/// the form, trailing bytes included, is Damaged. Gives back exactly what was serialised.
Result<StyledText> deserializeText(ByteView data);

}  // namespace skarnel
