#include "app/standard_image_files.h"

#include <utility>

#include "app/standard_text_files.h"
#include "recipe/recipe_file.h"
#include "storage/safe_file.h"
#include "util/log/system_log.h"

namespace skarnel {

namespace {

bool canWrite(std::string_view type) {
    const ImageType* found = imageTypeWithIdentifier(type);
    return found != nullptr && found->canWrite;
}

// A folder and a name may have been joined as plain text, with more than one separator between.
std::string_view withoutFinalSeparators(std::string_view folder) {
    while (folder.size() > 1 && folder.ends_with('/')) folder.remove_suffix(1);
    return folder;
}

class DecodedSource final : public CGImageSource {
  public:
    DecodedSource(std::string type, ImageProperties properties)
        : type_(std::move(type)), properties_(std::move(properties)) {}
    ImageProperties copyPropertiesAtIndex(std::size_t index) const override {
        return index == 0 ? properties_ : ImageProperties{};
    }
    std::string type() const override { return type_; }

  private:
    std::string type_;
    ImageProperties properties_;
};

/// Holds the one image until it is finalised; what becomes of the bytes is the heir's business.
class EncodingDestination : public CGImageDestination {
  public:
    explicit EncodingDestination(std::string_view type) : type_(type) {}

    void addImage(const CGImage& image, const ImageProperties& properties) override {
        image_ = image;
        properties_ = properties;
    }

    bool finalize() final {
        if (!image_) return false;
        Result<Bytes> encoded = encodeImage(*image_, type_, properties_);
        std::optional<Error> leftOut;
        const auto recipe = properties_.find(kPropertyRecipe);
        if (encoded && recipe != properties_.end()) {
            Result<Bytes> carrier = embedRecipe(*encoded, std::get<std::string>(recipe->second));
            // The picture is worth more than its recipe.
            if (carrier)
                encoded = std::move(carrier);
            else
                leftOut = carrier.error();
        }
        const Result<void> stored =
            encoded ? store(*std::move(encoded)) : Result<void>(encoded.error());
        if (!stored) systemLog("Couldn't write " + place() + ": " + stored.error().message);
        if (stored && leftOut) {
            systemLog("Wrote " + place() + " without its recipe: " + leftOut->message);
            recipeLeftOut(*leftOut);
        }
        return stored.hasValue();
    }

  private:
    virtual Result<void> store(Bytes encoded) = 0;
    /// The picture has been stored without the recipe that it was to carry.
    virtual void recipeLeftOut(const Error& /*cause*/) {}
    /// What the log calls the destination.
    virtual std::string place() const = 0;

    std::string type_;
    std::optional<CGImage> image_;
    ImageProperties properties_;
};

enum class Lasting { Saved, Temporary };

class FileDestination final : public EncodingDestination {
  public:
    FileDestination(std::string_view path, std::string_view type, Lasting lasting,
                    FileSystem& fileSystem, StandardImageFiles::Saved saved,
                    StandardImageFiles::RecipeLeftOut leftOut)
        : EncodingDestination(type),
          path_(path),
          lasting_(lasting),
          fileSystem_(fileSystem),
          saved_(std::move(saved)),
          leftOut_(std::move(leftOut)) {}

  private:
    Result<void> store(Bytes encoded) override {
        if (lasting_ == Lasting::Temporary) return writePrivateFile(path_, encoded, fileSystem_);
        Result<void> written = writeFileSafely(path_, encoded, Overwrite::Allow, fileSystem_);
        if (written && saved_) saved_(path_);
        return written;
    }
    void recipeLeftOut(const Error& cause) override {
        if (leftOut_) leftOut_(path_, cause);
    }
    std::string place() const override { return path_; }

    std::string path_;
    Lasting lasting_;
    FileSystem& fileSystem_;
    StandardImageFiles::Saved saved_;
    StandardImageFiles::RecipeLeftOut leftOut_;
};

class DataDestination final : public EncodingDestination {
  public:
    DataDestination(std::shared_ptr<Bytes> data, std::string_view type)
        : EncodingDestination(type), data_(std::move(data)) {}

  private:
    Result<void> store(Bytes encoded) override {
        *data_ = std::move(encoded);
        return {};
    }
    std::string place() const override { return "picture data"; }

    std::shared_ptr<Bytes> data_;
};

}  // namespace

std::unique_ptr<CGImageSource> StandardImageFiles::imageSourceCreateWithData(const TIFFData& data) {
    const std::optional<DecodedImage> decoded = data.decoded();
    if (!decoded) return nullptr;
    return std::make_unique<DecodedSource>(decoded->type, decoded->properties);
}

std::unique_ptr<CGImageDestination> StandardImageFiles::imageDestinationCreateWithURL(
    std::string_view path, std::string_view type) {
    if (!canWrite(type)) return nullptr;
    const bool isPrivate =
        !privateFolder_.empty() && withoutFinalSeparators(folderOfPath(std::string(path))) ==
                                       withoutFinalSeparators(privateFolder_);
    return std::make_unique<FileDestination>(
        path, type, isPrivate ? Lasting::Temporary : Lasting::Saved, fileSystem_, saved_, leftOut_);
}

std::shared_ptr<Bytes> StandardImageFiles::dataCreateMutable() {
    return std::make_shared<Bytes>();
}

std::unique_ptr<CGImageDestination> StandardImageFiles::imageDestinationCreateWithData(
    std::shared_ptr<Bytes> data, std::string_view type) {
    if (!canWrite(type)) return nullptr;
    return std::make_unique<DataDestination>(std::move(data), type);
}

std::optional<std::string> StandardImageFiles::preferredExtension(std::string_view type) {
    return preferredExtensionOfType(type);
}

}  // namespace skarnel
