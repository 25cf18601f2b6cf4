// The TIFF representation of an image, encoded only when somebody wants the bytes.
#pragma once

#include <optional>

#include "imaging/io/image_io.h"
#include "imaging/nsimage/nsimage.h"

namespace skarnel {

/// Data to hand on. Who writes them to a file takes the bytes; who only opens them again to ask
/// what they say of themselves takes `decoded`, which is the same as decoding the bytes and spares
/// a large photo both ways. Later changes of the image do not show.
class TIFFData {
  public:
    /// None when the image has nothing to encode.
    static std::optional<TIFFData> initWithImage(const NSImage& image);

    /// None when the image cannot be encoded, or without memory.
    std::optional<Bytes> bytes() const;

    /// Equal to decoding `bytes`; none when there are none.
    std::optional<DecodedImage> decoded() const;

  private:
    explicit TIFFData(NSImage image) : image_(std::move(image)) {}
    NSImage image_;  // a copy of its own; the pixels are shared
};

}  // namespace skarnel
