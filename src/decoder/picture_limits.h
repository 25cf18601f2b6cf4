// How much memory and processor time decoding a picture may take.
#pragma once

#include <cstdint>
#include <optional>

#include "decoder/cell.h"
#include "imaging/io/image_io.h"
#include "imaging/io/picture_head.h"

namespace skarnel {

/// For formats whose readers bound themselves: a second wall, several times what an honest picture
/// takes. `stated` is the size in the file's head, none where that cannot be found. A small picture
/// in a file of 100 kB has less than two seconds and 300 MB.
CellLimits limitsForPictures(const DecodeLimits& limits, std::optional<HeadSize> stated,
                             std::uint64_t fileBytes);

/// For HEIF and AVIF, where the files' parts may state other sizes than the picture, or be made of
/// each other without end, and only their library knows: not much more than an honest picture
/// takes. `stated` is what the file says of its picture; `processors` is how many threads a codec
/// may start, at least 1.
CellLimits limitsForItems(const DecodeLimits& limits, std::optional<HeadSize> stated,
                          std::uint64_t fileBytes, unsigned processors);

/// For JPEG XL, whose files may hide layers, patches and curves of any size and number that only
/// their library finds, and JPEG 2000, of which a few bytes may state 65,535 tiles or blocks of 16
/// pixels, with a kilobyte or more for each: by the stated size, and one thread. A picture of at
/// most io::kMaxDearUnprovenPixels in a file of 20 kB has less than two seconds.
CellLimits limitsByStatedSize(const DecodeLimits& limits, std::optional<HeadSize> stated,
                              std::uint64_t fileBytes);

}  // namespace skarnel
