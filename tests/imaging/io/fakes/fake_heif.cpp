// Stands in for libheif: a picture of 2 x 1 pixels whose facts and failures a test tells.
#include <libheif/heif.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "imaging/io/fakes/told.h"

using skarnel::testing::isTold;
using skarnel::testing::toldNumber;

struct heif_context {};
struct heif_image_handle {};
struct heif_image {
    // Red, green, blue, alpha; two pixels.
    std::array<std::uint8_t, 8> pixels = {10, 20, 30, 40, 1, 2, 3, 255};
};

namespace {

/// The error whose code is told behind "word=", none without it.
heif_error errorTold(const char* word) {
    const auto code = static_cast<heif_error_code>(toldNumber(word, heif_error_Ok));
    return {code, heif_suberror_Unspecified, ""};
}

/// A block that turns by nothing: an offset of four bytes, then the maker "Cam".
constexpr std::array<std::uint8_t, 30> kBlock = {0, 0, 0,   0,   'M',  'M',  0, 42, 0, 0,
                                                 0, 8, 0,   1,   0x01, 0x0F, 0, 2,  0, 0,
                                                 0, 4, 'C', 'a', 'm',  0,    0, 0,  0, 0};

}  // namespace

extern "C" {

heif_context* heif_context_alloc(void) {
    return isTold("no-context") ? nullptr : new heif_context;
}
void heif_context_free(heif_context* context) {
    delete context;
}
void heif_context_set_max_decoding_threads(heif_context*, int) {}
heif_error heif_context_read_from_memory_without_copy(heif_context*, const void*, size_t,
                                                      const heif_reading_options*) {
    return errorTold("read");
}
heif_error heif_context_get_primary_image_handle(heif_context*, heif_image_handle** handle) {
    const heif_error error = errorTold("primary");
    *handle = error.code == heif_error_Ok ? new heif_image_handle : nullptr;
    return error;
}
heif_error heif_context_get_primary_image_ID(heif_context*, heif_item_id* item) {
    *item = 1;
    return errorTold("item");
}
void heif_image_handle_release(const heif_image_handle* handle) {
    delete handle;
}
int heif_image_handle_get_width(const heif_image_handle*) {
    return static_cast<int>(toldNumber("width", 2));
}
int heif_image_handle_get_height(const heif_image_handle*) {
    return 1;
}
int heif_image_handle_get_ispe_width(const heif_image_handle*) {
    return static_cast<int>(toldNumber("stated", 0));
}
int heif_image_handle_get_ispe_height(const heif_image_handle*) {
    return 1;
}
void heif_context_set_maximum_image_size_limit(heif_context*, int) {}
int heif_image_handle_has_alpha_channel(const heif_image_handle*) {
    return isTold("alpha");
}
int heif_image_handle_is_premultiplied_alpha(const heif_image_handle*) {
    return isTold("premultiplied");
}
int heif_image_handle_get_luma_bits_per_pixel(const heif_image_handle*) {
    return static_cast<int>(toldNumber("depth", 8));
}
size_t heif_image_handle_get_raw_color_profile_size(const heif_image_handle*) {
    return static_cast<size_t>(toldNumber("profile", 0));
}
heif_error heif_image_handle_get_raw_color_profile(const heif_image_handle*, void* profile) {
    std::memset(profile, 'p', heif_image_handle_get_raw_color_profile_size(nullptr));
    return errorTold("profile-fails");
}
/// The primaries of sRGB, with red and green exchanged where the picture has others than usual.
heif_error heif_image_handle_get_nclx_color_profile(const heif_image_handle*,
                                                    heif_color_profile_nclx** nclx) {
    *nclx = nullptr;
    if (isTold("nclx-fails")) return errorTold("nclx-fails");
    if (isTold("no-nclx")) return errorTold("nclx-fails");
    auto* made = new heif_color_profile_nclx{};
    made->color_primaries = static_cast<heif_color_primaries>(toldNumber("primaries", 1));
    made->transfer_characteristics =
        static_cast<heif_transfer_characteristics>(toldNumber("curve", 13));
    made->color_primary_white_x = 0.3127F;
    made->color_primary_white_y = 0.3290F;
    made->color_primary_red_x = 0.30F;
    made->color_primary_red_y = 0.60F;
    made->color_primary_green_x = 0.64F;
    made->color_primary_green_y = 0.33F;
    made->color_primary_blue_x = 0.15F;
    made->color_primary_blue_y = 0.06F;
    *nclx = made;
    return errorTold("nclx-fails");
}
void heif_nclx_color_profile_free(heif_color_profile_nclx* nclx) {
    delete nclx;
}
int heif_image_handle_get_list_of_metadata_block_IDs(const heif_image_handle*, const char*,
                                                     heif_item_id* ids, int) {
    *ids = 1;
    return isTold("no-block") ? 0 : 1;
}
size_t heif_image_handle_get_metadata_size(const heif_image_handle*, heif_item_id) {
    return static_cast<size_t>(toldNumber("block", kBlock.size()));
}
heif_error heif_image_handle_get_metadata(const heif_image_handle*, heif_item_id, void* out) {
    const size_t size = std::min(heif_image_handle_get_metadata_size(nullptr, 1), kBlock.size());
    std::memcpy(out, kBlock.data(), size);
    if (isTold("far-block")) static_cast<std::uint8_t*>(out)[0] = 0xFF;
    return errorTold("block-fails");
}
heif_decoding_options* heif_decoding_options_alloc(void) {
    return isTold("no-options") ? nullptr : new heif_decoding_options{};
}
void heif_decoding_options_free(heif_decoding_options* options) {
    delete options;
}
heif_error heif_decode_image(const heif_image_handle*, heif_image** image, heif_colorspace,
                             heif_chroma, const heif_decoding_options*) {
    const heif_error error = errorTold("decode");
    *image = error.code == heif_error_Ok ? new heif_image : nullptr;
    return error;
}
void heif_image_release(const heif_image* image) {
    delete image;
}
int heif_image_get_width(const heif_image*, heif_channel) {
    return static_cast<int>(toldNumber("coded-width", 2));
}
int heif_image_get_height(const heif_image*, heif_channel) {
    return static_cast<int>(toldNumber("coded-height", 1));
}
const uint8_t* heif_image_get_plane_readonly(const heif_image* image, heif_channel, int* stride) {
    *stride = static_cast<int>(toldNumber("stride", 8));
    return isTold("no-plane") ? nullptr : image->pixels.data();
}
}
