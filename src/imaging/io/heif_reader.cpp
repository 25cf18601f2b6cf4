// HEIF and AVIF through libheif: the primary picture, turned and cut as the file asks for.
#include <libheif/heif.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <optional>
#include <string>

#include "imaging/io/color_profile.h"
#include "imaging/io/exif.h"
#include "imaging/io/heif_items.h"
#include "imaging/io/late_codec.h"
#include "imaging/io/readers.h"
#include "util/log/message.h"

namespace skarnel::io {
namespace {

/// The library holds the planes, the picture made of them, and ours beside it.
constexpr std::int64_t kMaxPixels = 100'000'000;
constexpr std::size_t kMaxProfileBytes = std::size_t{4} << 20;
constexpr std::size_t kMaxExifBytes = std::size_t{1} << 20;

struct Api {
    decltype(heif_context_alloc)* newContext;
    decltype(heif_context_free)* freeContext;
    decltype(heif_context_set_max_decoding_threads)* setThreads;
    decltype(heif_context_read_from_memory_without_copy)* read;
    decltype(heif_context_get_primary_image_handle)* primary;
    decltype(heif_context_get_primary_image_ID)* primaryItem;
    decltype(heif_image_handle_release)* releaseHandle;
    decltype(heif_image_handle_get_width)* width;
    decltype(heif_image_handle_get_height)* height;
    decltype(heif_image_handle_get_ispe_width)* statedWidth;
    decltype(heif_image_handle_get_ispe_height)* statedHeight;
    decltype(heif_context_set_maximum_image_size_limit)* limitSides;
    decltype(heif_image_handle_has_alpha_channel)* hasAlpha;
    decltype(heif_image_handle_is_premultiplied_alpha)* isPremultiplied;
    decltype(heif_image_handle_get_luma_bits_per_pixel)* depth;
    decltype(heif_image_handle_get_raw_color_profile_size)* profileSize;
    decltype(heif_image_handle_get_raw_color_profile)* profile;
    decltype(heif_image_handle_get_nclx_color_profile)* nclx;
    decltype(heif_nclx_color_profile_free)* freeNclx;
    decltype(heif_image_handle_get_list_of_metadata_block_IDs)* blocks;
    decltype(heif_image_handle_get_metadata_size)* blockSize;
    decltype(heif_image_handle_get_metadata)* block;
    decltype(heif_decoding_options_alloc)* newOptions;
    decltype(heif_decoding_options_free)* freeOptions;
    decltype(heif_decode_image)* decode;
    decltype(heif_image_release)* releaseImage;
    decltype(heif_image_get_width)* planeWidth;
    decltype(heif_image_get_height)* planeHeight;
    decltype(heif_image_get_plane_readonly)* plane;
};

std::optional<Api> loadApi() {
    Api api{};
    CodecLibrary library(heifSoname());
    library.bind(api.newContext, "heif_context_alloc");
    library.bind(api.freeContext, "heif_context_free");
    library.bind(api.setThreads, "heif_context_set_max_decoding_threads");
    library.bind(api.read, "heif_context_read_from_memory_without_copy");
    library.bind(api.primary, "heif_context_get_primary_image_handle");
    library.bind(api.primaryItem, "heif_context_get_primary_image_ID");
    library.bind(api.releaseHandle, "heif_image_handle_release");
    library.bind(api.width, "heif_image_handle_get_width");
    library.bind(api.height, "heif_image_handle_get_height");
    library.bind(api.statedWidth, "heif_image_handle_get_ispe_width");
    library.bind(api.statedHeight, "heif_image_handle_get_ispe_height");
    library.bind(api.limitSides, "heif_context_set_maximum_image_size_limit");
    library.bind(api.hasAlpha, "heif_image_handle_has_alpha_channel");
    library.bind(api.isPremultiplied, "heif_image_handle_is_premultiplied_alpha");
    library.bind(api.depth, "heif_image_handle_get_luma_bits_per_pixel");
    library.bind(api.profileSize, "heif_image_handle_get_raw_color_profile_size");
    library.bind(api.profile, "heif_image_handle_get_raw_color_profile");
    library.bind(api.nclx, "heif_image_handle_get_nclx_color_profile");
    library.bind(api.freeNclx, "heif_nclx_color_profile_free");
    library.bind(api.blocks, "heif_image_handle_get_list_of_metadata_block_IDs");
    library.bind(api.blockSize, "heif_image_handle_get_metadata_size");
    library.bind(api.block, "heif_image_handle_get_metadata");
    library.bind(api.newOptions, "heif_decoding_options_alloc");
    library.bind(api.freeOptions, "heif_decoding_options_free");
    library.bind(api.decode, "heif_decode_image");
    library.bind(api.releaseImage, "heif_image_release");
    library.bind(api.planeWidth, "heif_image_get_width");
    library.bind(api.planeHeight, "heif_image_get_height");
    library.bind(api.plane, "heif_image_get_plane_readonly");
    if (!library.complete()) return std::nullopt;
    return api;
}

const std::optional<Api>& api() {
    static const std::optional<Api> loaded = loadApi();
    return loaded;
}

struct Release {
    void operator()(heif_context* context) const { api()->freeContext(context); }
    void operator()(heif_image_handle* handle) const { api()->releaseHandle(handle); }
    void operator()(heif_image* image) const { api()->releaseImage(image); }
    void operator()(heif_color_profile_nclx* nclx) const { api()->freeNclx(nclx); }
    void operator()(heif_decoding_options* options) const { api()->freeOptions(options); }
};
template <typename Kind>
using Owned = std::unique_ptr<Kind, Release>;

Error failureOf(const heif_error& error) {
    if (error.subcode == heif_suberror_Security_limit_exceeded)
        return {ErrorCode::Damaged, "The HEIF picture is damaged"};
    switch (error.code) {
        case heif_error_Memory_allocation_error:
            return {ErrorCode::OutOfMemory, "Not enough memory for the picture"};
        case heif_error_Unsupported_filetype:
        case heif_error_Unsupported_feature:
        case heif_error_Plugin_loading_error:
            return {ErrorCode::Unsupported, "The picture's coding is not supported"};
        default:
            return {ErrorCode::Damaged, "The HEIF picture is damaged"};
    }
}

/// The curve is taken to be that of sRGB where a file names one that is meant for the same kind of
/// display; light that exceeds a display's (PQ, HLG) has no place in eight bits.
RgbCurve curveOf(heif_transfer_characteristics transfer) {
    switch (transfer) {
        case heif_transfer_characteristic_linear:
            return RgbCurve::Linear;
        case heif_transfer_characteristic_ITU_R_BT_470_6_System_M:
            return RgbCurve::Gamma22;
        case heif_transfer_characteristic_ITU_R_BT_470_6_System_B_G:
            return RgbCurve::Gamma28;
        default:
            return RgbCurve::Srgb;
    }
}

Bytes profileOf(const heif_image_handle* handle) {
    const std::size_t size = api()->profileSize(handle);
    if (size > 0 && size <= kMaxProfileBytes) {
        Bytes profile(size);
        if (api()->profile(handle, profile.data()).code == heif_error_Ok) return profile;
    }
    heif_color_profile_nclx* found = nullptr;
    if (api()->nclx(handle, &found).code != heif_error_Ok || found == nullptr) return {};
    const Owned<heif_color_profile_nclx> nclx(found);
    const bool usualPrimaries = nclx->color_primaries == heif_color_primaries_unspecified ||
                                nclx->color_primaries == heif_color_primaries_ITU_R_BT_709_5;
    const RgbCurve curve = curveOf(nclx->transfer_characteristics);
    if (usualPrimaries && curve == RgbCurve::Srgb) return {};
    const RgbPrimaries srgb;
    if (usualPrimaries) return makeRgbProfile(srgb, curve);
    return makeRgbProfile({{nclx->color_primary_white_x, nclx->color_primary_white_y},
                           {nclx->color_primary_red_x, nclx->color_primary_red_y},
                           {nclx->color_primary_green_x, nclx->color_primary_green_y},
                           {nclx->color_primary_blue_x, nclx->color_primary_blue_y}},
                          curve);
}

void readFacts(const heif_image_handle* handle, ImageProperties& properties) {
    heif_item_id id = 0;
    if (api()->blocks(handle, "Exif", &id, 1) < 1) return;
    const std::size_t size = api()->blockSize(handle, id);
    if (size < 4 || size > kMaxExifBytes) return;
    Bytes bytes(size);
    if (api()->block(handle, id, bytes.data()).code != heif_error_Ok) return;
    // The item begins with the number of bytes to pass over before the block.
    std::uint32_t skip = 0;
    for (std::size_t i = 0; i < 4; ++i) skip = skip << 8 | bytes[i];
    if (skip > size - 4) return;
    const ExifFacts facts = readExif(ByteView(bytes).subspan(4 + skip), properties);
    setResolution(properties, facts.dpiHorizontal, facts.dpiVertical);
}

Result<Owned<heif_image>> decodePixels(const heif_image_handle* handle) {
    const Owned<heif_decoding_options> options(api()->newOptions());
    if (!options) return {ErrorCode::OutOfMemory, "Not enough memory for the picture"};
    options->convert_hdr_to_8bit = 1;
    heif_image* image = nullptr;
    const heif_error error = api()->decode(handle, &image, heif_colorspace_RGB,
                                           heif_chroma_interleaved_RGBA, options.get());
    Owned<heif_image> owned(image);
    if (error.code != heif_error_Ok) return failureOf(error);
    return owned;
}

Result<SourcePicture> copyPixels(const heif_image* image, const DecodeLimits& limits) {
    // What was coded need not have the size that the container states.
    const int width = api()->planeWidth(image, heif_channel_interleaved);
    const int height = api()->planeHeight(image, heif_channel_interleaved);
    int strideBytes = 0;
    const std::uint8_t* plane = api()->plane(image, heif_channel_interleaved, &strideBytes);
    if (plane == nullptr || strideBytes / 4 < width) {
        return {ErrorCode::Damaged, "The HEIF picture is damaged"};
    }
    auto pixels = allocatePicture(width, height, limits, kMaxPixels);
    if (!pixels) return pixels.error();
    SourcePicture picture(*std::move(pixels));
    const MutablePixelView view = picture.pixels.view();
    for (int y = 0; y < height; ++y) {
        std::memcpy(view.row(y), plane + std::ptrdiff_t{strideBytes} * y,
                    std::size_t{4} * static_cast<std::size_t>(width));
    }
    return picture;
}

/// A grid or an overlay, of which the picture or its transparency may be made, has a size of its
/// own, and memory is taken for that. None may be larger than what the file says of the picture,
/// before it is cropped or turned; fails when that alone is too large.
std::optional<Error> boundCanvases(heif_context* context, const heif_image_handle* handle,
                                   const DecodeLimits& limits) {
    const int width = api()->width(handle);
    const int height = api()->height(handle);
    if (auto tooLarge = checkPictureSize(width, height, limits, kMaxPixels)) return tooLarge;
    // 0 where it is not stated.
    const int statedWidth = std::max(api()->statedWidth(handle), 1);
    const int statedHeight = std::max(api()->statedHeight(handle), 1);
    if (auto tooLarge = checkPictureSize(statedWidth, statedHeight, limits, kMaxPixels))
        return tooLarge;
    // The library refuses a side of the limit itself, too.
    api()->limitSides(context, std::max({width, height, statedWidth, statedHeight}) + 1);
    return std::nullopt;
}

/// A picture may be made of another any number of times, and that one again; or of itself.
std::optional<Error> boundItems(heif_context* context, const heif_image_handle* handle,
                                ByteView bytes) {
    // Tiles have 64 pixels a side at least, and transparency of their own.
    constexpr std::uint64_t kLeastPixels = 1024;
    constexpr std::uint64_t kSpareItems = 64;
    // A picture and its tiles, as much again for its transparency and for what else a camera adds;
    // a small picture may have large tiles.
    constexpr std::uint64_t kMostTimes = 8;
    constexpr std::uint64_t kSparePixels = 8'000'000;
    const Error damaged{ErrorCode::Damaged, "The HEIF picture is damaged"};
    heif_item_id item = 0;
    if (const heif_error error = api()->primaryItem(context, &item); error.code != heif_error_Ok) {
        return failureOf(error);
    }
    // Before it is cropped: the whole of it is decoded all the same.
    const auto pixels = static_cast<std::uint64_t>(std::max(api()->statedWidth(handle), 1)) *
                        static_cast<std::uint64_t>(std::max(api()->statedHeight(handle), 1));
    const std::uint64_t mostItems = kSpareItems + pixels / kLeastPixels;
    const std::uint64_t mostPixels = kSparePixels + pixels * kMostTimes;
    if (decodedItems(bytes, item, mostItems) > mostItems) return damaged;
    if (decodedPixels(bytes, item, mostPixels) > mostPixels) return damaged;
    return std::nullopt;
}

}  // namespace

bool loadHeif() {
    return api().has_value();
}

Result<SourcePicture> readHeif(ByteView bytes, const DecodeLimits& wanted) {
    DecodeLimits limits = wanted;
    limits.maxUnprovenPixels = dearUnprovenPixels(wanted);
    if (!loadHeif()) {
        return {ErrorCode::Unsupported,
                filled("The library for HEIF and AVIF (%1) is not installed", {heifSoname()})};
    }
    // Tables of a thousand items take a tenth of that, half a second at most.
    constexpr std::uint64_t kMostTableSteps = 500'000'000;
    if (!hasOneMeaning(bytes) || tableSteps(bytes) > kMostTableSteps) {
        return {ErrorCode::Damaged, "The HEIF picture is damaged"};
    }
    const Owned<heif_context> context(api()->newContext());
    if (!context) return {ErrorCode::OutOfMemory, "Not enough memory for the decoder"};
    api()->setThreads(context.get(), 0);
    heif_error error = api()->read(context.get(), bytes.data(), bytes.size(), nullptr);
    if (error.code != heif_error_Ok) return failureOf(error);
    heif_image_handle* found = nullptr;
    error = api()->primary(context.get(), &found);
    const Owned<heif_image_handle> handle(found);
    if (error.code != heif_error_Ok) return failureOf(error);
    if (auto tooLarge = boundCanvases(context.get(), found, limits)) return *tooLarge;
    if (auto endless = boundItems(context.get(), found, bytes)) return *endless;
    auto image = decodePixels(found);
    if (!image) return image.error();
    auto picture = copyPixels(image->get(), limits);
    if (!picture) return picture.error();
    const bool hasAlpha = api()->hasAlpha(found) != 0;
    if (hasAlpha) {
        picture->alpha =
            api()->isPremultiplied(found) != 0 ? Alpha::Premultiplied : Alpha::Straight;
    }
    picture->profile = profileOf(found);
    // The library has turned the picture already; EXIF's orientation does not count here.
    readFacts(found, picture->properties);
    const int depth = api()->depth(found);
    describePicture(*picture, "RGB", depth > 0 ? depth : 8, hasAlpha);
    return picture;
}

}  // namespace skarnel::io
