// JPEG 2000 files of any components: the code stream by the reference library, the boxes by hand.
#pragma once

#include <openjpeg.h>

#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "imaging/io/file_builders.h"

namespace skarnel::testing {

/// The samples of one component, `(width + dx - 1) / dx` in a row.
struct JpComponent {
    std::vector<int> samples;
    unsigned bits = 8;
    bool isSigned = false;
    unsigned dx = 1;
    unsigned dy = 1;
};

namespace jp2 {

inline OPJ_SIZE_T append(void* source, OPJ_SIZE_T count, void* out) {
    const auto* bytes = static_cast<const std::uint8_t*>(source);
    static_cast<Bytes*>(out)->insert(static_cast<Bytes*>(out)->end(), bytes, bytes + count);
    return count;
}

}  // namespace jp2

/// Reversibly coded, in one tile whose corner is (left, top) of the reference grid.
inline Bytes codeStreamOf(unsigned width, unsigned height,
                          const std::vector<JpComponent>& components, unsigned left = 0,
                          unsigned top = 0) {
    std::vector<opj_image_cmptparm_t> parameters(components.size());
    for (std::size_t i = 0; i < components.size(); ++i) {
        parameters[i] = {};
        parameters[i].dx = components[i].dx;
        parameters[i].dy = components[i].dy;
        parameters[i].w = (width + components[i].dx - 1) / components[i].dx;
        parameters[i].h = (height + components[i].dy - 1) / components[i].dy;
        parameters[i].x0 = left;
        parameters[i].y0 = top;
        parameters[i].prec = components[i].bits;
        parameters[i].sgnd = components[i].isSigned ? 1 : 0;
    }
    opj_image_t* image = opj_image_create(static_cast<OPJ_UINT32>(components.size()),
                                          parameters.data(), OPJ_CLRSPC_UNSPECIFIED);
    image->x0 = left;
    image->y0 = top;
    image->x1 = left + width;
    image->y1 = top + height;
    for (std::size_t i = 0; i < components.size(); ++i) {
        std::copy(components[i].samples.begin(), components[i].samples.end(), image->comps[i].data);
    }
    opj_cparameters_t coding;
    opj_set_default_encoder_parameters(&coding);
    coding.tcp_numlayers = 1;
    coding.tcp_rates[0] = 0;
    coding.cp_disto_alloc = 1;
    coding.numresolution = 1;
    Bytes out;
    opj_codec_t* codec = opj_create_compress(OPJ_CODEC_J2K);
    opj_stream_t* stream = opj_stream_default_create(OPJ_FALSE);
    opj_stream_set_user_data(stream, &out, nullptr);
    opj_stream_set_write_function(stream, jp2::append);
    const bool coded = opj_setup_encoder(codec, &coding, image) != OPJ_FALSE &&
                       opj_start_compress(codec, image, stream) != OPJ_FALSE &&
                       opj_encode(codec, stream) != OPJ_FALSE &&
                       opj_end_compress(codec, stream) != OPJ_FALSE;
    opj_stream_destroy(stream);
    opj_destroy_codec(codec);
    opj_image_destroy(image);
    return coded ? out : Bytes();
}

inline Bytes jp2Box(std::string_view type, const Bytes& contents) {
    return ByteSink(true).u32(8 + contents.size()).text(type).raw(contents).bytes;
}

/// A file around a code stream, with the colours' number of ISO 15444-1 (16 sRGB, 17 grey, 18 sYCC,
/// 12 inks) and whatever further boxes its header has.
inline Bytes jp2FileOf(unsigned width, unsigned height, unsigned components, unsigned colors,
                       const Bytes& codeStream, const std::vector<Bytes>& headerBoxes = {},
                       const std::vector<Bytes>& fileBoxes = {}) {
    ByteSink header(true);
    header.raw(jp2Box("ihdr", ByteSink(true)
                                  .u32(height)
                                  .u32(width)
                                  .u16(components)
                                  .u8(255)  // the depths stand in the code stream
                                  .u8(7)
                                  .u8(0)
                                  .u8(0)
                                  .bytes));
    header.raw(jp2Box("bpcc", Bytes(components, 7)));
    if (colors != 0) {
        header.raw(jp2Box("colr", ByteSink(true).u8(1).u8(0).u8(0).u32(colors).bytes));
    }
    for (const Bytes& box : headerBoxes) header.raw(box);
    ByteSink file(true);
    file.raw(jp2Box("jP  ", {0x0D, 0x0A, 0x87, 0x0A}));
    file.raw(jp2Box("ftyp", ByteSink(true).text("jp2 ").u32(0).text("jp2 ").bytes));
    file.raw(jp2Box("jp2h", header.bytes));
    for (const Bytes& box : fileBoxes) file.raw(box);
    file.raw(jp2Box("jp2c", codeStream));
    return file.bytes;
}

/// Says what a component is: type 0 a colour, 1 alpha, 2 alpha that is multiplied in already.
inline Bytes channelDefinitions(const std::vector<unsigned>& types) {
    ByteSink box(true);
    box.u16(types.size());
    for (std::size_t i = 0; i < types.size(); ++i) {
        box.u16(i).u16(types[i]).u16(types[i] == 0 ? i + 1 : 0);
    }
    return jp2Box("cdef", box.bytes);
}

}  // namespace skarnel::testing
