// The toolkit's image object: a shared object with a size in points and representations.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "imaging/cgimage.h"
#include "imaging/ciimage.h"
#include "imaging/io/image_io.h"
#include "util/geometry/geometry.h"

namespace skarnel {

/// A drawable of an image: a bitmap or a filter image, with a size in points of its own.
class NSImageRep {
  public:
    virtual ~NSImageRep() = default;
    CGSize size() const { return size_; }
    void setSize(CGSize size) { size_ = size; }
    /// The pixels to draw; none when they cannot be made.
    virtual std::optional<CGImage> bitmap() const = 0;

  protected:
    explicit NSImageRep(CGSize size) : size_(size) {}
    CGSize size_;
};

/// Pixels: RGBA8 premultiplied or three packed samples. One point is one pixel at creation.
class NSBitmapImageRep final : public NSImageRep {
  public:
    explicit NSBitmapImageRep(CGImage image);
    static std::shared_ptr<NSBitmapImageRep> initWithCGImage(const CGImage& image);
    /// Decodes; null when the data cannot be decoded.
    static std::shared_ptr<NSBitmapImageRep> initWithData(ByteView data);

    int pixelsWide() const { return image_.width(); }
    int pixelsHigh() const { return image_.height(); }
    int samplesPerPixel() const { return image_.bitsPerPixel() / 8; }
    bool hasAlpha() const { return samplesPerPixel() == 4; }
    std::size_t bytesPerRow() const { return image_.bytesPerRow(); }
    const std::uint8_t* bitmapData() const { return image_.pixels().bytes; }
    std::optional<CGImage> bitmap() const override { return image_; }

  private:
    CGImage image_;
};

/// Draws a filter image; its size is the extent's.
class NSCIImageRep final : public NSImageRep {
  public:
    explicit NSCIImageRep(CIImage image);
    const CIImage& ciImage() const { return image_; }
    std::optional<CGImage> bitmap() const override;

  private:
    CIImage image_;
};

/// A handle; copies are the same image (`isSame`). Value semantics come with `copy`.
class NSImage {
  public:
    /// An empty image of a size in points; drawing into it needs at least one positive pixel.
    static NSImage initWithSize(CGSize size);
    /// A file is read at first need. None when there is no such file; one that cannot be decoded
    /// gives an object of size 0 without representations.
    static std::optional<NSImage> initByReferencingFile(const std::string& path);
    /// Decodes at once; none when the data cannot be decoded.
    static std::optional<NSImage> initWithData(ByteView data);

    bool isSame(const NSImage& other) const { return object_ == other.object_; }
    /// A new image object with the same size, flags and (shared) representations.
    NSImage copy() const;

    /// Whether it has something to draw: a representation, or a file that decodes.
    bool isValid() const;
    /// Why the file that it refers to gave no picture; none where it did, or where there is no
    /// file.
    std::optional<Error> readError() const;
    CGSize size() const;
    void setSize(CGSize size);

    std::vector<std::shared_ptr<NSImageRep>> representations() const;
    void addRepresentation(std::shared_ptr<NSImageRep> representation);
    void removeRepresentation(const std::shared_ptr<NSImageRep>& representation);
    /// The platform's choice for the default device: the one with the most pixels, the first of
    /// equals; null without representations.
    std::shared_ptr<NSImageRep> bestRepresentationForDevice() const;

    bool scalesWhenResized() const;
    void setScalesWhenResized(bool scales);
    bool isFlipped() const;
    void setFlipped(bool flipped);
    int cacheMode() const;  // 0 = default, 3 = never
    void setCacheMode(int mode);

    /// The image at its size, one pixel a point (nearest whole number, at least 1). Shares the
    /// pixels of a bitmap representation that has exactly that size. None when not valid.
    std::optional<CGImage> bitmap() const;

    /// TIFF data of the image, with the properties it was read with (orientation upright); none
    /// when it is not valid. Exact for valid pixels.
    std::optional<Bytes> TIFFRepresentation() const;

    /// What `TIFFRepresentation` decodes to, without the detour where it would hand back the very
    /// same pixels.
    std::optional<DecodedImage> decodedTIFFRepresentation() const;

    /// Properties of the file it was read from, as TIFFRepresentation carries them.
    const ImageProperties& properties() const;

    struct Object;

  private:
    explicit NSImage(std::shared_ptr<Object> object) : object_(std::move(object)) {}
    std::shared_ptr<Object> object_;
};

}  // namespace skarnel
