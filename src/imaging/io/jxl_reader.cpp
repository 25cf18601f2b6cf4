// JPEG XL through libjxl: the first frame, in the file's own colours, not turned.
#include <jxl/decode.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <optional>
#include <string>

#include "imaging/io/exif.h"
#include "imaging/io/late_codec.h"
#include "imaging/io/readers.h"
#include "util/log/message.h"

namespace skarnel::io {
namespace {

/// libjxl keeps every channel of the whole picture in 32-bit numbers, some of them twice.
constexpr std::int64_t kMaxPixels = 100'000'000;
/// Besides its own a picture may draw as many as are believed, and these for each byte of the file:
/// not more than the decoder's cell has time for.
constexpr std::int64_t kMaxLayerPixelsPerByte = 60;
constexpr std::uint32_t kMaxExtraChannels = 8;
constexpr std::size_t kMaxProfileBytes = std::size_t{4} << 20;
constexpr std::size_t kMaxExifBytes = std::size_t{1} << 20;

struct Api {
    decltype(JxlDecoderCreate)* create;
    decltype(JxlDecoderDestroy)* destroy;
    decltype(JxlDecoderReset)* reset;
    decltype(JxlDecoderSubscribeEvents)* subscribe;
    decltype(JxlDecoderSetKeepOrientation)* keepOrientation;
    decltype(JxlDecoderSetDecompressBoxes)* decompressBoxes;
    decltype(JxlDecoderSetCoalescing)* setCoalescing;
    decltype(JxlDecoderSetInput)* setInput;
    decltype(JxlDecoderCloseInput)* closeInput;
    decltype(JxlDecoderProcessInput)* process;
    decltype(JxlDecoderGetBasicInfo)* basicInfo;
    decltype(JxlDecoderGetFrameHeader)* frameHeader;
    decltype(JxlDecoderGetExtraChannelInfo)* extraChannel;
    decltype(JxlDecoderGetICCProfileSize)* profileSize;
    decltype(JxlDecoderGetColorAsICCProfile)* profile;
    decltype(JxlDecoderImageOutBufferSize)* outputSize;
    decltype(JxlDecoderSetImageOutBuffer)* setOutput;
    decltype(JxlDecoderGetBoxType)* boxType;
    decltype(JxlDecoderSetBoxBuffer)* setBox;
    decltype(JxlDecoderReleaseBoxBuffer)* releaseBox;
};

std::optional<Api> loadApi() {
    Api api{};
    CodecLibrary library(jpegXLSoname());
    library.bind(api.create, "JxlDecoderCreate");
    library.bind(api.destroy, "JxlDecoderDestroy");
    library.bind(api.reset, "JxlDecoderReset");
    library.bind(api.subscribe, "JxlDecoderSubscribeEvents");
    library.bind(api.keepOrientation, "JxlDecoderSetKeepOrientation");
    library.bind(api.decompressBoxes, "JxlDecoderSetDecompressBoxes");
    library.bind(api.setCoalescing, "JxlDecoderSetCoalescing");
    library.bind(api.setInput, "JxlDecoderSetInput");
    library.bind(api.closeInput, "JxlDecoderCloseInput");
    library.bind(api.process, "JxlDecoderProcessInput");
    library.bind(api.basicInfo, "JxlDecoderGetBasicInfo");
    library.bind(api.frameHeader, "JxlDecoderGetFrameHeader");
    library.bind(api.extraChannel, "JxlDecoderGetExtraChannelInfo");
    library.bind(api.profileSize, "JxlDecoderGetICCProfileSize");
    library.bind(api.profile, "JxlDecoderGetColorAsICCProfile");
    library.bind(api.outputSize, "JxlDecoderImageOutBufferSize");
    library.bind(api.setOutput, "JxlDecoderSetImageOutBuffer");
    library.bind(api.boxType, "JxlDecoderGetBoxType");
    library.bind(api.setBox, "JxlDecoderSetBoxBuffer");
    library.bind(api.releaseBox, "JxlDecoderReleaseBoxBuffer");
    if (!library.complete()) return std::nullopt;
    return api;
}

const std::optional<Api>& api() {
    static const std::optional<Api> loaded = loadApi();
    return loaded;
}

struct DestroyDecoder {
    void operator()(JxlDecoder* decoder) const { api()->destroy(decoder); }
};

constexpr JxlPixelFormat kRgba8{4, JXL_TYPE_UINT8, JXL_NATIVE_ENDIAN, 0};

Error damaged() {
    return {ErrorCode::Damaged, "The JPEG XL picture is damaged"};
}

/// The format has no larger sides, and the sum of some such areas fits 64 bits.
std::int64_t areaOf(std::uint32_t width, std::uint32_t height) {
    constexpr std::uint32_t kMaxSide = 1U << 30U;
    return std::int64_t{std::min(width, kMaxSide)} * std::min(height, kMaxSide);
}

/// What drawing a layer takes, counted in pixels: its own, of which it may have more than the
/// picture, and a quarter of the picture's, on which it is laid.
std::int64_t workOf(std::int64_t layerPixels, std::int64_t picturePixels) {
    return layerPixels + picturePixels / 4;
}

/// Nothing is decoded: only the layers' headers are read, up to the first picture that is shown.
/// An Error where they have too many pixels for a file of so few bytes; any other failure is left
/// to the decoding.
std::optional<Error> boundLayers(JxlDecoder* decoder, ByteView bytes, const DecodeLimits& limits) {
    if (api()->subscribe(decoder, JXL_DEC_BASIC_INFO | JXL_DEC_FRAME) != JXL_DEC_SUCCESS ||
        api()->setCoalescing(decoder, JXL_FALSE) != JXL_DEC_SUCCESS ||
        api()->setInput(decoder, bytes.data(), bytes.size()) != JXL_DEC_SUCCESS) {
        return damaged();
    }
    api()->closeInput(decoder);
    const std::int64_t most = dearUnprovenPixels(limits) +
                              static_cast<std::int64_t>(bytes.size()) * kMaxLayerPixelsPerByte;
    JxlBasicInfo info{};
    JxlFrameHeader layer{};
    std::int64_t picture = 0;
    std::int64_t work = 0;
    while (true) {
        const JxlDecoderStatus status = api()->process(decoder);
        if (status == JXL_DEC_BASIC_INFO) {
            if (api()->basicInfo(decoder, &info) != JXL_DEC_SUCCESS) return damaged();
            picture = areaOf(info.xsize, info.ysize);
            work = -workOf(picture, picture);  // one of the picture's size is bounded with it
            continue;
        }
        if (status != JXL_DEC_FRAME) return std::nullopt;
        if (api()->frameHeader(decoder, &layer) != JXL_DEC_SUCCESS) return damaged();
        work += workOf(areaOf(layer.layer_info.xsize, layer.layer_info.ysize), picture);
        if (work > most) {
            return Error{ErrorCode::TooLarge,
                         "The layers of the JPEG XL picture are too large for so short a file "
                         "(skarnel-render --max-pixels allows them)"};
        }
        if (layer.is_last != 0 || layer.duration != 0) return std::nullopt;
    }
}

/// One file's decoding, driven by the library's events.
class Decoding {
  public:
    explicit Decoding(const DecodeLimits& limits)
        : limits_(limits), decoder_(api()->create(nullptr)) {
        limits_.maxUnprovenPixels = dearUnprovenPixels(limits);
    }

    Result<SourcePicture> run(ByteView bytes) {
        constexpr int kEvents =
            JXL_DEC_BASIC_INFO | JXL_DEC_COLOR_ENCODING | JXL_DEC_FULL_IMAGE | JXL_DEC_BOX;
        if (!decoder_) return {ErrorCode::OutOfMemory, "Not enough memory for the decoder"};
        JxlDecoder* decoder = decoder_.get();
        if (auto error = boundLayers(decoder, bytes, limits_)) return *error;
        api()->reset(decoder);
        // Without the decompression a packed EXIF block is passed over.
        (void)api()->decompressBoxes(decoder, JXL_TRUE);
        if (api()->subscribe(decoder, kEvents) != JXL_DEC_SUCCESS ||
            api()->keepOrientation(decoder, JXL_TRUE) != JXL_DEC_SUCCESS ||
            api()->setInput(decoder, bytes.data(), bytes.size()) != JXL_DEC_SUCCESS) {
            return damaged();
        }
        api()->closeInput(decoder);
        while (!ended_) {
            if (auto error = take(api()->process(decoder))) return *error;
        }
        if (!picture_ || !painted_) return damaged();
        return finish();
    }

  private:
    std::optional<Error> take(JxlDecoderStatus status) {
        switch (status) {
            case JXL_DEC_BASIC_INFO:
                return takeInfo();
            case JXL_DEC_COLOR_ENCODING:
                return takeProfile();
            case JXL_DEC_NEED_IMAGE_OUT_BUFFER:
                return giveOutput();
            case JXL_DEC_FULL_IMAGE:
                painted_ = true;
                // The camera's facts may lie behind a still picture; an animation has frames there.
                ended_ = info_.have_animation != 0;
                return std::nullopt;
            case JXL_DEC_BOX:
                endBox();
                beginBox();
                return std::nullopt;
            case JXL_DEC_BOX_NEED_MORE_OUTPUT:
                // Larger than any camera's: done without.
                api()->releaseBox(decoder_.get());
                inExif_ = false;
                exif_.clear();
                return std::nullopt;
            case JXL_DEC_SUCCESS:
                endBox();
                ended_ = true;
                return std::nullopt;
            default:
                // What follows the pixels may be broken without harm to them.
                if (painted_) {
                    ended_ = true;
                    exif_.clear();
                    return std::nullopt;
                }
                return damaged();
        }
    }

    std::optional<Error> takeInfo() {
        if (api()->basicInfo(decoder_.get(), &info_) != JXL_DEC_SUCCESS) return damaged();
        if (info_.num_extra_channels > kMaxExtraChannels) {
            return Error{ErrorCode::Unsupported, "JPEG XL with too many channels"};
        }
        for (std::uint32_t i = 0; i < info_.num_extra_channels; ++i) {
            JxlExtraChannelInfo channel;
            if (api()->extraChannel(decoder_.get(), i, &channel) != JXL_DEC_SUCCESS) {
                return damaged();
            }
            if (channel.type == JXL_CHANNEL_BLACK) {
                return Error{ErrorCode::Unsupported, "JPEG XL of printing inks"};
            }
        }
        auto pixels = allocatePicture(info_.xsize, info_.ysize, limits_, kMaxPixels);
        if (!pixels) return pixels.error();
        picture_.emplace(*std::move(pixels));
        return std::nullopt;
    }

    std::optional<Error> takeProfile() {
        std::size_t size = 0;
        if (!picture_) return damaged();
        if (api()->profileSize(decoder_.get(), &kRgba8, JXL_COLOR_PROFILE_TARGET_DATA, &size) !=
                JXL_DEC_SUCCESS ||
            size > kMaxProfileBytes) {
            return std::nullopt;  // without a profile the colours are taken as they are
        }
        picture_->profile.resize(size);
        if (api()->profile(decoder_.get(), &kRgba8, JXL_COLOR_PROFILE_TARGET_DATA,
                           picture_->profile.data(), size) != JXL_DEC_SUCCESS) {
            picture_->profile.clear();
        }
        return std::nullopt;
    }

    std::optional<Error> giveOutput() {
        if (!picture_) return damaged();
        const MutablePixelView view = picture_->pixels.view();
        // A picture's own rows follow one another without padding, which is what the library makes.
        const std::size_t size =
            static_cast<std::size_t>(view.strideBytes) * static_cast<std::size_t>(view.height);
        std::size_t wanted = 0;
        if (api()->outputSize(decoder_.get(), &kRgba8, &wanted) != JXL_DEC_SUCCESS ||
            wanted > size ||
            api()->setOutput(decoder_.get(), &kRgba8, view.bytes, size) != JXL_DEC_SUCCESS) {
            return damaged();
        }
        return std::nullopt;
    }

    void beginBox() {
        JxlBoxType type{};
        if (!exif_.empty() || api()->boxType(decoder_.get(), type, JXL_TRUE) != JXL_DEC_SUCCESS ||
            std::memcmp(type, "Exif", 4) != 0) {
            return;
        }
        exif_.resize(kMaxExifBytes);
        inExif_ = api()->setBox(decoder_.get(), exif_.data(), exif_.size()) == JXL_DEC_SUCCESS;
        if (!inExif_) exif_.clear();
    }

    void endBox() {
        if (!inExif_) return;
        inExif_ = false;
        exif_.resize(exif_.size() - api()->releaseBox(decoder_.get()));
    }

    SourcePicture finish() {
        SourcePicture& picture = *picture_;
        const bool gray = info_.num_color_channels == 1;
        const bool hasAlpha = info_.alpha_bits > 0;
        if (gray) picture.samples = Samples::Gray;
        if (hasAlpha) {
            picture.alpha = info_.alpha_premultiplied != 0 ? Alpha::Premultiplied : Alpha::Straight;
        }
        // The box begins with the number of bytes to pass over before the block.
        ByteView block(exif_);
        std::uint32_t skip = 0;
        for (std::size_t i = 0; i < 4 && block.size() >= 4; ++i) skip = skip << 8 | block[i];
        if (block.size() >= 4 && skip <= block.size() - 4) {
            const ExifFacts facts = readExif(block.subspan(4 + skip), picture.properties);
            setResolution(picture.properties, facts.dpiHorizontal, facts.dpiVertical);
        }
        // The codestream's own orientation counts, not that of the EXIF block.
        picture.orientation = std::clamp(static_cast<int>(info_.orientation), 1, 8);
        describePicture(picture, gray ? "Gray" : "RGB", static_cast<int>(info_.bits_per_sample),
                        hasAlpha);
        return std::move(picture);
    }

    DecodeLimits limits_;
    std::unique_ptr<JxlDecoder, DestroyDecoder> decoder_;
    JxlBasicInfo info_{};
    std::optional<SourcePicture> picture_;
    Bytes exif_;
    bool inExif_ = false;
    bool painted_ = false;
    bool ended_ = false;
};

}  // namespace

bool loadJpegXL() {
    return api().has_value();
}

Result<SourcePicture> readJpegXL(ByteView bytes, const DecodeLimits& limits) {
    if (!loadJpegXL()) {
        return {ErrorCode::Unsupported,
                filled("The library for JPEG XL (%1) is not installed", {jpegXLSoname()})};
    }
    return Decoding(limits).run(bytes);
}

}  // namespace skarnel::io
