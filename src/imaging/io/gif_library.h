// giflib, loaded when the first GIF is met.
#pragma once

#include <gif_lib.h>

#include "imaging/io/late_codec.h"

namespace skarnel::io {

LateLibraries& gifLibrary();

#define SKARNEL_GIF(each)                                                             \
    each(DGifOpen) each(DGifCloseFile) each(DGifGetRecordType) each(DGifGetImageDesc) \
        each(DGifGetExtension) each(DGifExtensionToGCB) each(DGifGetExtensionNext)    \
            each(DGifGetLine)
SKARNEL_GIF(SKARNEL_LATE)

}  // namespace skarnel::io
