// libexif, loaded when the first camera's facts are met.
#pragma once

#include <libexif/exif-data.h>

#include "imaging/io/late_codec.h"

namespace skarnel::io {

LateLibraries& exifLibrary();

#define SKARNEL_EXIF(each)                                                                    \
    each(exif_data_new_mem) each(exif_data_unref) each(exif_mem_new) each(exif_mem_unref)     \
        each(exif_data_unset_option) each(exif_data_load_data) each(exif_data_get_byte_order) \
            each(exif_get_short) each(exif_get_long) each(exif_get_rational)                  \
                each(exif_get_srational) each(exif_content_get_entry)                         \
                    each(exif_content_foreach_entry) each(exif_entry_get_value)               \
                        each(exif_tag_get_name_in_ifd) each(exif_format_get_size)
SKARNEL_EXIF(SKARNEL_LATE)

}  // namespace skarnel::io
