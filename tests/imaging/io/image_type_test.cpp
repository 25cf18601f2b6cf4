#include <gtest/gtest.h>

#include <set>

#include "imaging/io/image_io.h"

namespace skarnel {
namespace {

TEST(ImageTypes, ExtensionsOfPhotosLeadToTheirFormats) {
    struct Row {
        const char* extension;
        std::string_view type;
    };
    for (const Row& row :
         {Row{"jpg", kUTTypeJPEG}, Row{"jpeg", kUTTypeJPEG}, Row{"jp2", kUTTypeJPEG2000},
          Row{"bmp", kUTTypeBMP}, Row{"png", kUTTypePNG}, Row{"tif", kUTTypeTIFF},
          Row{"tiff", kUTTypeTIFF}, Row{"psd", kUTTypePSD}, Row{"TIF", kUTTypeTIFF},
          Row{"WebP", kUTTypeWebP}}) {
        const ImageType* type = imageTypeWithExtension(row.extension);
        ASSERT_NE(type, nullptr) << row.extension;
        EXPECT_EQ(type->identifier, row.type) << row.extension;
        EXPECT_TRUE(type->canRead) << row.extension;
    }
    EXPECT_EQ(imageTypeWithExtension("txt"), nullptr);
    EXPECT_EQ(imageTypeWithExtension(""), nullptr);
}

TEST(ImageTypes, ThePreferredExtensionOfTiffIsTiff) {
    EXPECT_EQ(preferredExtensionOfType("public.tiff"), "tiff");
    EXPECT_EQ(preferredExtensionOfType("public.jpeg"), "jpeg");
    EXPECT_EQ(preferredExtensionOfType("public.unheard-of"), std::nullopt);
}

TEST(ImageTypes, NoIdentifierOrExtensionStandsTwice) {
    std::set<std::string_view> seen;
    for (const ImageType& type : imageTypes()) {
        EXPECT_TRUE(seen.insert(type.identifier).second) << type.identifier;
        ASSERT_FALSE(type.extensions.empty());
        EXPECT_EQ(type.extensions.front(), type.preferredExtension);
        for (std::string_view extension : type.extensions) {
            EXPECT_TRUE(seen.insert(extension).second) << extension;
        }
    }
}

TEST(ImageTypes, WritableFormatsAreThoseOfTheSavePanel) {
    std::set<std::string_view> writable;
    for (const ImageType& type : imageTypes()) {
        if (type.canWrite) writable.insert(type.identifier);
    }
    EXPECT_EQ(writable, (std::set<std::string_view>{kUTTypeTIFF, kUTTypePNG, kUTTypeJPEG,
                                                    kUTTypeJPEG2000, kUTTypeBMP, kUTTypeWebP}));
}

ByteView bytesOf(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

TEST(ImageTypes, ContentDecidesByTheFirstBytes) {
    using namespace std::string_view_literals;
    struct Row {
        std::string_view bytes;
        std::string_view type;
    };
    for (const Row& row :
         {Row{"\xFF\xD8\xFF\xE0"sv, kUTTypeJPEG}, Row{"\x89PNG\r\n\x1A\n"sv, kUTTypePNG},
          Row{"II*\0"sv, kUTTypeTIFF}, Row{"MM\0*"sv, kUTTypeTIFF}, Row{"MM\0+"sv, kUTTypeTIFF},
          Row{"BM6"sv, kUTTypeBMP}, Row{"8BPS\0\1"sv, kUTTypePSD}, Row{"8BPS\0\2"sv, kUTTypePSD},
          Row{"\0\0\0\x0CjP  \r\n\x87\n"sv, kUTTypeJPEG2000},
          Row{"\xFF\x4F\xFF\x51"sv, kUTTypeJPEG2000}, Row{"RIFF....WEBPVP8L"sv, kUTTypeWebP},
          Row{"GIF89a"sv, kUTTypeGIF}, Row{"\xFF\x0A"sv, kUTTypeJPEGXL},
          Row{"\0\0\0\x1C"
              "ftypavif"sv,
              kUTTypeAVIF},
          Row{"\0\0\0\x1C"
              "ftypheic"sv,
              kUTTypeHEIF}}) {
        const ImageType* type = imageTypeOfContent(bytesOf(row.bytes));
        ASSERT_NE(type, nullptr) << row.type;
        EXPECT_EQ(type->identifier, row.type);
    }
}

TEST(ImageTypes, OtherContentHasNoType) {
    using namespace std::string_view_literals;
    for (std::string_view bytes : {""sv, "B"sv, "\xFF\xD8"sv, "RIFF....WAVE"sv, "ftypisom"sv,
                                   "\0\0\0\x18"
                                   "ftypisom"sv,
                                   "<svg/>"sv, "%PDF-1.4"sv, "8BPS\0\3"sv}) {
        EXPECT_EQ(imageTypeOfContent(bytesOf(bytes)), nullptr) << bytes;
    }
}

}  // namespace
}  // namespace skarnel
