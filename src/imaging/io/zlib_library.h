// zlib's unpacking, loaded when the first Photoshop picture is met.
#pragma once

#include <zlib.h>

#include "imaging/io/late_codec.h"

namespace skarnel::io {

LateLibraries& zlibLibrary();

#define SKARNEL_ZLIB(each) each(inflateInit_) each(inflate) each(inflateEnd)
SKARNEL_ZLIB(SKARNEL_LATE)

}  // namespace skarnel::io
