// The XMP packet of a TIFF, PNG or JPEG file: found and put in without decoding the picture.
//
// Places after the XMP standard (ISO 16684-1): TIFF tag 700 of the first directory; PNG a chunk
// iTXt with the keyword "XML:com.adobe.xmp"; JPEG a segment APP1 that begins with
// "http://ns.adobe.com/xap/1.0/" and a zero byte.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "imaging/io/image_io.h"
#include "util/log/result.h"

namespace skarnel {

/// The packet of a file of one of the three formats; none where there is none, and for every other
/// file. The bytes are hostile; a damaged file has no packet.
std::optional<std::string> xmpPacketOf(ByteView file);

/// Whether a JPEG has room for a packet of so many bytes, at most 65,504: one segment. TooLarge
/// where it has not.
Result<void> roomInJpeg(std::size_t packetBytes);

/// The same file with the packet and the same picture. The file is one that this program has
/// encoded, so it has no packet yet. Unsupported for other formats, TooLarge as
/// `roomInJpeg` for a JPEG, Damaged where the file's structure cannot be followed.
Result<Bytes> withXmpPacket(ByteView file, std::string_view packet);

}  // namespace skarnel
