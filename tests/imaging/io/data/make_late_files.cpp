// make_late_files FOLDER: writes the small JPEG XL, HEIF and AVIF files of the tests with the
// encoders of libjxl and libheif. Every picture is 5 x 3 unless said otherwise, and its pixel
// (x, y) is red 40x + 10, green 70y + 20, blue 200, and alpha 255 - 50x where it has alpha.
#include <jxl/encode.h>
#include <libheif/heif.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;

std::string folder;

void check(bool right, const char* what) {
    if (right) return;
    std::fprintf(stderr, "%s failed\n", what);
    std::exit(1);
}

void save(const std::string& name, const Bytes& bytes) {
    std::ofstream file(folder + "/" + name, std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    check(file.good(), name.c_str());
}

/// The exif block of a camera "Cam" with 240 dots an inch and orientation 8, which the formats
/// must pass over: their own turn counts.
Bytes exifBlock() {
    Bytes b = {'M', 'M', 0, 42, 0, 0, 0, 8, 0, 5};
    auto put = [&](std::initializer_list<int> values) {
        for (const int value : values) b.push_back(static_cast<std::uint8_t>(value));
    };
    put({0x01, 0x0F, 0, 2, 0, 0, 0, 4, 'C', 'a', 'm', 0});
    put({0x01, 0x12, 0, 3, 0, 0, 0, 1, 0, 8, 0, 0});
    put({0x01, 0x1A, 0, 5, 0, 0, 0, 1, 0, 0, 0, 74});
    put({0x01, 0x1B, 0, 5, 0, 0, 0, 1, 0, 0, 0, 74});
    put({0x01, 0x28, 0, 3, 0, 0, 0, 1, 0, 2, 0, 0});
    put({0, 0, 0, 0, 0, 0, 0, 240, 0, 0, 0, 1});
    return b;
}

struct Jxl {
    std::uint32_t width = 5;
    std::uint32_t height = 3;
    bool gray = false;
    bool alpha = false;
    bool p3 = false;
    bool exif = false;
    bool lossy = false;
    int frames = 1;
    JxlOrientation orientation = JXL_ORIENT_IDENTITY;
};

Bytes pixelsOf(const Jxl& kind, int frame) {
    Bytes pixels;
    for (unsigned y = 0; y < kind.height; ++y) {
        for (unsigned x = 0; x < kind.width; ++x) {
            const unsigned a = kind.alpha ? 255 - 50 * x : 255;
            auto put = [&](unsigned value) {
                pixels.push_back(static_cast<std::uint8_t>(frame == 0 ? value : 255 - value));
            };
            put(40 * (x % 5) + 10);
            if (!kind.gray) {
                put(70 * (y % 3) + 20);
                put(200);
            }
            if (kind.alpha) pixels.push_back(static_cast<std::uint8_t>(a));
        }
    }
    return pixels;
}

void saveJxl(const std::string& name, const Jxl& kind) {
    JxlEncoder* encoder = JxlEncoderCreate(nullptr);
    if (kind.exif) check(JxlEncoderUseBoxes(encoder) == JXL_ENC_SUCCESS, "boxes");
    JxlBasicInfo info;
    JxlEncoderInitBasicInfo(&info);
    info.xsize = kind.width;
    info.ysize = kind.height;
    info.bits_per_sample = 8;
    info.num_color_channels = kind.gray ? 1 : 3;
    info.num_extra_channels = kind.alpha ? 1 : 0;
    info.alpha_bits = kind.alpha ? 8 : 0;
    info.uses_original_profile = kind.lossy ? 0 : 1;
    info.orientation = kind.orientation;
    info.have_animation = kind.frames > 1 ? 1 : 0;
    info.animation.tps_numerator = 10;
    info.animation.tps_denominator = 1;
    check(JxlEncoderSetBasicInfo(encoder, &info) == JXL_ENC_SUCCESS, "info");
    JxlColorEncoding color{};
    JxlColorEncodingSetToSRGB(&color, kind.gray ? 1 : 0);
    if (kind.p3) color.primaries = JXL_PRIMARIES_P3;
    check(JxlEncoderSetColorEncoding(encoder, &color) == JXL_ENC_SUCCESS, "colour");
    JxlEncoderFrameSettings* settings = JxlEncoderFrameSettingsCreate(encoder, nullptr);
    if (kind.lossy) {
        JxlEncoderSetFrameDistance(settings, 1.0F);
    } else {
        JxlEncoderSetFrameLossless(settings, 1);
    }
    if (kind.exif) {
        Bytes box(4, 0);
        const Bytes block = exifBlock();
        box.insert(box.end(), block.begin(), block.end());
        check(JxlEncoderAddBox(encoder, "Exif", box.data(), box.size(), 0) == JXL_ENC_SUCCESS,
              "exif");
        JxlEncoderCloseBoxes(encoder);
    }
    const JxlPixelFormat format{(kind.gray ? 1U : 3U) + (kind.alpha ? 1U : 0U), JXL_TYPE_UINT8,
                                JXL_NATIVE_ENDIAN, 0};
    for (int frame = 0; frame < kind.frames; ++frame) {
        if (kind.frames > 1) {
            JxlFrameHeader header;
            JxlEncoderInitFrameHeader(&header);
            header.duration = 1;
            check(JxlEncoderSetFrameHeader(settings, &header) == JXL_ENC_SUCCESS, "frame");
        }
        const Bytes pixels = pixelsOf(kind, frame);
        check(JxlEncoderAddImageFrame(settings, &format, pixels.data(), pixels.size()) ==
                  JXL_ENC_SUCCESS,
              "pixels");
    }
    JxlEncoderCloseInput(encoder);
    Bytes out(1U << 20U);
    std::uint8_t* next = out.data();
    std::size_t left = out.size();
    check(JxlEncoderProcessOutput(encoder, &next, &left) == JXL_ENC_SUCCESS, "output");
    out.resize(out.size() - left);
    JxlEncoderDestroy(encoder);
    save(name, out);
}

struct Heif {
    heif_compression_format format = heif_compression_AV1;
    int width = 5;
    int height = 3;
    bool lossless = true;
    bool alpha = false;
    bool p3 = false;
    bool exif = false;
    heif_orientation orientation = heif_orientation_normal;
};

heif_error collect(heif_context*, const void* data, std::size_t size, void* target) {
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    static_cast<Bytes*>(target)->assign(bytes, bytes + size);
    return {heif_error_Ok, heif_suberror_Unspecified, "Success"};
}

heif_image* makeImage(const Heif& kind) {
    heif_image* image = nullptr;
    heif_image_create(kind.width, kind.height, heif_colorspace_RGB,
                      kind.alpha ? heif_chroma_interleaved_RGBA : heif_chroma_interleaved_RGB,
                      &image);
    heif_image_add_plane(image, heif_channel_interleaved, kind.width, kind.height, 8);
    int stride = 0;
    std::uint8_t* plane = heif_image_get_plane(image, heif_channel_interleaved, &stride);
    Jxl same;
    same.width = static_cast<std::uint32_t>(kind.width);
    same.height = static_cast<std::uint32_t>(kind.height);
    same.alpha = kind.alpha;
    const Bytes pixels = pixelsOf(same, 0);
    const std::size_t rowBytes = pixels.size() / same.height;
    for (std::size_t y = 0; y < same.height; ++y) {
        std::memcpy(plane + y * static_cast<std::size_t>(stride), pixels.data() + y * rowBytes,
                    rowBytes);
    }
    return image;
}

void saveHeif(const std::string& name, const Heif& kind) {
    heif_context* context = heif_context_alloc();
    heif_encoder* encoder = nullptr;
    check(heif_context_get_encoder_for_format(context, kind.format, &encoder).code == 0, "encoder");
    heif_encoder_set_lossless(encoder, kind.lossless ? 1 : 0);
    if (!kind.lossless) heif_encoder_set_lossy_quality(encoder, 90);
    heif_encoder_set_parameter_string(encoder, "chroma", "444");
    heif_image* image = makeImage(kind);
    heif_encoding_options* options = heif_encoding_options_alloc();
    options->image_orientation = kind.orientation;
    options->macOS_compatibility_workaround_no_nclx_profile = 0;
    heif_color_profile_nclx* nclx = heif_nclx_color_profile_alloc();
    nclx->color_primaries =
        kind.p3 ? heif_color_primaries_SMPTE_EG_432_1 : heif_color_primaries_ITU_R_BT_709_5;
    nclx->transfer_characteristics = heif_transfer_characteristic_IEC_61966_2_1;
    nclx->matrix_coefficients =
        kind.lossless ? heif_matrix_coefficients_RGB_GBR : heif_matrix_coefficients_ITU_R_BT_601_6;
    nclx->full_range_flag = 1;
    options->output_nclx_profile = nclx;
    heif_image_set_nclx_color_profile(image, nclx);
    heif_image_handle* handle = nullptr;
    const heif_error error = heif_context_encode_image(context, image, encoder, options, &handle);
    check(error.code == heif_error_Ok, error.message);
    if (kind.exif) {
        const Bytes block = exifBlock();
        heif_context_add_exif_metadata(context, handle, block.data(),
                                       static_cast<int>(block.size()));
    }
    Bytes out;
    heif_writer writer{1, collect};
    check(heif_context_write(context, &writer, &out).code == heif_error_Ok, "write");
    heif_image_handle_release(handle);
    heif_nclx_color_profile_free(nclx);
    heif_encoding_options_free(options);
    heif_image_release(image);
    heif_encoder_release(encoder);
    heif_context_free(context);
    save(name, out);
}

void saveJxls() {
    Jxl kind;
    saveJxl("plain.jxl", kind);
    kind.alpha = true;
    saveJxl("alpha.jxl", kind);
    kind = {};
    kind.gray = true;
    saveJxl("gray.jxl", kind);
    kind = {};
    kind.p3 = true;
    saveJxl("p3.jxl", kind);
    kind = {};
    kind.exif = true;
    kind.orientation = JXL_ORIENT_ROTATE_90_CW;
    saveJxl("turned.jxl", kind);
    kind = {};
    kind.frames = 2;
    saveJxl("frames.jxl", kind);
    kind = {};
    kind.lossy = true;
    kind.width = 40;
    kind.height = 24;
    saveJxl("lossy.jxl", kind);
}

void saveHeifs() {
    Heif kind;
    saveHeif("plain.avif", kind);
    kind.alpha = true;
    saveHeif("alpha.avif", kind);
    kind = {};
    kind.p3 = true;
    saveHeif("p3.avif", kind);
    kind = {};
    kind.exif = true;
    kind.orientation = heif_orientation_rotate_90_cw;
    saveHeif("turned.avif", kind);
    kind = {};
    kind.format = heif_compression_HEVC;
    kind.lossless = false;
    kind.width = 80;
    kind.height = 64;
    saveHeif("lossy.heic", kind);
    kind.alpha = true;
    saveHeif("alpha.heic", kind);
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 2) return 2;
    folder = arguments[1];
    saveJxls();
    saveHeifs();
    return 0;
}
