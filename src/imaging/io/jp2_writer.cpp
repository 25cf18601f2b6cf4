// JPEG 2000: reversible at quality 1, otherwise by a target for each picture's noise.
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

/// How a picture is cut: into equal tiles, so that none is thin, of at most kMostTileSide pixels a
/// side, so that the library's wide samples exist for one tile alone.
struct Tiling {
    static constexpr int kMostTileSide = 1024;

    explicit Tiling(const PictureRows::Shape& shape)
        : width(sideFor(shape.width)),
          height(sideFor(shape.height)),
          columns((shape.width + width - 1) / width),
          rows((shape.height + height - 1) / height) {}

    static int sideFor(int side) {
        const int count = (side + kMostTileSide - 1) / kMostTileSide;
        return (side + count - 1) / count;
    }
    bool isWhole() const { return columns == 1 && rows == 1; }

    int width;
    int height;
    int columns;
    int rows;
};

/// What the picture is made of, without samples.
JpImage describeComponents(const PictureRows::Shape& shape) {
    const OPJ_UINT32 count = shape.opaque ? 3 : 4;
    opj_image_cmptparm_t parameters[4] = {};
    for (OPJ_UINT32 i = 0; i < count; ++i) {
        parameters[i].dx = parameters[i].dy = 1;
        parameters[i].w = static_cast<OPJ_UINT32>(shape.width);
        parameters[i].h = static_cast<OPJ_UINT32>(shape.height);
        parameters[i].prec = 8;
    }
    JpImage components(opj_image_tile_create(count, parameters, OPJ_CLRSPC_SRGB));
    if (!components) return components;
    components->x1 = static_cast<OPJ_UINT32>(shape.width);
    components->y1 = static_cast<OPJ_UINT32>(shape.height);
    if (!shape.opaque) components->comps[3].alpha = 1;
    return components;
}

/// The rows that a row of tiles has, packed.
struct Band {
    const PictureRows::Shape& shape;
    int height = 0;
    Bytes bytes;

    std::size_t rowBytes() const {
        return static_cast<std::size_t>(shape.width) * static_cast<std::size_t>(shape.samples);
    }
    /// Takes the next `count` rows; false when they cannot be had.
    bool take(PictureRows& rows, int count) {
        height = count;
        bytes.resize(rowBytes() * static_cast<std::size_t>(count));
        for (std::size_t at = 0; at < bytes.size(); at += rowBytes()) {
            const std::uint8_t* row = rows.next();
            if (row == nullptr) return false;
            std::memcpy(bytes.data() + at, row, rowBytes());
        }
        return true;
    }
};

/// The samples of a tile, one component after the other. `straight` has room for a row of it.
void takeTile(const Band& band, const Tiling& tiling, int column, Bytes& straight, Bytes& samples) {
    const int left = column * tiling.width;
    const auto width = static_cast<std::size_t>(std::min(tiling.width, band.shape.width - left));
    const auto height = static_cast<std::size_t>(band.height);
    const bool opaque = band.shape.opaque;
    const std::size_t planes = opaque ? 3 : 4;
    const auto step = static_cast<std::size_t>(band.shape.samples);
    samples.resize(planes * width * height);
    for (std::size_t y = 0; y < height; ++y) {
        const std::uint8_t* pixel =
            band.bytes.data() + y * band.rowBytes() + step * static_cast<std::size_t>(left);
        if (!opaque) {
            unpremultiplyRow(pixel, straight.data(), width);
            pixel = straight.data();
        }
        for (std::size_t i = 0; i < planes; ++i) {
            std::uint8_t* out = samples.data() + (i * height + y) * width;
            for (std::size_t x = 0; x < width; ++x) out[x] = pixel[step * x + i];
        }
    }
}

bool writeTiles(opj_codec_t* codec, opj_stream_t* stream, PictureRows& rows, const Tiling& tiling) {
    Bytes straight(static_cast<std::size_t>(tiling.width) * 4);
    Bytes samples;
    Band band{rows.shape(), 0, {}};
    for (int row = 0; row < tiling.rows; ++row) {
        const int left = band.shape.height - row * tiling.height;
        if (!band.take(rows, std::min(tiling.height, left))) return false;
        for (int column = 0; column < tiling.columns; ++column) {
            takeTile(band, tiling, column, straight, samples);
            if (opj_write_tile(codec, static_cast<OPJ_UINT32>(row * tiling.columns + column),
                               samples.data(), static_cast<OPJ_UINT32>(samples.size()),
                               stream) == OPJ_FALSE) {
                return false;
            }
        }
    }
    return true;
}

/// Small pictures cannot be halved as often as the default asks.
int resolutionLevels(const Tiling& tiling) {
    int levels = 1;
    for (int side = std::min(tiling.width, tiling.height); side > 1 && levels < 6; side /= 2) {
        ++levels;
    }
    return levels;
}

opj_cparameters_t makeParameters(const Tiling& tiling, double quality) {
    opj_cparameters_t parameters;
    opj_set_default_encoder_parameters(&parameters);
    parameters.tcp_numlayers = 1;
    parameters.numresolution = resolutionLevels(tiling);
    parameters.tcp_mct = 1;
    if (!tiling.isWhole()) {
        parameters.tile_size_on = OPJ_TRUE;
        parameters.cp_tdx = tiling.width;
        parameters.cp_tdy = tiling.height;
    }
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

Result<Bytes> writeJpeg2000(PictureRows& rows, const ImageProperties& properties) {
    if (auto library = jp2Library().need(); !library) return library.error();
    const Tiling tiling(rows.shape());
    const JpImage components = describeComponents(rows.shape());
    MemoryFile file;
    // Grown step by step, the file would be held twice; pages that are not touched cost nothing.
    file.bytes.reserve(static_cast<std::size_t>(rows.shape().width) *
                       static_cast<std::size_t>(rows.shape().height) *
                       static_cast<std::size_t>(rows.shape().samples));
    JpMessages messages;
    const JpCodec codec(opj_create_compress(OPJ_CODEC_JP2));
    JpStream stream = openMemory(file);
    if (!components || !codec || !stream) throw std::bad_alloc();
    messages.listenTo(codec.get());
    opj_cparameters_t parameters =
        makeParameters(tiling, std::clamp(qualityOf(properties, 1.0), 0.0, 1.0));
    if (opj_setup_encoder(codec.get(), &parameters, components.get()) == OPJ_FALSE ||
        opj_start_compress(codec.get(), components.get(), stream.get()) == OPJ_FALSE ||
        !writeTiles(codec.get(), stream.get(), rows, tiling) ||
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
