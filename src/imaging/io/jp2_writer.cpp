// JPEG 2000: reversible at quality 1, otherwise by a target for each picture's noise.
#include <openjpeg.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>

#include "imaging/io/jp2_common.h"
#include "imaging/io/pixel_rows.h"
#include "imaging/io/writers.h"

namespace skarnel::io {
namespace {

struct MemoryFile {
    Bytes bytes;
    std::size_t at = 0;
};

OPJ_SIZE_T writeMemory(void* source, OPJ_SIZE_T count, void* handle) try {
    auto& file = *static_cast<MemoryFile*>(handle);
    if (file.at + count > file.bytes.size()) file.bytes.resize(file.at + count);
    std::memcpy(file.bytes.data() + file.at, source, count);
    file.at += count;
    return count;
} catch (const std::bad_alloc&) {
    return static_cast<OPJ_SIZE_T>(-1);
}

OPJ_OFF_T skipMemory(OPJ_OFF_T count, void* handle) try {
    auto& file = *static_cast<MemoryFile*>(handle);
    if (count < 0) return -1;
    file.at += static_cast<std::size_t>(count);
    if (file.at > file.bytes.size()) file.bytes.resize(file.at);
    return count;
} catch (const std::bad_alloc&) {
    return -1;
}

OPJ_BOOL seekMemory(OPJ_OFF_T position, void* handle) {
    if (position < 0) return OPJ_FALSE;
    static_cast<MemoryFile*>(handle)->at = static_cast<std::size_t>(position);
    return OPJ_TRUE;
}

JpStream openMemory(MemoryFile& file) {
    JpStream stream(opj_stream_default_create(OPJ_FALSE));
    if (!stream) return stream;
    opj_stream_set_user_data(stream.get(), &file, nullptr);
    opj_stream_set_write_function(stream.get(), writeMemory);
    opj_stream_set_skip_function(stream.get(), skipMemory);
    opj_stream_set_seek_function(stream.get(), seekMemory);
    return stream;
}

JpImage makePlanes(const CGImage& image, bool opaque) {
    const PixelView view = image.pixels();
    const OPJ_UINT32 count = opaque ? 3 : 4;
    opj_image_cmptparm_t parameters[4] = {};
    for (OPJ_UINT32 i = 0; i < count; ++i) {
        parameters[i].dx = parameters[i].dy = 1;
        parameters[i].w = static_cast<OPJ_UINT32>(view.width);
        parameters[i].h = static_cast<OPJ_UINT32>(view.height);
        parameters[i].prec = 8;
    }
    JpImage planes(opj_image_create(count, parameters, OPJ_CLRSPC_SRGB));
    if (!planes) return planes;
    planes->x1 = static_cast<OPJ_UINT32>(view.width);
    planes->y1 = static_cast<OPJ_UINT32>(view.height);
    if (!opaque) planes->comps[3].alpha = 1;
    Bytes straight(static_cast<std::size_t>(view.width) * 4);
    const auto samples = static_cast<std::size_t>(view.samplesPerPixel);
    std::size_t at = 0;
    for (int y = 0; y < view.height; ++y) {
        const std::uint8_t* row = view.row(y);
        if (!opaque) {
            unpremultiplyRow(row, straight.data(), static_cast<std::size_t>(view.width));
            row = straight.data();
        }
        for (int x = 0; x < view.width; ++x, row += samples, ++at) {
            for (OPJ_UINT32 i = 0; i < count; ++i) planes->comps[i].data[at] = row[i];
        }
    }
    return planes;
}

/// Small pictures cannot be halved as often as the default asks.
int resolutionLevels(const CGImage& image) {
    int levels = 1;
    for (int side = std::min(image.width(), image.height()); side > 1 && levels < 6; side /= 2) {
        ++levels;
    }
    return levels;
}

opj_cparameters_t makeParameters(const CGImage& image, double quality) {
    opj_cparameters_t parameters;
    opj_set_default_encoder_parameters(&parameters);
    parameters.tcp_numlayers = 1;
    parameters.numresolution = resolutionLevels(image);
    parameters.tcp_mct = 1;
    if (quality >= 1) {
        parameters.cp_disto_alloc = 1;
        parameters.tcp_rates[0] = 0;  // reversible
    } else {
        parameters.irreversible = 1;
        parameters.cp_fixed_quality = 1;
        // 26 to 50 decibels: from visibly coarse to no visible difference.
        parameters.tcp_distoratio[0] = static_cast<float>(26 + 24 * quality);
    }
    return parameters;
}

}  // namespace

Result<Bytes> writeJpeg2000(const CGImage& image, const ImageProperties& properties) {
    const JpImage planes = makePlanes(image, isOpaque(image.pixels()));
    MemoryFile file;
    JpMessages messages;
    const JpCodec codec(opj_create_compress(OPJ_CODEC_JP2));
    JpStream stream = openMemory(file);
    if (!planes || !codec || !stream) throw std::bad_alloc();
    messages.listenTo(codec.get());
    opj_cparameters_t parameters =
        makeParameters(image, std::clamp(qualityOf(properties, 1.0), 0.0, 1.0));
    if (opj_setup_encoder(codec.get(), &parameters, planes.get()) == OPJ_FALSE ||
        opj_start_compress(codec.get(), planes.get(), stream.get()) == OPJ_FALSE ||
        opj_encode(codec.get(), stream.get()) == OPJ_FALSE ||
        opj_end_compress(codec.get(), stream.get()) == OPJ_FALSE) {
        Error error = messages.error();
        error.code = ErrorCode::Failed;
        return error;
    }
    if (const auto resolution = resolutionOf(properties)) {
        return withJp2Resolution(std::move(file.bytes), *resolution);
    }
    return std::move(file.bytes);
}

}  // namespace skarnel::io
