// The alpha of a lossy WebP, which lies in a chunk of its own.
#pragma once

#include <cstddef>

#include "imaging/io/image_io.h"

namespace skarnel::io {

/// Appends what the chunk ALPH holds (RFC 9649, 2.7.1.2): the alpha of all pixels, row by row and
/// exact, as the greens of a lossless stream of copies from the left and from above. `plane` has a
/// whole number of rows of `width` bytes. Throws std::bad_alloc.
void appendWebPAlpha(Bytes& out, ByteView plane, std::size_t width);

}  // namespace skarnel::io
