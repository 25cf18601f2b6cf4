// Reading what a picture's data say of themselves, and writing pictures to files and memory.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "imaging/cgimage.h"
#include "imaging/io/image_io.h"
#include "imaging/nsimage/tiff_data.h"
#include "platform/object.h"

namespace skarnel {

/// Picture data that were recognised.
class CGImageSource : public NSObject {
  public:
    /// Of the first image when the index is 0; empty for any other.
    virtual ImageProperties copyPropertiesAtIndex(std::size_t index) const = 0;
    /// The type identifier of the data.
    virtual std::string type() const = 0;
};

/// A writer for one image of one type.
class CGImageDestination : public NSObject {
  public:
    /// Adds the image with its properties and options (see `encodeImage`).
    virtual void addImage(const CGImage& image, const ImageProperties& properties) = 0;

    /// Encodes and writes. False when nothing was added or anything failed: a file destination
    /// then has left the old file whole, a data destination its buffer empty, and the system log
    /// has the cause.
    [[nodiscard]] virtual bool finalize() = 0;
};

/// The image input/output library as the controller uses it.
class ImageFiles : public NSObject {
  public:
    /// Null when the data cannot be had or read.
    virtual std::unique_ptr<CGImageSource> imageSourceCreateWithData(const TIFFData& data) = 0;

    /// Null when the type cannot be written. `path` is UTF-8.
    virtual std::unique_ptr<CGImageDestination> imageDestinationCreateWithURL(
        std::string_view path, std::string_view type) = 0;

    /// An empty growable buffer; null without memory.
    virtual std::shared_ptr<Bytes> dataCreateMutable() = 0;

    /// Encodes into `data` when it is finalised. Null when the type cannot be written.
    virtual std::unique_ptr<CGImageDestination> imageDestinationCreateWithData(
        std::shared_ptr<Bytes> data, std::string_view type) = 0;

    /// UTTypeCopyPreferredTagWithClass for file name extensions; none when the type has none.
    virtual std::optional<std::string> preferredExtension(std::string_view type) = 0;
};

}  // namespace skarnel
