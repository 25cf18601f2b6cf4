// The codecs' libraries by their sonames, each bound when it is first needed.
#include "imaging/io/color_library.h"
#include "imaging/io/exif_library.h"
#include "imaging/io/jp2_library.h"
#include "imaging/io/jpeg_library.h"
#include "imaging/io/late_codec.h"
#include "imaging/io/png_library.h"
#include "imaging/io/tiff_library.h"
#include "imaging/io/webp_library.h"
#include "imaging/io/zlib_library.h"
#ifdef SKARNEL_HAVE_GIF
#include "imaging/io/gif_library.h"
#endif

namespace skarnel::io {

#define SKARNEL_LIBRARY(name, functions, soname)                                       \
    LateLibraries& name() {                                                            \
        static LateLibraries late({soname}, [](std::vector<CodecLibrary>& libraries) { \
            CodecLibrary& library = libraries[0];                                      \
            functions(SKARNEL_BIND)                                                    \
        });                                                                            \
        return late;                                                                   \
    }
SKARNEL_LIBRARY(tiffLibrary, SKARNEL_TIFF, SKARNEL_TIFF_SONAME)
SKARNEL_LIBRARY(jp2Library, SKARNEL_JP2, SKARNEL_OPENJPEG_SONAME)
SKARNEL_LIBRARY(exifLibrary, SKARNEL_EXIF, SKARNEL_EXIF_SONAME)
SKARNEL_LIBRARY(colorLibrary, SKARNEL_COLOR, SKARNEL_LCMS_SONAME)
SKARNEL_LIBRARY(pngLibrary, SKARNEL_PNG, SKARNEL_PNG_SONAME)
SKARNEL_LIBRARY(jpegLibrary, SKARNEL_JPEG, SKARNEL_JPEG_SONAME)
SKARNEL_LIBRARY(zlibLibrary, SKARNEL_ZLIB, SKARNEL_ZLIB_SONAME)
#ifdef SKARNEL_HAVE_GIF
SKARNEL_LIBRARY(gifLibrary, SKARNEL_GIF, SKARNEL_GIF_SONAME)
#endif

#ifdef SKARNEL_HAVE_JXL
const char* jpegXLSoname() {
    return SKARNEL_JXL_SONAME;
}
#endif
#ifdef SKARNEL_HAVE_HEIF
const char* heifSoname() {
    return SKARNEL_HEIF_SONAME;
}
#endif

LateLibraries& webpLibrary() {
    static LateLibraries late(
        {SKARNEL_WEBP_SONAME, SKARNEL_WEBPDEMUX_SONAME, SKARNEL_WEBPMUX_SONAME},
        [](std::vector<CodecLibrary>& libraries) {
            const auto bindPicture = [](CodecLibrary& library) { SKARNEL_WEBP(SKARNEL_BIND) };
            const auto bindDemux = [](CodecLibrary& library) { SKARNEL_WEBP_DEMUX(SKARNEL_BIND) };
            const auto bindMux = [](CodecLibrary& library) { SKARNEL_WEBP_MUX(SKARNEL_BIND) };
            bindPicture(libraries[0]);
            bindDemux(libraries[1]);
            bindMux(libraries[2]);
        });
    return late;
}

}  // namespace skarnel::io
