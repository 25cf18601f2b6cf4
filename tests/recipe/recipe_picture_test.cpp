// Recipes inside real pictures, as the encoders make them and the decoders read them.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "imaging/cgimage.h"
#include "imaging/io/encoded_file.h"
#include "imaging/io/image_io.h"
#include "recipe/recipe_file.h"
#include "recipe/xmp_packet.h"

namespace skarnel {
namespace {

/// 3 x 2 pixels, one of them transparent.
CGImage somePicture() {
    const std::vector<std::uint8_t> bytes = {255, 0, 0, 255, 0, 128, 0,  128, 0, 0, 0, 0,
                                             9,   8, 7, 255, 0, 0,   64, 64,  1, 2, 3, 255};
    return *CGImage::copyOf({bytes.data(), 3, 2, 12, 4});
}

std::string someRecipe() {
    Recipe recipe = Recipe::defaults();
    recipe.settings[6] = 31.25F;
    return *serializeRecipe(recipe);
}

TEST(RecipePicture, CarryingARecipeChangesNoPixelAndNoProperty) {
    for (const std::string_view type : {kUTTypeTIFF, kUTTypePNG, kUTTypeJPEG}) {
        const auto plain =
            encodeImage(somePicture(), type, {{std::string(kPropertyDpiWidth), 144.0}});
        ASSERT_TRUE(plain) << type;
        const auto with = embedRecipe(*plain, someRecipe());
        ASSERT_TRUE(with) << type << ": " << with.error().message;
        const auto before = decodeImage(*plain);
        const auto after = decodeImage(*with);
        ASSERT_TRUE(before && after) << type;
        EXPECT_EQ(after->type, type);
        EXPECT_EQ(after->properties, before->properties) << type;
        ASSERT_EQ(after->image.width(), before->image.width());
        for (int y = 0; y < 2; ++y) {
            EXPECT_EQ(std::memcmp(after->image.pixels().row(y), before->image.pixels().row(y), 12),
                      0)
                << type << " row " << y;
        }
    }
}

/// A resolution gives TIFF and JPEG entries of their own.
TEST(RecipePicture, APictureOfAnySizeIsStillWholeAndNoPartOfItIs) {
    for (const std::string_view type : {kUTTypeTIFF, kUTTypePNG, kUTTypeJPEG}) {
        for (const int width : {1, 2, 7}) {
            const Bytes samples(static_cast<std::size_t>(width) * 4, 255);
            const CGImage image =
                *CGImage::copyOf({samples.data(), width, 1, std::ptrdiff_t{4} * width, 4});
            const auto with = embedRecipe(
                *encodeImage(image, type, {{std::string(kPropertyDpiWidth), 72.0}}), someRecipe());
            ASSERT_TRUE(with) << type << ": " << with.error().message;
            EXPECT_TRUE(checkedFile(*with, type, {width, 1})) << type;
            EXPECT_FALSE(checkedFile(*with, type, {width + 1, 1})) << type;
            for (std::size_t size = 0; size < with->size(); ++size) {
                const Bytes cut(with->begin(), with->begin() + static_cast<std::ptrdiff_t>(size));
                ASSERT_FALSE(checkedFile(cut, type, {width, 1})) << type << " " << size;
            }
        }
    }
}

TEST(RecipePicture, GivesItBack) {
    for (const std::string_view type : {kUTTypeTIFF, kUTTypePNG, kUTTypeJPEG}) {
        const auto with = embedRecipe(*encodeImage(somePicture(), type), someRecipe());
        ASSERT_TRUE(with) << type;
        const auto recipe = readRecipe(*with);
        ASSERT_TRUE(recipe) << type << ": " << recipe.error().message;
        EXPECT_EQ(*serializeRecipe(*recipe), someRecipe()) << type;
    }
}

TEST(RecipePicture, EncodersNeverCarryOneUnasked) {
    // What a reader found is what a save writes with: the typed text must not travel on.
    for (const std::string_view type : {kUTTypeTIFF, kUTTypePNG, kUTTypeJPEG}) {
        const auto with = embedRecipe(*encodeImage(somePicture(), type), someRecipe());
        const auto opened = decodeImage(*with);
        ASSERT_TRUE(opened) << type;
        const auto saved = encodeImage(opened->image, type, opened->properties);
        ASSERT_TRUE(saved) << type;
        EXPECT_EQ(xmpPacketOf(*saved), std::nullopt) << type;
    }
}

}  // namespace
}  // namespace skarnel
