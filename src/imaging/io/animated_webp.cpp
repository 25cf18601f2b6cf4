// Each frame is a WebP picture of its own of what has changed since the one before, which replaces
// that part of it, alpha included. So frames can be encoded side by side.
#include "imaging/io/animated_webp.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "imaging/io/encoded_file.h"
#include "imaging/io/pixel_rows.h"
#include "imaging/io/webp_library.h"
#include "imaging/io/writers.h"

namespace skarnel::io {
namespace {

/// Where a frame stands on the canvas, half-open; what precedes its encoded bytes.
struct Part {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;
};

struct DeleteMux {
    void operator()(WebPMux* mux) const { WebPMuxDelete(mux); }
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

int writeToBytes(const std::uint8_t* data, std::size_t size, const WebPPicture* picture) try {
    auto& bytes = *static_cast<Bytes*>(picture->custom_ptr);
    bytes.insert(bytes.end(), data, data + size);
    return 1;
} catch (const std::bad_alloc&) {
    return 0;
}

const std::uint8_t* pixelAt(const PixelView& pixels, int x, int y) {
    return pixels.row(y) + std::ptrdiff_t{4} * x;
}

/// The smallest part outside which both frames are alike; one pixel where they are alike
/// everywhere. The format counts its corner in steps of two pixels.
Part changedPart(const PixelView& before, const PixelView& now) {
    Part part{now.width, now.height, 0, 0};
    for (int y = 0; y < now.height; ++y) {
        const std::uint8_t* one = before.row(y);
        const std::uint8_t* other = now.row(y);
        const auto isAlike = [&](int x) {
            return std::memcmp(one + std::ptrdiff_t{4} * x, other + std::ptrdiff_t{4} * x, 4) == 0;
        };
        if (std::memcmp(one, other, std::size_t{4} * static_cast<std::size_t>(now.width)) == 0) {
            continue;
        }
        part.top = std::min(part.top, y);
        part.bottom = y + 1;
        int left = 0;
        while (left < part.left && isAlike(left)) ++left;
        part.left = std::min(part.left, left);
        int right = now.width;
        while (right > part.right && isAlike(right - 1)) --right;
        part.right = std::max(part.right, right);
    }
    if (part.right == 0) return {0, 0, 1, 1};
    part.left &= ~1;
    part.top &= ~1;
    return part;
}

class AnimatedWebPEncoder final : public AnimationEncoder {
  public:
    AnimatedWebPEncoder(int width, int height, int frameMilliseconds,
                        const ImageProperties& properties)
        : width_(width), height_(height), frameMilliseconds_(frameMilliseconds) {
        if (!webpLibrary().load()) return;
        const auto quality = numberProperty(properties, kPropertyLossyQuality);
        const bool ready = quality ? initConfig(WEBP_PRESET_PHOTO, qualityPercent(*quality))
                                   : initConfig(WEBP_PRESET_DEFAULT, 75);
        config_.lossless = quality ? 0 : 1;
        config_.exact = 0;  // invisible colour may be changed
        if (ready) mux_.reset(WebPNewInternal(WEBP_MUX_ABI_VERSION));
    }

    bool ready() const { return mux_ != nullptr; }

    bool usesFrameBefore() const override { return true; }

    Result<Bytes> encode(const CGImage& frame, const CGImage* before) const override {
        if (!fits(frame) || (before != nullptr && !fits(*before))) {
            return {ErrorCode::InvalidArgument, "The frames differ in size or form"};
        }
        const Part part = before != nullptr ? changedPart(before->pixels(), frame.pixels())
                                            : Part{0, 0, width_, height_};
        Picture picture;
        if (!picture) return {ErrorCode::Failed, "The WebP library does not fit its header"};
        if (!fill(*picture.get(), frame.pixels(), part)) return noMemory();
        Bytes bytes(sizeof part);
        std::memcpy(bytes.data(), &part, sizeof part);
        picture->writer = writeToBytes;
        picture->custom_ptr = &bytes;
        if (WebPEncode(&config_, picture.get()) == 0) {
            const bool memory = picture->error_code == VP8_ENC_ERROR_OUT_OF_MEMORY ||
                                picture->error_code == VP8_ENC_ERROR_BITSTREAM_OUT_OF_MEMORY ||
                                picture->error_code == VP8_ENC_ERROR_BAD_WRITE;
            if (memory) return noMemory();
            return {ErrorCode::Failed, "The frame could not be encoded as WebP"};
        }
        return bytes;
    }

    Result<void> add(ByteView encoded) override {
        Part part;
        if (encoded.size() <= sizeof part) {
            return {ErrorCode::InvalidArgument, "This is no frame"};
        }
        std::memcpy(&part, encoded.data(), sizeof part);
        WebPMuxFrameInfo frame{};
        frame.bitstream = {encoded.data() + sizeof part, encoded.size() - sizeof part};
        frame.x_offset = part.left;
        frame.y_offset = part.top;
        frame.duration = frameMilliseconds_;
        frame.id = WEBP_CHUNK_ANMF;
        frame.dispose_method = WEBP_MUX_DISPOSE_NONE;
        frame.blend_method = WEBP_MUX_NO_BLEND;
        if (WebPMuxPushFrame(mux_.get(), &frame, 1) != WEBP_MUX_OK) return noMemory();
        ++frames_;
        return {};
    }

    Result<Bytes> finish() override {
        if (frames_ == 0) return {ErrorCode::InvalidArgument, "An animation needs a frame"};
        const WebPMuxAnimParams forEver{0, 0};  // on a clear ground
        WebPData data{};
        if (WebPMuxSetAnimationParams(mux_.get(), &forEver) != WEBP_MUX_OK ||
            WebPMuxSetCanvasSize(mux_.get(), width_, height_) != WEBP_MUX_OK ||
            WebPMuxAssemble(mux_.get(), &data) != WEBP_MUX_OK) {
            return noMemory();
        }
        mux_.reset();
        struct Owner {
            WebPData data;
            ~Owner() { WebPFree(const_cast<std::uint8_t*>(data.bytes)); }
        } owner{data};
        return checkedFile(Bytes(owner.data.bytes, owner.data.bytes + owner.data.size), kUTTypeWebP,
                           {width_, height_});
    }

  private:
    bool initConfig(WebPPreset preset, float quality) {
        return WebPConfigInitInternal(&config_, preset, quality, WEBP_ENCODER_ABI_VERSION) != 0;
    }

    static Error noMemory() {
        return {ErrorCode::OutOfMemory, "There is not enough memory for the animation"};
    }

    bool fits(const CGImage& frame) const {
        return frame.width() == width_ && frame.height() == height_ &&
               frame.pixels().samplesPerPixel == 4;
    }

    static bool fill(WebPPicture& target, const PixelView& pixels, const Part& part) {
        target.use_argb = 1;
        target.width = part.right - part.left;
        target.height = part.bottom - part.top;
        const std::size_t rowBytes = std::size_t{4} * static_cast<std::size_t>(target.width);
        Bytes straight(rowBytes * static_cast<std::size_t>(target.height));
        for (int y = part.top; y < part.bottom; ++y) {
            unpremultiplyRow(pixelAt(pixels, part.left, y),
                             straight.data() + rowBytes * static_cast<std::size_t>(y - part.top),
                             static_cast<std::size_t>(target.width));
        }
        return WebPPictureImportRGBA(&target, straight.data(), 4 * target.width) != 0;
    }

    int width_;
    int height_;
    int frameMilliseconds_;
    int frames_ = 0;
    WebPConfig config_{};
    std::unique_ptr<WebPMux, DeleteMux> mux_;
};

}  // namespace

std::unique_ptr<AnimationEncoder> animatedWebPEncoder(int width, int height, int frameMilliseconds,
                                                      const ImageProperties& properties) {
    if (width > WEBP_MAX_DIMENSION || height > WEBP_MAX_DIMENSION) return nullptr;
    auto encoder =
        std::make_unique<AnimatedWebPEncoder>(width, height, frameMilliseconds, properties);
    if (!encoder->ready()) return nullptr;
    return encoder;
}

}  // namespace skarnel::io
