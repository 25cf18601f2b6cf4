// What an encoder gave is looked at once more before it takes the place of anything.
#pragma once

#include <string_view>

#include "imaging/io/image_io.h"
#include "imaging/io/picture_head.h"
#include "util/log/result.h"

namespace skarnel {

/// The encoded file when it is of the type that was asked for, its head states the picture's size,
/// and nothing of it is missing as far as its own structure tells; otherwise Failed. An error stays
/// the error that it is. Takes microseconds and no memory, whatever the size:
///
///     PNG        its chunks follow one another up to IEND, and nothing comes after
///     JPEG       ends with the marker EOI
///     JPEG 2000  ends with the marker EOC
///     WebP       has the length that it states, and its chunks follow one another to that end
///     BMP        has the length that it states
///     TIFF       the first directory, all that it refers to and every strip lie within
///
/// What is coded is not looked at: neither check sums nor pixels, and nothing between the first
/// and the last marker of a JPEG or JPEG 2000.
Result<Bytes> checkedFile(Result<Bytes> encoded, std::string_view type, HeadSize size);

/// The same for a file that was made from another by adding to it: it has to have kept the other's
/// type and size.
Result<Bytes> checkedAddition(Result<Bytes> made, ByteView from);

}  // namespace skarnel
