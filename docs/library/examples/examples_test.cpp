// The examples of the library's pages, with what the pages say of their results.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "card.h"
#include "util/geometry/geometry.h"
#include "util/image/average.h"
#include "util/image/dragging.h"
#include "util/image/filter_images.h"
#include "util/image/focus.h"
#include "util/image/nice_scaling.h"
#include "util/image/nsimage_extensions.h"
#include "util/image/scaling.h"
#include "util/misc/find_folder.h"
#include "util/misc/image_browser_item.h"
#include "util/misc/rand.h"
#include "util/string/nsscanner.h"
#include "util/string/nsstring_extensions.h"

namespace skarnel {
namespace {

TEST(LibraryExamples, GeometryFitAndCover) {
    const CGRect film{0, 0, 1920, 1080};
    const CGRect screen{10, 20, 100, 100};
    const CGRect inside = fitRectInRect(film, screen, false);
    const CGRect around = sizeRectInRect(film, screen, true);

    EXPECT_EQ(inside, (CGRect{10, 41.87500020954758, 100, 56.24999958090484}));
    EXPECT_EQ(around, (CGRect{0, 0, 177.77777910232544, 100}));
}

TEST(LibraryExamples, GeometryReferencePoints) {
    const CGRect badge{0, 0, 20, 10};
    const CGRect picture{100, 100, 400, 300};
    const CGRect corner = alignRectInRect(badge, picture, kQuadrantMaxXMaxY);  // {480, 390, 20, 10}
    const auto nearest = closestCorner(corner, picture);                       // 3

    EXPECT_EQ(corner, (CGRect{480, 390, 20, 10}));
    EXPECT_EQ(nearest, 3);
}

TEST(LibraryExamples, GeometryPushing) {
    const CGRect label{0, 0, 10, 10};
    const CGRect obstacle{5, 0, 100, 100};
    const CGRect pushed = expelRectFromRect(label, obstacle, 0);     // {-5, 0, 10, 10}
    const CGRect apart = expelRectFromRect(label, obstacle, -2);     // {-7, 0, 10, 10}
    const CGRect held = constrainRectToRect(label, {3, 4, 50, 50});  // {3, 4, 10, 10}

    EXPECT_EQ(pushed, (CGRect{-5, 0, 10, 10}));
    EXPECT_EQ(apart, (CGRect{-7, 0, 10, 10}));
    EXPECT_EQ(held, (CGRect{3, 4, 10, 10}));
}

TEST(LibraryExamples, StringsHtml) {
    using namespace NSStringExtensions;
    const NSString plain = stringByDecodingHTMLEntities(u"a &amp; b &#65; &#x42;"_ns);
    const auto text = flattenHTML(u"<h1>Title</h1>one<br>t&eacute;xt"_ns);
    const auto bold = extractBetweenPattern(u"<B>bold</b>"_ns, u"<b>"_ns, u"</b>"_ns);
    const auto inner = reverseExtractBetweenPattern(u"x[a[b]c]"_ns, u"["_ns, u"]"_ns);
    const NSString name = cleanForFilename(u"a/b:c"_ns);

    EXPECT_EQ(plain, u"a & b A B"_ns);
    EXPECT_EQ(text, u"Title\none\nt\u00E9xt"_ns);
    EXPECT_EQ(bold, u"bold"_ns);
    EXPECT_EQ(inner, u"b"_ns);
    EXPECT_EQ(name, u"a-b-c"_ns);
}

TEST(LibraryExamples, StringsScanning) {
    NSScanner scanner(u"width: -12 height: 0x1F"_ns);
    scanner.scanUpToString(u":");
    scanner.scanString(u":");
    const auto width = scanner.scanInt();  // -12
    scanner.scanString(u"HEIGHT:");
    const auto height = scanner.scanHexInt();  // 31

    EXPECT_EQ(width, -12);
    EXPECT_EQ(height, 31U);
}

TEST(LibraryExamples, StringsScripts) {
    using NSStringExtensions::runScript;
    const auto product = runScript(u"6 * 7"_ns);       // "42"
    const auto list = runScript(u"['a', 'b']"_ns);     // none
    const auto failed = runScript(u"missing + 1"_ns);  // none

    EXPECT_EQ(product, u"42"_ns);
    EXPECT_EQ(list, std::nullopt);
    EXPECT_EQ(failed, std::nullopt);
}

TEST(LibraryExamples, StringsPaths) {
    FSRef reference;
    const bool exists = NSStringExtensions::getFSRef(u"/usr/./bin/.."_ns, &reference);
    const auto path = NSStringExtensions::stringWithFSRef(&reference);  // "/usr"

    EXPECT_TRUE(exists);
    EXPECT_EQ(path, u"/usr"_ns);
}

/// A folder for this test alone, with the user's data home in it.
class LibraryExamplesInAFolder : public ::testing::Test {
  protected:
    void SetUp() override {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "skarnel-examples-XXXXXX").string();
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        folder = pattern;
        setenv("XDG_DATA_HOME", (folder + "/data").c_str(), 1);
    }
    void TearDown() override {
        unsetenv("XDG_DATA_HOME");
        std::filesystem::remove_all(folder);
    }
    std::string folder;
};

TEST_F(LibraryExamplesInAFolder, HelpersFolders) {
    FSRef support;
    const OSStatus status =
        FSFindFolder(kUserDomain, kApplicationSupportFolderType, true, &support);
    const auto name = GetObjectDisplayName(support);

    EXPECT_EQ(status, 0);
    EXPECT_EQ(name, u"data"_ns);
}

TEST(LibraryExamples, HelpersRandomNumbers) {
    std::srand(7);
    int counts[6] = {};
    for (int roll = 0; roll < 600; ++roll) ++counts[Rand(6) % 6];

    for (const int count : counts) EXPECT_GT(count, 40);
}

TEST(LibraryExamples, HelpersBrowserItem) {
    using namespace NSMutableString_IKImageBrowserView;
    NSMutableString item(u"/pictures/a.png"_ns);
    const NSString title = imageTitle(item);  // "a.png"
    setPath(item, u"/pictures/b.png"_ns);

    EXPECT_EQ(title, u"a.png"_ns);
    EXPECT_EQ(imageTitle(item), u"b.png"_ns);
}

TEST(LibraryExamples, DrawingFocus) {
    NSImage image = NSImage::initWithSize({64, 48});
    FocusLock focus(image);
    focus->setColor(NSColor::colorWithDeviceRed(0.9, 0.2, 0.1, 1));
    focus->clipToRect({4, 4, 56, 40});
    focus->fillRect({0, 0, 64, 24});
    focus->setColor(NSColor::blackColor());
    focus->strokeRect({8.5, 8.5, 47, 31});
    const auto corner = focus->bitmapOfRect({0, 0, 16, 16});
    focus.unlock();

    EXPECT_EQ(corner->size(), (CGSize{16, 16}));
    EXPECT_EQ(corner->bitmapData()[3], 0) << "outside the clip";
    EXPECT_EQ(corner->bitmapData()[8 * corner->bytesPerRow() + 4 * 6 + 3], 255) << "inside it";
    EXPECT_TRUE(image.isValid());
}

TEST(LibraryExamples, DrawingException) {
    std::string reason;
    try {
        FocusLock focus(NSImage::initWithSize({0, 48}));
    } catch (const NSException& exception) {
        reason = exception.what();
    }

    EXPECT_EQ(reason, "Can't lock focus on an image without a positive width and height");
}

NSImage photoOf200By100() {
    return library::testCard(200, 100);
}

TEST(LibraryExamples, NiceScalingSizes) {
    const CGSize fit = NiceScaling::scaledSizeToFitSize({200, 100}, {50, 50});      // 50 x 25
    const CGSize odd = NiceScaling::scaledSizeToFitSize({200, 100}, {100, 20});     // 100 x 10
    const CGSize cover = NiceScaling::scaledSizeToCoverSize({200, 100}, {50, 50});  // 100 x 50

    EXPECT_EQ(fit, (CGSize{50, 25}));
    EXPECT_EQ(odd, (CGSize{100, 10}));
    EXPECT_EQ(cover, (CGSize{100, 50}));
}

TEST(LibraryExamples, NiceScalingImages) {
    const NSImage photo = photoOf200By100();
    const auto kept =
        NiceScaling::scaledImageToCoverSize(photo, {50, 50}, InterpolationQuality::High,
                                            NiceScaling::Box::No, NiceScaling::kAlignTopRight);
    const auto boxed = NiceScaling::scaledImageToFitSize(
        photo, {64, 64}, InterpolationQuality::High, NiceScaling::Box::Yes);

    EXPECT_EQ(kept->size(), (CGSize{50, 50}));
    EXPECT_EQ(boxed->size(), (CGSize{64, 64}));
}

TEST(LibraryExamples, ScalingRepresentations) {
    const NSImage photo = photoOf200By100();
    NSImage icon = photo.copy();
    const bool made = Scaling::createRepresentationOfSize(icon, {32, 32});   // true
    const bool again = Scaling::createRepresentationOfSize(icon, {32, 32});  // false: it exists
    const auto best = Scaling::bestRepresentationForSize(icon, {24, 24});    // the 32 x 32 one

    EXPECT_TRUE(made);
    EXPECT_FALSE(again);
    EXPECT_EQ(best->size(), (CGSize{32, 32}));
}

TEST(LibraryExamples, ScalingHue) {
    const NSImage photo = photoOf200By100();
    const auto turned = Scaling::imageByAdjustingHue(photo, 0.25F);
    const auto pale = Scaling::imageByAdjustingHue(photo, 0.0F, 0.5F);

    EXPECT_EQ(turned->size(), photo.size());
    EXPECT_EQ(pale->size(), photo.size());
}

TEST(LibraryExamples, ExtensionsScaling) {
    const NSImage photo = photoOf200By100();
    const std::optional<CGImage> bitmap = NSImageExtensions::getCGImageRef(photo);
    NSImage wide = NSImage::initWithSize({400, 200});
    const NSImage canvas = NSImageExtensions::scaleImageToSize(wide, {100, 100});
    const CGSize changed = wide.size();  // 100 x 50

    EXPECT_EQ(bitmap->width(), 200);
    EXPECT_EQ(canvas.size(), (CGSize{100, 100}));
    EXPECT_EQ(changed, (CGSize{100, 50}));
}

TEST_F(LibraryExamplesInAFolder, ExtensionsRotation) {
    const NSImage photo = photoOf200By100();
    const auto upright = NSImageExtensions::imageByRotatingByDegrees(photo, 90);
    const auto file = NSImageExtensions::temporaryImageByRotatingByDegrees(
        photo, 90, "/somewhere/photo.jpg", folder);

    EXPECT_EQ(upright->size(), (CGSize{100, 200}));
    EXPECT_EQ(file, folder + "/photo.jpg");
    EXPECT_TRUE(std::filesystem::exists(*file));
}

TEST(LibraryExamples, ExtensionsNamedFilter) {
    const NSImage photo = photoOf200By100();
    const auto sepia = NSImageExtensions::imageWithCIFilter(photo, "CISepiaTone");

    EXPECT_EQ(sepia->size(), photo.size());
}

TEST(LibraryExamples, FiltersBlur) {
    const NSImage photo = photoOf200By100();
    CIFilter blur = CIFilter::filterWithName("CIGaussianBlur").value();
    blur.setDefaults();
    blur.setValue(filterImageOf(photo).value(), "inputImage");
    blur.setValue(2.0, "inputRadius");
    const NSImage soft = NSImageExtensions::imageWithCIImage(blur.outputImage().value());

    EXPECT_EQ(soft.size(), (CGSize{212, 112}));
}

TEST(LibraryExamples, FiltersRotation) {
    const NSImage photo = photoOf200By100();
    const CIImage upright = filterImageOf(photo).value();
    const CIImage turned = RotateCIImage(upright, 90);
    const CGRect extent = turned.extent();  // of a 200 x 100 photo: {-100, 0, 100, 200}
    const bool same = RotateCIImage(upright, -90).isSame(upright);  // true

    EXPECT_NEAR(extent.x, -100, 1e-9);
    EXPECT_NEAR(extent.height, 200, 1e-9);
    EXPECT_TRUE(same);
}

TEST(LibraryExamples, FiltersAverageAndFade) {
    const NSImage photo = photoOf200By100();
    const auto average = Average::averageColor(photo);
    const auto dragged = Dragging::imageWithAlphaComponent(photo, 1.0F);
    const auto bitmap = BitmapImageRepFromNSImage(photo);

    EXPECT_TRUE(average);
    EXPECT_EQ(dragged->bitmap()->pixels().bytes[3], 128);
    EXPECT_EQ(bitmap, photo.representations()[0]);
}

}  // namespace
}  // namespace skarnel
