// Stands in for libjxl: every byte of the "file" is an event that the decoder reports next, so that
// a test decides what comes when, and every function fails when it is told to.
//
//     i basic information   c colours    o wants the room for the pixels    f the pixels are there
//     l a layer begins      b a box begins    m the box is too long for its room    s the end
//     anything else, or nothing more: an error
//
// What was not asked for is passed over. The pass that only counts layers is told apart by
// "counting-".
#include <jxl/decode.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "imaging/io/fakes/told.h"

using skarnel::testing::isTold;
using skarnel::testing::toldNumber;

struct JxlDecoderStruct {
    const std::uint8_t* script = nullptr;
    std::size_t left = 0;
    std::uint8_t* pixels = nullptr;
    std::size_t pixelBytes = 0;
    std::size_t boxLeft = 0;
    int events = 0;
};

namespace {

JxlDecoderStatus unless(const char* word) {
    return isTold(word) ? JXL_DEC_ERROR : JXL_DEC_SUCCESS;
}

bool counts(const JxlDecoder* decoder) {
    return (decoder->events & JXL_DEC_FRAME) != 0;
}

JxlDecoderStatus unless(const JxlDecoder* decoder, const std::string& word) {
    return unless(((counts(decoder) ? "counting-" : "") + word).c_str());
}

/// Errors and the end come unasked.
bool isAskedFor(const JxlDecoder* decoder, JxlDecoderStatus status) {
    if (status == JXL_DEC_NEED_IMAGE_OUT_BUFFER) status = JXL_DEC_FULL_IMAGE;
    if (status == JXL_DEC_BOX_NEED_MORE_OUTPUT) status = JXL_DEC_BOX;
    return status < JXL_DEC_BASIC_INFO || (decoder->events & status) != 0;
}

JxlDecoderStatus statusOf(std::uint8_t event) {
    switch (event) {
        case 'i':
            return JXL_DEC_BASIC_INFO;
        case 'c':
            return JXL_DEC_COLOR_ENCODING;
        case 'o':
            return JXL_DEC_NEED_IMAGE_OUT_BUFFER;
        case 'f':
            return JXL_DEC_FULL_IMAGE;
        case 'l':
            return JXL_DEC_FRAME;
        case 'b':
            return JXL_DEC_BOX;
        case 'm':
            return JXL_DEC_BOX_NEED_MORE_OUTPUT;
        case 's':
            return JXL_DEC_SUCCESS;
        default:
            return JXL_DEC_ERROR;
    }
}

}  // namespace

extern "C" {

JxlDecoder* JxlDecoderCreate(const JxlMemoryManager*) {
    return isTold("no-decoder") ? nullptr : new JxlDecoder;
}
void JxlDecoderDestroy(JxlDecoder* decoder) {
    delete decoder;
}
void JxlDecoderReset(JxlDecoder* decoder) {
    *decoder = {};
}
JxlDecoderStatus JxlDecoderSubscribeEvents(JxlDecoder* decoder, int events) {
    decoder->events = events;
    return unless(decoder, "subscribe-fails");
}
JxlDecoderStatus JxlDecoderSetCoalescing(JxlDecoder*, JXL_BOOL) {
    return unless("coalescing-fails");
}
JxlDecoderStatus JxlDecoderGetFrameHeader(const JxlDecoder*, JxlFrameHeader* header) {
    *header = {};
    header->layer_info.xsize = static_cast<std::uint32_t>(toldNumber("layer-width", 2));
    header->layer_info.ysize = static_cast<std::uint32_t>(toldNumber("layer-height", 1));
    header->duration = isTold("animated") ? 1 : 0;
    header->is_last = isTold("last") ? 1 : 0;
    return unless("layer-fails");
}
JxlDecoderStatus JxlDecoderSetKeepOrientation(JxlDecoder*, JXL_BOOL) {
    return unless("orientation-fails");
}
JxlDecoderStatus JxlDecoderSetDecompressBoxes(JxlDecoder*, JXL_BOOL) {
    return JXL_DEC_SUCCESS;
}
JxlDecoderStatus JxlDecoderSetInput(JxlDecoder* decoder, const std::uint8_t* data,
                                    std::size_t size) {
    decoder->script = data;
    decoder->left = size;
    return unless(decoder, "input-fails");
}
void JxlDecoderCloseInput(JxlDecoder*) {}
JxlDecoderStatus JxlDecoderProcessInput(JxlDecoder* decoder) {
    std::uint8_t event = 0;
    do {
        if (decoder->left == 0) return JXL_DEC_ERROR;
        --decoder->left;
        event = *decoder->script++;
    } while (!isAskedFor(decoder, statusOf(event)));
    // Two pixels: (10, 20, 30, 40) and (1, 2, 3, 255).
    constexpr std::uint8_t kPixels[8] = {10, 20, 30, 40, 1, 2, 3, 255};
    if (event == 'f' && decoder->pixels != nullptr) {
        std::memcpy(decoder->pixels, kPixels, std::min(decoder->pixelBytes, sizeof kPixels));
    }
    return statusOf(event);
}
JxlDecoderStatus JxlDecoderGetBasicInfo(const JxlDecoder* decoder, JxlBasicInfo* info) {
    *info = {};
    info->xsize = static_cast<std::uint32_t>(toldNumber("width", 2));
    info->ysize = static_cast<std::uint32_t>(toldNumber("height", 1));
    info->bits_per_sample = 8;
    info->num_color_channels = 3;
    info->num_extra_channels = static_cast<std::uint32_t>(toldNumber("extra", 0));
    info->alpha_bits = isTold("alpha") ? 8 : 0;
    info->alpha_premultiplied = isTold("premultiplied") ? 1 : 0;
    info->orientation = static_cast<JxlOrientation>(toldNumber("orientation", 1));
    return unless(decoder, "info-fails");
}
JxlDecoderStatus JxlDecoderGetExtraChannelInfo(const JxlDecoder*, std::size_t,
                                               JxlExtraChannelInfo* info) {
    *info = {};
    info->type = isTold("black") ? JXL_CHANNEL_BLACK : JXL_CHANNEL_ALPHA;
    return unless("channel-fails");
}
JxlDecoderStatus JxlDecoderGetICCProfileSize(const JxlDecoder*, const JxlPixelFormat*,
                                             JxlColorProfileTarget, std::size_t* size) {
    *size = static_cast<std::size_t>(toldNumber("profile", 4));
    return unless("profile-size-fails");
}
JxlDecoderStatus JxlDecoderGetColorAsICCProfile(const JxlDecoder*, const JxlPixelFormat*,
                                                JxlColorProfileTarget, std::uint8_t* profile,
                                                std::size_t size) {
    std::memset(profile, 'p', size);
    return unless("profile-fails");
}
JxlDecoderStatus JxlDecoderImageOutBufferSize(const JxlDecoder*, const JxlPixelFormat*,
                                              std::size_t* size) {
    *size = static_cast<std::size_t>(toldNumber("room", 8));
    return unless("room-fails");
}
JxlDecoderStatus JxlDecoderSetImageOutBuffer(JxlDecoder* decoder, const JxlPixelFormat*,
                                             void* buffer, std::size_t size) {
    decoder->pixels = static_cast<std::uint8_t*>(buffer);
    decoder->pixelBytes = size;
    return unless("output-fails");
}
JxlDecoderStatus JxlDecoderGetBoxType(JxlDecoder*, JxlBoxType type, JXL_BOOL) {
    std::memcpy(type, isTold("other-box") ? "xml " : "Exif", 4);
    return unless("box-type-fails");
}
/// An offset of four bytes, then a block with the maker "Cam".
JxlDecoderStatus JxlDecoderSetBoxBuffer(JxlDecoder* decoder, std::uint8_t* buffer,
                                        std::size_t size) {
    constexpr std::uint8_t kBox[] = {0,    0, 0, 0, 'M', 'M', 0, 42,  0,   0,   0, 8, 0, 1, 0x01,
                                     0x0F, 0, 2, 0, 0,   0,   4, 'C', 'a', 'm', 0, 0, 0, 0, 0};
    const std::size_t taken =
        std::min(sizeof kBox, static_cast<std::size_t>(toldNumber("box", sizeof kBox)));
    std::memcpy(buffer, kBox, taken);
    if (isTold("far-block")) buffer[0] = 0xFF;
    decoder->boxLeft = size - taken;
    return unless("box-fails");
}
std::size_t JxlDecoderReleaseBoxBuffer(JxlDecoder* decoder) {
    return decoder->boxLeft;
}
}
