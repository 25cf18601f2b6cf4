// libjpeg, loaded when the first JPEG is met.
#pragma once

#include <cstddef>
#include <cstdio>

// jpeglib.h needs size_t and FILE before it, and jerror.h the library's version from it.
#include <jpeglib.h>

#include <jerror.h>

#include "imaging/io/late_codec.h"

namespace skarnel::io {

LateLibraries& jpegLibrary();

#define SKARNEL_JPEG(each)                                                                     \
    each(jpeg_std_error) each(jpeg_CreateDecompress) each(jpeg_CreateCompress)                 \
        each(jpeg_destroy_decompress) each(jpeg_destroy_compress) each(jpeg_resync_to_restart) \
            each(jpeg_save_markers) each(jpeg_read_header) each(jpeg_start_decompress)         \
                each(jpeg_read_scanlines) each(jpeg_finish_decompress) each(jpeg_mem_dest)     \
                    each(jpeg_set_defaults) each(jpeg_set_quality) each(jpeg_start_compress)   \
                        each(jpeg_write_marker) each(jpeg_write_scanlines)                     \
                            each(jpeg_finish_compress) each(jpeg_has_multiple_scans)
SKARNEL_JPEG(SKARNEL_LATE)

}  // namespace skarnel::io
