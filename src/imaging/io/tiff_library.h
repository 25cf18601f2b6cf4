// libtiff, loaded when the first TIFF is met: it brings seven libraries of its own.
#pragma once

#include <tiffio.h>

#include "imaging/io/late_codec.h"

namespace skarnel::io {

LateLibraries& tiffLibrary();

#define SKARNEL_TIFF(each)                                                                        \
    each(TIFFClose) each(TIFFOpenOptionsAlloc) each(TIFFOpenOptionsFree)                          \
        each(TIFFOpenOptionsSetMaxSingleMemAlloc) each(TIFFOpenOptionsSetErrorHandlerExtR)        \
            each(TIFFOpenOptionsSetWarningHandlerExtR) each(TIFFClientOpenExt) each(TIFFGetField) \
                each(TIFFGetFieldDefaulted) each(TIFFSetField) each(TIFFIsTiled)                  \
                    each(TIFFScanlineSize) each(TIFFComputeStrip) each(TIFFReadEncodedStrip)      \
                        each(TIFFReadScanline) each(TIFFTileRowSize) each(TIFFComputeTile)        \
                            each(TIFFReadEncodedTile) each(TIFFReadRGBAImageOriented)             \
                                each(TIFFWriteRawStrip) each(TIFFWriteEncodedStrip)               \
                                    each(TIFFWriteDirectory)
SKARNEL_TIFF(SKARNEL_LATE)

}  // namespace skarnel::io
