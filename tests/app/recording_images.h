// The controller's picture work, recorded: real unless a failure is planned.
#pragma once

#include "app/image_operations.h"
#include "app/standard_image_files.h"
#include "call_log.h"

namespace skarnel::testing_app {

class RecordingOperations final : public ImageOperations {
  public:
    ~RecordingOperations() override;
    explicit RecordingOperations(CallLog& log) : log_(log) {}

    std::optional<NSImage> initByReferencingFile(const std::string& path) override {
        log_.add("initByReferencingFile", path);
        if (log_.fails("initByReferencingFile")) return std::nullopt;
        return ImageOperations::initByReferencingFile(path);
    }
    std::optional<NSImage> imageByScalingProportionallyToSize(const NSImage& image,
                                                              CGSize size) override {
        log_.add("imageByScalingProportionallyToSize", shown(image.size()) + " to " + shown(size));
        if (log_.fails("imageByScalingProportionallyToSize")) return std::nullopt;
        return ImageOperations::imageByScalingProportionallyToSize(image, size);
    }
    std::optional<CGImage> getCGImageRef(const NSImage& image) override {
        log_.add("getCGImageRef", shown(image.size()));
        if (log_.fails("getCGImageRef")) return std::nullopt;
        return ImageOperations::getCGImageRef(image);
    }
    std::optional<NSImage> NSImageFromCGImageRef(const CGImage& image) override {
        log_.add("NSImageFromCGImageRef", shown(image));
        if (log_.fails("NSImageFromCGImageRef")) return std::nullopt;
        return ImageOperations::NSImageFromCGImageRef(image);
    }
    std::optional<TIFFData> TIFFRepresentation(const NSImage& image) override {
        log_.add("TIFFRepresentation", shown(image.size()));
        if (log_.fails("TIFFRepresentation")) return std::nullopt;
        return ImageOperations::TIFFRepresentation(image);
    }
    std::optional<CGImage> addReflectionToCGImage(const CGImage& image, float perspectiveW,
                                                  float perspectiveH, float reflectionOffset,
                                                  float gradientOffset, float gradient,
                                                  const RenderInputReaders& readers) override {
        log_.add("addReflectionToCGImage", shown(image) + " " + shown(perspectiveW) + " " +
                                               shown(perspectiveH) + " " + shown(reflectionOffset) +
                                               " " + shown(gradientOffset) + " " + shown(gradient));
        if (log_.fails("addReflectionToCGImage")) return std::nullopt;
        return ImageOperations::addReflectionToCGImage(
            image, perspectiveW, perspectiveH, reflectionOffset, gradientOffset, gradient, readers);
    }

    std::optional<NSImage> imageWithBitmap(const CGImage& bitmap) override {
        log_.add("imageWithBitmap", shown(bitmap));
        if (log_.fails("imageWithBitmap")) return std::nullopt;
        return ImageOperations::imageWithBitmap(bitmap);
    }
    std::optional<CIImage> CIImageMakeFirtsPixelColorTransparent(const CIImage& image) override {
        log_.add("CIImageMakeFirtsPixelColorTransparent", shown(image.extent().size()));
        if (log_.fails("CIImageMakeFirtsPixelColorTransparent")) return std::nullopt;
        return ImageOperations::CIImageMakeFirtsPixelColorTransparent(image);
    }
    std::optional<CGImage> CIImageGetCGImage(const CIImage& image) override {
        log_.add("CIImageGetCGImage", shown(image.extent().size()));
        if (log_.fails("CIImageGetCGImage")) return std::nullopt;
        return ImageOperations::CIImageGetCGImage(image);
    }
    /// A planned failure raises what is no exception of the toolkit's.
    CGRect usedRect(const NSImage& image, std::int32_t tolerance) override {
        log_.add("usedRect", shown(image.size()) + " tolerance " + std::to_string(tolerance));
        if (log_.fails("usedRect")) throw 42;
        return ImageOperations::usedRect(image, tolerance);
    }
    std::optional<NSImage> scaleImageToSize(const NSImage& image, CGSize size, bool trim,
                                            std::int32_t tolerance, bool expand,
                                            bool scaleUp) override {
        log_.add("scaleImageToSize", shown(image.size()) + " to " + shown(size) + " trim " +
                                         yesNo(trim) + " tolerance " + std::to_string(tolerance) +
                                         " expand " + yesNo(expand) + " scaleUp " + yesNo(scaleUp));
        if (log_.fails("scaleImageToSize")) return std::nullopt;
        return ImageOperations::scaleImageToSize(image, size, trim, tolerance, expand, scaleUp);
    }

  private:
    CallLog& log_;
};

class RecordingSource final : public CGImageSource {
  public:
    ~RecordingSource() override;
    RecordingSource(CallLog& log, std::unique_ptr<CGImageSource> real)
        : log_(log), real_(std::move(real)) {}
    ImageProperties copyPropertiesAtIndex(std::size_t index) const override {
        log_.add("source.copyPropertiesAtIndex", std::to_string(index));
        return real_->copyPropertiesAtIndex(index);
    }
    std::string type() const override {
        log_.add("source.type");
        return real_->type();
    }

  private:
    CallLog& log_;
    std::unique_ptr<CGImageSource> real_;
};

class RecordingDestination final : public CGImageDestination {
  public:
    ~RecordingDestination() override;
    RecordingDestination(CallLog& log, std::unique_ptr<CGImageDestination> real)
        : log_(log), real_(std::move(real)) {}
    void addImage(const CGImage& image, const ImageProperties& properties) override {
        log_.add("destination.addImage", shown(image));
        added = properties;
        real_->addImage(image, properties);
    }
    bool finalize() override {
        log_.add("destination.finalize");
        return !log_.fails("destination.finalize") && real_->finalize();
    }
    ImageProperties added;

  private:
    CallLog& log_;
    std::unique_ptr<CGImageDestination> real_;
};

class RecordingImageFiles final : public ImageFiles {
  public:
    ~RecordingImageFiles() override;
    explicit RecordingImageFiles(CallLog& log) : log_(log) {}
    void setPrivateFolder(const std::string& folder) { real_.setPrivateFolder(folder); }

    std::unique_ptr<CGImageSource> imageSourceCreateWithData(const TIFFData& data) override {
        log_.add("imageSourceCreateWithData");
        if (log_.fails("imageSourceCreateWithData")) return nullptr;
        auto real = real_.imageSourceCreateWithData(data);
        return real ? std::make_unique<RecordingSource>(log_, std::move(real)) : nullptr;
    }
    std::unique_ptr<CGImageDestination> imageDestinationCreateWithURL(
        std::string_view path, std::string_view type) override {
        log_.add("imageDestinationCreateWithURL", std::string(path) + " " + std::string(type));
        if (log_.fails("imageDestinationCreateWithURL")) return nullptr;
        return recorded(real_.imageDestinationCreateWithURL(path, type));
    }
    std::shared_ptr<Bytes> dataCreateMutable() override {
        log_.add("dataCreateMutable");
        return log_.fails("dataCreateMutable") ? nullptr : real_.dataCreateMutable();
    }
    std::unique_ptr<CGImageDestination> imageDestinationCreateWithData(
        std::shared_ptr<Bytes> data, std::string_view type) override {
        log_.add("imageDestinationCreateWithData", type);
        if (log_.fails("imageDestinationCreateWithData")) return nullptr;
        return recorded(real_.imageDestinationCreateWithData(std::move(data), type));
    }
    std::optional<std::string> preferredExtension(std::string_view type) override {
        log_.add("preferredExtension", type);
        if (log_.fails("preferredExtension")) return std::nullopt;
        return real_.preferredExtension(type);
    }

  private:
    std::unique_ptr<CGImageDestination> recorded(std::unique_ptr<CGImageDestination> real) {
        return real ? std::make_unique<RecordingDestination>(log_, std::move(real)) : nullptr;
    }
    CallLog& log_;
    StandardImageFiles real_;
};

}  // namespace skarnel::testing_app
