// Rewriting what a camera wrote about a picture, for the picture that is made of it.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "imaging/io/image_io.h"
#include "imaging/io/writers.h"

namespace skarnel::io {

/// One entry of a directory; the value's numbers are in little-endian order.
struct ExifField {
    std::uint16_t tag = 0;
    std::uint16_t type = 0;  // the TIFF standard's number
    std::uint32_t count = 0;
    Bytes value;
};
using ExifDirectory = std::vector<ExifField>;

/// What is kept of a block: who, what, when and how. Left out: thumbnails, what tells of the
/// stored pixels (sizes, layout), and makers' notes, whose inner offsets do not survive a move.
/// The orientation is upright and the colours are sRGB in what is written from it.
struct ExifTree {
    ExifDirectory main;  // maker, model, date, ...; sorted by tag, as are the others
    ExifDirectory exif;
    ExifDirectory gps;

    bool empty() const { return main.empty() && exif.empty() && gps.empty(); }
};

/// Reads a block or a whole classic TIFF file; hostile bytes give less, never an error.
ExifTree readExifTree(ByteView bytes);

/// A block (little-endian, without "Exif\0\0"); empty for an empty tree without a resolution.
Bytes writeExifBlock(const ExifTree& tree, const std::optional<Resolution>& resolution);

/// One directory as it stands at `offset` of a classic file, its longer values right behind it.
Bytes writeExifDirectory(const ExifDirectory& directory, std::uint32_t offset);

/// The tree of a dictionary's block; empty when it has none.
ExifTree exifTreeOf(const ImageProperties& properties);

}  // namespace skarnel::io
