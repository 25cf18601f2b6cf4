// An immutable bitmap that shares its pixels and is cheap to copy.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <utility>

namespace skarnel {

/// Where alpha lies; the numbers are the drawing library's.
enum class CGImageAlphaInfo {
    None = 0,               // three packed samples a pixel
    PremultipliedLast = 1,  // R, G, B, A; the colour bytes are already multiplied by alpha
};

/// Borrowed pixels, top row first. `strideBytes` >= width * samples; the rest of a row is padding.
struct PixelView {
    const std::uint8_t* bytes = nullptr;
    int width = 0;
    int height = 0;
    std::ptrdiff_t strideBytes = 0;
    int samplesPerPixel = 4;

    const std::uint8_t* row(int y) const { return bytes + y * strideBytes; }
};

struct MutablePixelView {
    std::uint8_t* bytes = nullptr;
    int width = 0;
    int height = 0;
    std::ptrdiff_t strideBytes = 0;

    std::uint8_t* row(int y) const { return bytes + y * strideBytes; }
    operator PixelView() const { return {bytes, width, height, strideBytes, 4}; }
};

/// Pixel memory that is handed from the code that fills it to the CGImage that shares it.
/// 64-byte aligned; large buffers ask for huge pages. Move-only.
class PixelBuffer {
  public:
    /// Zero-filled (transparent) RGBA8 rows of exactly 4 * width bytes. None when width or height
    /// is below 1, when the byte count passes what a signed 32-bit row or a 64-bit size can hold,
    /// or when there is no memory.
    static std::optional<PixelBuffer> zeroed(int width, int height);

    /// As `zeroed`, with undefined contents: for callers that write every byte.
    static std::optional<PixelBuffer> uninitialized(int width, int height);

    /// Takes over memory of at least 4 * width * height bytes that came from elsewhere; width and
    /// height are at least 1.
    static PixelBuffer adopt(std::shared_ptr<std::uint8_t> bytes, int width, int height) {
        return PixelBuffer(std::move(bytes), width, height);
    }

    PixelBuffer(PixelBuffer&&) noexcept = default;
    PixelBuffer& operator=(PixelBuffer&&) noexcept = default;

    int width() const { return width_; }
    int height() const { return height_; }
    MutablePixelView view() { return {bytes_.get(), width_, height_, std::ptrdiff_t{4} * width_}; }

  private:
    friend class CGImage;
    PixelBuffer(std::shared_ptr<std::uint8_t> bytes, int width, int height)
        : bytes_(std::move(bytes)), width_(width), height_(height) {}
    std::shared_ptr<std::uint8_t> bytes_;
    int width_;
    int height_;
};

class RowSource;

class CGImage {
  public:
    /// Takes the buffer's pixels over without copying; premultiplied RGBA8.
    explicit CGImage(PixelBuffer pixels);

    /// A picture whose rows are made when they are read (`source`, not null); `room` is the memory
    /// for them, whatever it holds, so that reading cannot fail. Its copies share source and room;
    /// they are read on one thread at a time.
    CGImage(PixelBuffer room, std::unique_ptr<RowSource> source);

    /// Shares existing memory. `bytes` holds height * bytesPerRow bytes and lives as long as any
    /// copy of the image. None when a size is below 1 or a row does not fit its stride.
    /// samplesPerPixel: 4 = premultiplied RGBA, 3 = packed RGB without alpha.
    static std::optional<CGImage> share(std::shared_ptr<const std::uint8_t> bytes, int width,
                                        int height, std::size_t bytesPerRow,
                                        int samplesPerPixel = 4);

    /// Copies the view's pixels into rows of exactly width * samples bytes. None without memory.
    static std::optional<CGImage> copyOf(PixelView pixels);

    int width() const { return view_.width; }    // pixels, >= 1
    int height() const { return view_.height; }  // pixels, >= 1
    std::size_t bytesPerRow() const { return static_cast<std::size_t>(view_.strideBytes); }
    int bitsPerComponent() const { return 8; }
    int bitsPerPixel() const { return 8 * view_.samplesPerPixel; }
    CGImageAlphaInfo alphaInfo() const {
        return view_.samplesPerPixel == 4 ? CGImageAlphaInfo::PremultipliedLast
                                          : CGImageAlphaInfo::None;
    }
    /// Draws the rows of a row source first.
    PixelView pixels() const {
        if (undrawn_) drawRows();
        return view_;
    }
    /// Keeps the pixels alive beyond the image.
    const std::shared_ptr<const std::uint8_t>& storage() const {
        if (undrawn_) drawRows();
        return bytes_;
    }
    /// What makes the rows while `pixels` has not been asked for; null for pixels that are there.
    /// Valid as long as a copy of the image lives and nobody asks for the pixels.
    RowSource* rowSource() const;

    /// The same picture with four samples a pixel: this image where it has alpha already, otherwise
    /// an opaque copy. None without memory.
    std::optional<CGImage> withAlpha() const;

    /// What draws a picture's rows can look at them while they are in the nearest cache: once said,
    /// nobody has to look for colours under alpha 0 in this image and its copies.
    void setKnownWithoutHiddenColours() { isKnownWithoutHiddenColours_ = true; }
    bool isKnownWithoutHiddenColours() const { return isKnownWithoutHiddenColours_; }

    /// True when both share one block of pixels and describe it alike.
    bool isSame(const CGImage& other) const;

  private:
    CGImage(std::shared_ptr<const std::uint8_t> bytes, PixelView view)
        : bytes_(std::move(bytes)), view_(view) {}
    void drawRows() const;
    std::shared_ptr<const std::uint8_t> bytes_;
    PixelView view_;
    bool isKnownWithoutHiddenColours_ = false;
    struct UndrawnRows;
    std::shared_ptr<UndrawnRows> undrawn_;  // null for pixels that were there from the start
};

}  // namespace skarnel
