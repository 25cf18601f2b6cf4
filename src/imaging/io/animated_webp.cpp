#include "imaging/io/animated_webp.h"

#include <algorithm>
#include <string>

#include "imaging/io/pixel_rows.h"
#include "imaging/io/webp_library.h"
#include "imaging/io/writers.h"

namespace skarnel::io {
namespace {

struct DeleteEncoder {
    void operator()(WebPAnimEncoder* encoder) const { WebPAnimEncoderDelete(encoder); }
};

/// Of a number that is out of range the nearer end, as for single pictures.
float qualityPercent(double quality) {
    return static_cast<float>(std::clamp(quality, 0.0, 1.0) * 100);
}

/// A WebPPicture that frees its pixels.
class Picture {
  public:
    Picture() : ok_(WebPPictureInitInternal(&picture_, WEBP_ENCODER_ABI_VERSION) != 0) {}
    Picture(const Picture&) = delete;
    Picture& operator=(const Picture&) = delete;
    ~Picture() { WebPPictureFree(&picture_); }
    explicit operator bool() const { return ok_; }
    WebPPicture* operator->() { return &picture_; }
    WebPPicture* get() { return &picture_; }

  private:
    WebPPicture picture_;
    bool ok_;
};

class AnimatedWebPEncoder final : public AnimationEncoder {
  public:
    AnimatedWebPEncoder(int width, int height, int frameMilliseconds,
                        const ImageProperties& properties)
        : width_(width), height_(height), frameMilliseconds_(frameMilliseconds) {
        if (!webpLibrary().load()) return;
        WebPAnimEncoderOptions options;
        if (WebPAnimEncoderOptionsInitInternal(&options, WEBP_MUX_ABI_VERSION) == 0) return;
        options.anim_params.loop_count = 0;  // for ever
        encoder_.reset(WebPAnimEncoderNewInternal(width, height, &options, WEBP_MUX_ABI_VERSION));
        const auto quality = numberProperty(properties, kPropertyLossyQuality);
        const bool ready = quality ? initConfig(WEBP_PRESET_PHOTO, qualityPercent(*quality))
                                   : initConfig(WEBP_PRESET_DEFAULT, 75);
        config_.lossless = quality ? 0 : 1;
        config_.exact = 0;  // invisible colour may be changed
        if (!ready) encoder_.reset();
    }

    bool ready() const { return encoder_ != nullptr; }

    Result<void> add(const CGImage& frame) override {
        if (frame.width() != width_ || frame.height() != height_ ||
            frame.pixels().samplesPerPixel != 4) {
            return {ErrorCode::InvalidArgument, "The frames differ in size or form"};
        }
        Picture picture;
        if (!picture) return {ErrorCode::Failed, "The WebP library does not fit its header"};
        picture->width = width_;
        picture->height = height_;
        picture->use_argb = 1;
        const std::size_t rowBytes = std::size_t{4} * static_cast<std::size_t>(width_);
        Bytes straight(rowBytes * static_cast<std::size_t>(height_));
        const PixelView pixels = frame.pixels();
        for (int y = 0; y < height_; ++y) {
            unpremultiplyRow(pixels.row(y),
                             straight.data() + rowBytes * static_cast<std::size_t>(y),
                             static_cast<std::size_t>(width_));
        }
        if (WebPPictureImportRGBA(picture.get(), straight.data(), 4 * width_) == 0) {
            return {ErrorCode::OutOfMemory, "There is not enough memory for the frame"};
        }
        return append(picture.get());
    }

    Result<Bytes> finish() override {
        if (frames_ == 0) return {ErrorCode::InvalidArgument, "An animation needs a frame"};
        if (Result<void> ended = append(nullptr); !ended) return ended.error();
        WebPData data;
        WebPDataInit(&data);
        if (WebPAnimEncoderAssemble(encoder_.get(), &data) == 0) return failure();
        Bytes bytes(data.bytes, data.bytes + data.size);
        WebPFree(const_cast<std::uint8_t*>(data.bytes));
        return bytes;
    }

  private:
    bool initConfig(WebPPreset preset, float quality) {
        return WebPConfigInitInternal(&config_, preset, quality, WEBP_ENCODER_ABI_VERSION) != 0;
    }

    /// A frame at its time, or the end of the last one.
    Result<void> append(WebPPicture* picture) {
        const int time = frames_ * frameMilliseconds_;
        if (WebPAnimEncoderAdd(encoder_.get(), picture, time, &config_) == 0) return failure();
        if (picture != nullptr) ++frames_;
        return {};
    }

    Error failure() const {
        return {ErrorCode::Failed,
                std::string("The WebP library says: ") + WebPAnimEncoderGetError(encoder_.get())};
    }

    int width_;
    int height_;
    int frameMilliseconds_;
    int frames_ = 0;
    WebPConfig config_{};
    std::unique_ptr<WebPAnimEncoder, DeleteEncoder> encoder_;
};

}  // namespace

std::unique_ptr<AnimationEncoder> animatedWebPEncoder(int width, int height, int frameMilliseconds,
                                                      const ImageProperties& properties) {
    auto encoder =
        std::make_unique<AnimatedWebPEncoder>(width, height, frameMilliseconds, properties);
    if (!encoder->ready()) return nullptr;
    return encoder;
}

}  // namespace skarnel::io
