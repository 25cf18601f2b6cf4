// The chunks are those of the Portable Network Graphics format, third edition: acTL before the
// first picture, fcTL before each, fdAT in place of IDAT for all but the first.
#include "imaging/io/animated_png.h"

#include <string_view>

#include "imaging/io/encoded_file.h"
#include "imaging/io/writers.h"

namespace skarnel::io {
namespace {

constexpr std::size_t kSignatureBytes = 8;
constexpr std::size_t kChunkFrame = 12;  // length, type and check around the data
constexpr std::uint16_t kMillisecondsASecond = 1000;

void appendNumber(Bytes& out, std::uint32_t value, int bytes = 4) {
    for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8) {
        out.push_back(static_cast<std::uint8_t>(value >> shift));
    }
}

struct Chunk {
    std::string_view type;
    ByteView data;
};

/// Takes the next chunk off bytes that we encoded ourselves.
Chunk takeChunk(ByteView& bytes) {
    const std::size_t length = (std::size_t{bytes[0]} << 24) | (std::size_t{bytes[1]} << 16) |
                               (std::size_t{bytes[2]} << 8) | bytes[3];
    const Chunk chunk{{reinterpret_cast<const char*>(bytes.data()) + 4, 4},
                      bytes.subspan(8, length)};
    bytes = bytes.subspan(length + kChunkFrame);
    return chunk;
}

class AnimatedPngEncoder final : public AnimationEncoder {
  public:
    AnimatedPngEncoder(int width, int height, int frameMilliseconds,
                       const ImageProperties& properties)
        : width_(width),
          height_(height),
          frameMilliseconds_(frameMilliseconds),
          properties_(properties) {}

    bool usesFrameBefore() const override { return false; }

    Result<Bytes> encode(const CGImage& frame, const CGImage* /*before*/) const override {
        if (frame.width() != width_ || frame.height() != height_ ||
            frame.pixels().samplesPerPixel != 4) {
            return {ErrorCode::InvalidArgument, "The frames differ in size or form"};
        }
        return checked(writePng(frame, properties_, PngColor::AlwaysWithAlpha));
    }

    Result<void> add(ByteView encoded) override {
        ByteView rest = encoded.subspan(kSignatureBytes);
        bool framed = false;
        while (!rest.empty()) {
            const Chunk chunk = takeChunk(rest);
            if (chunk.type == "IDAT") {
                if (!framed) appendFrameControl();
                framed = true;
                appendData(chunk.data);
            } else if (frames_ == 0 && chunk.type != "IEND") {
                appendPngChunk(head_, chunk.type, chunk.data);  // IHDR, resolution
            }
        }
        ++frames_;
        return {};
    }

    Result<Bytes> finish() override {
        if (frames_ == 0) return {ErrorCode::InvalidArgument, "An animation needs a frame"};
        Bytes out = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};
        out.reserve(head_.size() + body_.size() + 64);
        out.insert(out.end(), head_.begin(), head_.end());
        Bytes control;
        appendNumber(control, frames_);
        appendNumber(control, 0);  // plays for ever
        appendPngChunk(out, "acTL", control);
        out.insert(out.end(), body_.begin(), body_.end());
        appendPngChunk(out, "IEND", {});
        return checked(std::move(out));
    }

  private:
    Result<Bytes> checked(Result<Bytes> file) const {
        return checkedFile(std::move(file), kUTTypePNG, {width_, height_});
    }

    void appendFrameControl() {
        Bytes control;
        appendNumber(control, sequence_++);
        appendNumber(control, static_cast<std::uint32_t>(width_));
        appendNumber(control, static_cast<std::uint32_t>(height_));
        appendNumber(control, 0);  // left
        appendNumber(control, 0);  // top
        appendNumber(control, static_cast<std::uint32_t>(frameMilliseconds_), 2);
        appendNumber(control, kMillisecondsASecond, 2);
        appendNumber(control, 0, 1);  // the frame stays until the next one
        appendNumber(control, 0, 1);  // which replaces it, alpha included
        appendPngChunk(body_, "fcTL", control);
    }

    void appendData(ByteView data) {
        if (frames_ == 0) {
            appendPngChunk(body_, "IDAT", data);
            return;
        }
        Bytes numbered;
        numbered.reserve(data.size() + 4);
        appendNumber(numbered, sequence_++);
        numbered.insert(numbered.end(), data.begin(), data.end());
        appendPngChunk(body_, "fdAT", numbered);
    }

    int width_;
    int height_;
    int frameMilliseconds_;
    ImageProperties properties_;
    Bytes head_;
    Bytes body_;
    std::uint32_t frames_ = 0;
    std::uint32_t sequence_ = 0;
};

}  // namespace

std::unique_ptr<AnimationEncoder> animatedPngEncoder(int width, int height, int frameMilliseconds,
                                                     const ImageProperties& properties) {
    return std::make_unique<AnimatedPngEncoder>(width, height, frameMilliseconds, properties);
}

}  // namespace skarnel::io
