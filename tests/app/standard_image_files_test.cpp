#include "app/standard_image_files.h"

#include <sys/stat.h>
#include <unistd.h>

#include "controller_fixture.h"
#include "recipe/recipe_file.h"
#include "storage/fake_file_systems.h"
#include "util/log/system_log.h"

namespace skarnel::testing_app {
namespace {

/// What has a size but no pixels to be had.
class UndrawableRep final : public NSImageRep {
  public:
    UndrawableRep() : NSImageRep({3, 2}) {}
    std::optional<CGImage> bitmap() const override { return std::nullopt; }
};

class StandardImageFilesTest : public ::testing::Test {
  protected:
    test::TemporaryFolder folder;
    StandardImageFiles files;
};

TEST_F(StandardImageFilesTest, TiffDataAreASourceWithThePicturesProperties) {
    const auto source = files.imageSourceCreateWithData(*TIFFData::initWithImage(testImage(7, 5)));
    ASSERT_NE(source, nullptr);
    EXPECT_EQ(source->type(), "public.tiff");
    const ImageProperties properties = source->copyPropertiesAtIndex(0);
    EXPECT_EQ(std::get<std::int64_t>(properties.at(std::string(kPropertyPixelWidth))), 7);
    EXPECT_EQ(std::get<std::int64_t>(properties.at(std::string(kPropertyPixelHeight))), 5);
    EXPECT_TRUE(source->copyPropertiesAtIndex(1).empty());
}

TEST_F(StandardImageFilesTest, DataThatCannotBeHadAreNoSource) {
    NSImage image = NSImage::initWithSize({3, 2});
    image.addRepresentation(std::make_shared<UndrawableRep>());
    const auto data = TIFFData::initWithImage(image);
    ASSERT_TRUE(data);
    EXPECT_EQ(files.imageSourceCreateWithData(*data), nullptr);
}

TEST_F(StandardImageFilesTest, ATypeThatCannotBeWrittenHasNoWriter) {
    for (const std::string_view type : {kUTTypePSD, std::string_view("no.such.type")}) {
        EXPECT_EQ(files.imageDestinationCreateWithURL(folder / "x", type), nullptr) << type;
        EXPECT_EQ(files.imageDestinationCreateWithData(files.dataCreateMutable(), type), nullptr)
            << type;
    }
    EXPECT_TRUE(folder.names().empty());
}

TEST_F(StandardImageFilesTest, AWriterWithoutAnImageFails) {
    EXPECT_FALSE(files.imageDestinationCreateWithURL(folder / "x", kUTTypePNG)->finalize());
    EXPECT_TRUE(folder.names().empty());
}

TEST_F(StandardImageFilesTest, NothingIsWrittenBeforeTheWriterIsFinalized) {
    const auto writer = files.imageDestinationCreateWithURL(folder / "x.png", kUTTypePNG);
    writer->addImage(testPicture(3, 2), {});
    EXPECT_TRUE(folder.names().empty());
    EXPECT_TRUE(writer->finalize());
    EXPECT_THAT(folder.names(), ElementsAre("x.png"));
    EXPECT_EQ(decodeImageFile(folder / "x.png")->image.width(), 3);
}

TEST_F(StandardImageFilesTest, DataAndFileHoldTheSameBytes) {
    const auto data = files.dataCreateMutable();
    EXPECT_TRUE(data->empty());
    const ImageProperties lzw{{std::string(kPropertyTiffCompression), std::int64_t{5}}};
    const auto toData = files.imageDestinationCreateWithData(data, kUTTypeTIFF);
    toData->addImage(testPicture(9, 9), lzw);
    EXPECT_TRUE(toData->finalize());
    const auto toFile = files.imageDestinationCreateWithURL(folder / "x.tif", kUTTypeTIFF);
    toFile->addImage(testPicture(9, 9), lzw);
    EXPECT_TRUE(toFile->finalize());
    EXPECT_EQ(test::fileText(folder / "x.tif"), std::string(data->begin(), data->end()));
}

// A JPEG has room for 65,504 bytes of it.
TEST_F(StandardImageFilesTest, ARecipeTooLargeForAJpegIsLeftOutOfItAndTheReasonTold) {
    std::string told;
    files.setRecipeLeftOut(
        [&](const std::string& path, const Error& cause) { told += path + ": " + cause.message; });
    const std::string cause =
        "The recipe is too large for a JPEG file, which has room for 65,504 bytes";
    const auto write = [&](const std::string& name, std::size_t recipeSize) {
        const auto writer = files.imageDestinationCreateWithURL(folder / name, kUTTypeJPEG);
        ImageProperties properties;
        if (recipeSize > 0) properties[std::string(kPropertyRecipe)] = std::string(recipeSize, ' ');
        writer->addImage(testPicture(9, 9), properties);
        EXPECT_TRUE(writer->finalize());
        return test::fileText(folder / name);
    };
    const ScopedLogCapture captured;
    const std::string plain = write("plain.jpeg", 0);
    EXPECT_GT(write("small.jpeg", 60'000).size(), plain.size() + 60'000);
    EXPECT_EQ(told + captured.text(), "");
    EXPECT_EQ(write("large.jpeg", 70'000), plain);
    EXPECT_EQ(told, (folder / "large.jpeg") + ": " + cause);
    EXPECT_EQ(captured.text(),
              "Wrote " + (folder / "large.jpeg") + " without its recipe: " + cause + "\n");
}

TEST_F(StandardImageFilesTest, AFullDiskKeepsTheOldFileWholeAndLogsTheCause) {
    test::RefusingFileSystem disk({{"write", ENOSPC}});
    StandardImageFiles onFullDisk(disk);
    const std::string path = folder / "x.tif";
    test::putFile(path, "the old file");
    const auto writer = onFullDisk.imageDestinationCreateWithURL(path, kUTTypeTIFF);
    writer->addImage(testPicture(3, 2), {});
    const ScopedLogCapture captured;
    EXPECT_FALSE(writer->finalize());
    EXPECT_EQ(captured.text(), "Couldn't write " + path + ": No space left on device\n");
    EXPECT_EQ(test::fileText(path), "the old file");
    EXPECT_THAT(folder.names(), ElementsAre("x.tif"));
}

TEST_F(StandardImageFilesTest, PrivateFilesAreForTheUserAloneHoweverTheirPathIsJoined) {
    for (const char* end : {"", "/", "//"}) {
        for (const char* separator : {"/", "//", "///"}) {
            files.setPrivateFolder(folder.path() + end);
            const std::string path = folder.path() + separator + "page.tif";
            const auto writer = files.imageDestinationCreateWithURL(path, kUTTypeTIFF);
            writer->addImage(testPicture(3, 2), {});
            ASSERT_TRUE(writer->finalize());
            struct stat status {};
            ASSERT_EQ(::stat(path.c_str(), &status), 0);
            EXPECT_EQ(status.st_mode & 07777, 0600U) << path;
            ::unlink(path.c_str());
        }
    }
}

TEST_F(StandardImageFilesTest, TheExtensionIsTheTypesPreferredOne) {
    EXPECT_EQ(files.preferredExtension(kUTTypeTIFF), "tiff");
    EXPECT_EQ(files.preferredExtension("no.such.type"), std::nullopt);
}

}  // namespace
}  // namespace skarnel::testing_app
