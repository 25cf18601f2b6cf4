// The image input/output library on the program's own readers, writers and safe files.
#pragma once

#include <functional>
#include <string>
#include <utility>

#include "platform/image_files.h"
#include "storage/file_system.h"
#include "util/log/result.h"

namespace skarnel {

/// Files are encoded in memory first and then written whole, so that a failure of either leaves an
/// old file as it was. Its cause goes to the system log. A recipe that finds no room is left out.
class StandardImageFiles final : public ImageFiles {
  public:
    /// Borrows the file system.
    explicit StandardImageFiles(FileSystem& fileSystem = systemFileSystem())
        : fileSystem_(fileSystem) {}

    /// Files directly in this folder are temporary: made for the user alone, never through a link,
    /// and not flushed to the disk. Separators at its end do not count.
    void setPrivateFolder(std::string folder) { privateFolder_ = std::move(folder); }

    /// Told the path of each file that has been written and is not temporary.
    using Saved = std::function<void(const std::string& path)>;
    void setSaved(Saved saved) { saved_ = std::move(saved); }

    /// Told of each file that has been written without the recipe that it was to carry, and why.
    using RecipeLeftOut = std::function<void(const std::string& path, const Error& cause)>;
    void setRecipeLeftOut(RecipeLeftOut leftOut) { leftOut_ = std::move(leftOut); }

    std::unique_ptr<CGImageSource> imageSourceCreateWithData(const TIFFData& data) override;
    std::unique_ptr<CGImageDestination> imageDestinationCreateWithURL(
        std::string_view path, std::string_view type) override;
    std::shared_ptr<Bytes> dataCreateMutable() override;
    std::unique_ptr<CGImageDestination> imageDestinationCreateWithData(
        std::shared_ptr<Bytes> data, std::string_view type) override;
    std::optional<std::string> preferredExtension(std::string_view type) override;

  private:
    FileSystem& fileSystem_;
    std::string privateFolder_;
    Saved saved_;
    RecipeLeftOut leftOut_;
};

}  // namespace skarnel
