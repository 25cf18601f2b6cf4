// libpng, loaded when the first PNG is read; PNG is written without it.
#pragma once

#include <png.h>

#include "imaging/io/late_codec.h"

namespace skarnel::io {

LateLibraries& pngLibrary();

#define SKARNEL_PNG(each)                                                                          \
    each(png_create_info_struct) each(png_create_read_struct_2) each(png_destroy_read_struct)      \
        each(png_error) each(png_get_bit_depth) each(png_get_color_type) each(png_get_eXIf_1)      \
            each(png_get_error_ptr) each(png_get_iCCP) each(png_get_image_height)                  \
                each(png_get_image_width) each(png_get_interlace_type) each(png_get_io_ptr)        \
                    each(png_get_mem_ptr) each(png_get_pHYs) each(png_get_rowbytes)                \
                        each(png_get_valid) each(png_longjmp) each(png_read_end)                   \
                            each(png_read_info) each(png_read_rows) each(png_read_update_info)     \
                                each(png_set_add_alpha) each(png_set_chunk_cache_max)              \
                                    each(png_set_chunk_malloc_max) each(png_set_expand)            \
                                        each(png_set_gray_to_rgb) each(png_set_interlace_handling) \
                                            each(png_set_longjmp_fn) each(png_set_read_fn)         \
                                                each(png_set_scale_16) each(png_set_user_limits)
SKARNEL_PNG(SKARNEL_LATE)

}  // namespace skarnel::io
