// The EXIF block: what a camera wrote about a picture.
#pragma once

#include "imaging/io/image_io.h"

namespace skarnel::io {

struct ExifFacts {
    int orientation = 1;       // 1..8
    double dpiHorizontal = 0;  // 0 = not stated
    double dpiVertical = 0;
};

/// Reads a block (without "Exif\0\0"), puts its entries into the dictionary as "{TIFF}.Make",
/// "{Exif}.ExposureTime", "{GPS}.Latitude" and the block itself under kPropertyExifBlock. A block
/// that cannot be read adds nothing. Throws std::bad_alloc.
ExifFacts readExif(ByteView block, ImageProperties& properties);

}  // namespace skarnel::io
