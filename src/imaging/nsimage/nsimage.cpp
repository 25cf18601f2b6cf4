#include "imaging/nsimage/nsimage.h"

#include <sys/stat.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>
#include <utility>

#include "imaging/cgcontext.h"
#include "imaging/io/read_file.h"
#include "imaging/nsimage/tiff_form.h"

namespace skarnel {
namespace {

/// The nearest whole number of pixels, at least 1; 0 where there is no size.
int pixelsOf(double points) {
    if (!(points > 0) || points > 536870911.0) return 0;
    return std::max(1, static_cast<int>(std::lround(points)));
}

CGSize sizeOf(const CGImage& image) {
    return {static_cast<double>(image.width()), static_cast<double>(image.height())};
}

}  // namespace

NSBitmapImageRep::NSBitmapImageRep(CGImage image)
    : NSImageRep(sizeOf(image)), image_(std::move(image)) {}

std::shared_ptr<NSBitmapImageRep> NSBitmapImageRep::initWithCGImage(const CGImage& image) {
    return std::make_shared<NSBitmapImageRep>(image);
}

std::shared_ptr<NSBitmapImageRep> NSBitmapImageRep::initWithData(ByteView data) {
    auto decoded = decodeImage(data);
    return decoded ? std::make_shared<NSBitmapImageRep>(std::move(decoded->image)) : nullptr;
}

NSCIImageRep::NSCIImageRep(CIImage image)
    : NSImageRep(image.extent().size()), image_(std::move(image)) {}

std::optional<CGImage> NSCIImageRep::bitmap() const {
    const CGRect extent = image_.extent();
    const int width = pixelsOf(extent.width);
    const int height = pixelsOf(extent.height);
    if (width == 0 || height == 0) return std::nullopt;
    return image_.rasterize(extent.origin(), width, height);
}

struct NSImage::Object {
    CGSize size{};  // as set; (0, 0) = that of the first representation
    bool scalesWhenResized = false;
    bool flipped = false;
    int cacheMode = 0;
    std::vector<std::shared_ptr<NSImageRep>> representations;
    ImageProperties properties;
    std::string unreadFile;           // not empty until the file is needed
    std::optional<Error> readError;   // of that file
    std::optional<CGImage> survivor;  // of a bitmap representation; known to survive TIFF

    void take(DecodedImage decoded) {
        properties = uprightProperties(decoded.image, std::move(decoded.properties));
        representations = {std::make_shared<NSBitmapImageRep>(std::move(decoded.image))};
        survivor.reset();
    }

    /// Looks at the pixels once: a working copy is asked for with every change of a setting.
    bool survivesTiff(const NSImageRep& representation, const CGImage& pixels) {
        if (survivor && survivor->isSame(pixels)) return true;
        if (!skarnel::survivesTiff(pixels)) return false;
        // Only what the representation holds anyway is kept.
        if (dynamic_cast<const NSBitmapImageRep*>(&representation) != nullptr) survivor = pixels;
        return true;
    }

    /// Without memory there is an error as for a file that cannot be decoded: who asks for a size
    /// or for pixels expects no exception.
    void readFile() {
        if (unreadFile.empty()) return;
        const std::string path = std::exchange(unreadFile, {});
        try {
            auto decoded = decodeImageFile(path);
            if (decoded)
                take(*std::move(decoded));
            else
                readError = decoded.error();
        } catch (const std::bad_alloc&) {
            properties.clear();
            readError = {ErrorCode::OutOfMemory, io::kNoMemory};
        }
    }

    /// What stands for the image in pixels: the representation of exactly its size, otherwise the
    /// best one.
    std::shared_ptr<NSImageRep> drawn(CGSize imageSize) const {
        for (const auto& representation : representations) {
            if (representation->size() == imageSize) return representation;
        }
        return best();
    }

    std::shared_ptr<NSImageRep> best() const {
        std::shared_ptr<NSImageRep> best;
        double most = -1;
        for (const auto& representation : representations) {
            double pixels = representation->size().width * representation->size().height;
            if (const auto* bitmap = dynamic_cast<const NSBitmapImageRep*>(representation.get())) {
                pixels = static_cast<double>(bitmap->pixelsWide()) * bitmap->pixelsHigh();
            }
            if (pixels > most) {
                most = pixels;
                best = representation;
            }
        }
        return best;
    }
};

NSImage NSImage::initWithSize(CGSize size) {
    auto object = std::make_shared<Object>();
    object->size = size;
    return NSImage(std::move(object));
}

std::optional<NSImage> NSImage::initByReferencingFile(const std::string& path) {
    struct stat status {};
    if (path.empty() || ::stat(path.c_str(), &status) != 0) return std::nullopt;
    auto object = std::make_shared<Object>();
    object->unreadFile = path;
    return NSImage(std::move(object));
}

std::optional<NSImage> NSImage::initWithData(ByteView data) {
    auto decoded = decodeImage(data);
    if (!decoded) return std::nullopt;
    auto object = std::make_shared<Object>();
    object->take(*std::move(decoded));
    return NSImage(std::move(object));
}

NSImage NSImage::copy() const {
    object_->readFile();
    return NSImage(std::make_shared<Object>(*object_));
}

bool NSImage::isValid() const {
    object_->readFile();
    return !object_->representations.empty();
}

std::optional<Error> NSImage::readError() const {
    object_->readFile();
    return object_->readError;
}

CGSize NSImage::size() const {
    object_->readFile();
    const CGSize set = object_->size;
    if ((set.width != 0 || set.height != 0) || object_->representations.empty()) return set;
    return object_->representations.front()->size();
}

void NSImage::setSize(CGSize size) {
    object_->readFile();
    object_->size = size;
}

std::vector<std::shared_ptr<NSImageRep>> NSImage::representations() const {
    object_->readFile();
    return object_->representations;
}

void NSImage::addRepresentation(std::shared_ptr<NSImageRep> representation) {
    if (!representation) return;
    object_->readFile();
    object_->survivor.reset();
    object_->representations.push_back(std::move(representation));
}

void NSImage::removeRepresentation(const std::shared_ptr<NSImageRep>& representation) {
    object_->readFile();
    object_->survivor.reset();
    std::erase(object_->representations, representation);
}

std::shared_ptr<NSImageRep> NSImage::bestRepresentationForDevice() const {
    object_->readFile();
    return object_->best();
}

bool NSImage::scalesWhenResized() const {
    return object_->scalesWhenResized;
}
void NSImage::setScalesWhenResized(bool scales) {
    object_->scalesWhenResized = scales;
}
bool NSImage::isFlipped() const {
    return object_->flipped;
}
void NSImage::setFlipped(bool flipped) {
    object_->flipped = flipped;
}
int NSImage::cacheMode() const {
    return object_->cacheMode;
}
void NSImage::setCacheMode(int mode) {
    object_->cacheMode = mode;
}

std::optional<CGImage> NSImage::bitmap() const {
    const CGSize points = size();
    const int width = pixelsOf(points.width);
    const int height = pixelsOf(points.height);
    const auto representation = object_->drawn(points);
    if (!representation || width == 0 || height == 0) return std::nullopt;
    auto pixels = representation->bitmap();
    if (!pixels || (pixels->width() == width && pixels->height() == height)) return pixels;
    auto context = CGContext::create(width, height);
    if (!context) return std::nullopt;
    context->setInterpolationQuality(InterpolationQuality::High);
    context->drawImage(*pixels, {0, 0, static_cast<double>(width), static_cast<double>(height)});
    return std::move(*context).takeImage();
}

std::optional<Bytes> NSImage::TIFFRepresentation() const {
    const auto representation = object_->drawn(size());
    if (!representation) return std::nullopt;
    const auto pixels = representation->bitmap();
    if (!pixels) return std::nullopt;
    return tiffForm(*pixels, object_->properties);
}

std::optional<DecodedImage> NSImage::decodedTIFFRepresentation() const {
    const auto representation = object_->drawn(size());
    if (!representation) return std::nullopt;
    const auto pixels = representation->bitmap();
    if (!pixels) return std::nullopt;
    return decodedTiffForm(*pixels, object_->properties,
                           object_->survivesTiff(*representation, *pixels));
}

const ImageProperties& NSImage::properties() const {
    object_->readFile();
    return object_->properties;
}

}  // namespace skarnel
