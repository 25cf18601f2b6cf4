// OpenJPEG, loaded when the first JPEG 2000 picture is met.
#pragma once

#include <openjpeg.h>

#include "imaging/io/late_codec.h"

namespace skarnel::io {

LateLibraries& jp2Library();

#define SKARNEL_JP2(each)                                                                       \
    each(opj_create_compress) each(opj_create_decompress) each(opj_decode)                      \
        each(opj_decoder_set_strict_mode) each(opj_destroy_codec) each(opj_end_compress)        \
            each(opj_end_decompress) each(opj_image_destroy) each(opj_image_tile_create)        \
                each(opj_read_header) each(opj_set_default_decoder_parameters)                  \
                    each(opj_set_default_encoder_parameters) each(opj_set_error_handler)        \
                        each(opj_set_info_handler) each(opj_set_warning_handler)                \
                            each(opj_setup_decoder) each(opj_setup_encoder)                     \
                                each(opj_start_compress) each(opj_stream_default_create)        \
                                    each(opj_stream_destroy) each(opj_stream_set_read_function) \
                                        each(opj_stream_set_seek_function)                      \
                                            each(opj_stream_set_skip_function)                  \
                                                each(opj_stream_set_user_data)                  \
                                                    each(opj_stream_set_user_data_length)       \
                                                        each(opj_stream_set_write_function)     \
                                                            each(opj_write_tile)
SKARNEL_JP2(SKARNEL_LATE)

}  // namespace skarnel::io
