// Expected bytes by hand: coverage c of a colour v over nothing is v * c, rounded.
#include "util/image/focus.h"

#include <cmath>
#include <limits>

#include "util/image/pictures.h"

namespace skarnel {
namespace {

using namespace pictures;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

TEST(Focus, ANewImageStartsTransparentAndHoldsWhatIsDrawn) {
    NSImage image = NSImage::initWithSize({3, 2});
    {
        FocusLock focus(image);
        focus->setColor(NSColor::colorWithDeviceRed(1, 0, 0, 1));
        focus->fillRect({1, 0, 1, 1});
        focus.unlock();
    }
    ASSERT_EQ(image.representations().size(), 1U);
    EXPECT_EQ(image.representations()[0]->size(), (CGSize{3, 2}));
    // The y axis points up: row 0 of the drawing is the bottom row.
    EXPECT_EQ(pixelsOf(image), (std::vector<Pixel>{kClear, kClear, kClear, kClear, kRed, kClear}));
}

TEST(Focus, AnImageWithoutPositiveSidesRaises) {
    for (const CGSize size : {CGSize{0, 5}, CGSize{5, 0}, CGSize{0, 0}, CGSize{-1, 5},
                              CGSize{5, -3}, CGSize{kNan, 5}, CGSize{5, kNan}, CGSize{kInf, 5}}) {
        EXPECT_THROW(FocusLock focus(NSImage::initWithSize(size)), NSException) << size;
        EXPECT_EQ(FocusLock::current(), nullptr) << "no focus is left behind";
    }
}

TEST(Focus, ARaisedExceptionSaysWhy) {
    try {
        FocusLock focus(NSImage::initWithSize({0, 5}));
        FAIL();
    } catch (const NSException& exception) {
        EXPECT_EQ(exception.name(), "NSImageCacheException");
        EXPECT_STREQ(exception.what(),
                     "Can't lock focus on an image without a positive width and height");
    }
}

TEST(Focus, ASizeBeyondMemoryRaises) {
    EXPECT_THROW(FocusLock focus(NSImage::initWithSize({1e9, 1e9})), NSException);
    EXPECT_THROW(FocusLock focus(NSImage::initWithSize({1e30, 1})), NSException);
}

TEST(Focus, AFractionalSizeHasTheNearestWholePixelsAtLeastOne) {
    const auto pixels = [](CGSize size) {
        NSImage image = NSImage::initWithSize(size);
        FocusLock focus(image);
        focus->fillRect(rectFromSize(size));
        focus.unlock();
        EXPECT_EQ(image.size(), size);
        const auto bitmap = image.representations()[0]->bitmap();
        EXPECT_EQ(pixelAt(*bitmap, bitmap->width() - 1, 0), kBlack) << "no edge half covered";
        return CGSize{static_cast<double>(bitmap->width()), static_cast<double>(bitmap->height())};
    };
    EXPECT_EQ(pixels({2.4, 2.6}), (CGSize{2, 3}));
    EXPECT_EQ(pixels({0.1, 1.5}), (CGSize{1, 2}));
    EXPECT_EQ(pixels({0.4, 0.5}), (CGSize{1, 1}));
}

TEST(Focus, LocksNest) {
    NSImage outer = NSImage::initWithSize({1, 1});
    NSImage inner = NSImage::initWithSize({1, 1});
    FocusLock first(outer);
    EXPECT_EQ(FocusLock::current(), &first.context());
    {
        FocusLock second(inner);
        EXPECT_EQ(FocusLock::current(), &second.context());
        FocusLock::current()->fillRect({0, 0, 1, 1});
        second.unlock();
    }
    EXPECT_EQ(FocusLock::current(), &first.context());
    first->setColor(NSColor::whiteColor());
    first->fillRect({0, 0, 1, 1});
    first.unlock();
    EXPECT_EQ(FocusLock::current(), nullptr);
    EXPECT_EQ(pixelAt(inner, 0, 0), kBlack);
    EXPECT_EQ(pixelAt(outer, 0, 0), kWhite);
}

TEST(Focus, ALockThatEndsWithoutUnlockLeavesTheImageAsItWas) {
    NSImage image = plainImage(1, 1, kRed);
    {
        FocusLock focus(image);
        focus->fillRect({0, 0, 1, 1});
    }
    EXPECT_EQ(pixelAt(image, 0, 0), kRed);
    EXPECT_EQ(FocusLock::current(), nullptr);
}

TEST(Focus, AnUnlockWithoutADrawingChangesNothing) {
    NSImage image = plainImage(1, 1, kRed);
    const auto before = image.representations();
    FocusLock focus(image);
    focus.unlock();
    EXPECT_EQ(image.representations(), before);
}

TEST(Focus, ANewImageIsATransparentPictureEvenIfNothingWasDrawn) {
    NSImage image = NSImage::initWithSize({2, 1});
    FocusLock focus(image);
    focus.unlock();
    EXPECT_TRUE(image.isValid());
    EXPECT_EQ(pixelsOf(image), std::vector<Pixel>(2, kClear));
}

TEST(Focus, DrawsOverWhatTheImageShows) {
    NSImage image = imageOf(2, {kRed, kBlue});
    FocusLock focus(image);
    focus->fillRect({1, 0, 1, 1});
    focus.unlock();
    EXPECT_EQ(pixelsOf(image), (std::vector<Pixel>{kRed, kBlack}));
    EXPECT_EQ(image.representations().size(), 1U);
}

TEST(FocusOnRepresentation, ReplacesItInItsPlaceAndKeepsItsSizeInPoints) {
    NSImage image = NSImage::initWithSize({4, 4});
    const auto first = plainRepresentation(1, 1, kRed);
    const auto second = plainRepresentation(4, 2, kRed);
    const auto third = plainRepresentation(3, 3, kBlue);
    second->setSize({2, 1});  // two pixels a point
    for (const auto& each : {first, second, third}) image.addRepresentation(each);
    FocusLock focus(image, second);
    EXPECT_EQ(focus->size(), (CGSize{2, 1}));
    focus->fillRect({0, 0, 1, 1});
    focus.unlock();
    const auto all = image.representations();
    ASSERT_EQ(all.size(), 3U);
    EXPECT_EQ(all[0], first);
    EXPECT_EQ(all[2], third);
    EXPECT_EQ(all[1]->size(), (CGSize{2, 1}));
    const std::vector<Pixel> row{kBlack, kBlack, kRed, kRed};
    std::vector<Pixel> expected = row;
    expected.insert(expected.end(), row.begin(), row.end());
    EXPECT_EQ(pixelsOf(*all[1]->bitmap()), expected);
}

TEST(FocusOnRepresentation, RaisesWithoutAPositiveSize) {
    NSImage image = plainImage(2, 2, kRed);
    image.representations()[0]->setSize({0, 2});
    EXPECT_THROW(FocusLock focus(image, image.representations()[0]), NSException);
}

/// What a drawing leaves in a fresh image.
template <typename Draw>
CGImage drawn(CGSize size, Draw draw) {
    NSImage image = NSImage::initWithSize(size);
    FocusLock focus(image);
    draw(focus.context());
    auto bitmap = focus->bitmapOfRect(rectFromSize(size));
    return bitmap->bitmap().value();
}

TEST(Drawing, FillsCoverEdgePixelsByArea) {
    const CGImage bitmap = drawn({3, 1}, [](NSGraphicsContext& context) {
        context.setColor(NSColor::whiteColor());
        context.fillRect({0.25, 0, 2, 1});
    });
    // Coverage 0.75, 1, 0.25: 191.25, 255, 63.75.
    EXPECT_NEAR(pixelAt(bitmap, 0, 0).a, 191, 1);
    EXPECT_EQ(pixelAt(bitmap, 1, 0), kWhite);
    EXPECT_NEAR(pixelAt(bitmap, 2, 0).a, 64, 1);
}

TEST(Drawing, WithoutAntialiasingAPixelIsCoveredByItsCentreOrNot) {
    const CGImage bitmap = drawn({3, 1}, [](NSGraphicsContext& context) {
        context.setShouldAntialias(false);
        context.setColor(NSColor::whiteColor());
        context.fillRect({0.25, 0, 2, 1});
    });
    EXPECT_EQ(pixelsOf(bitmap), (std::vector<Pixel>{kWhite, kWhite, kClear}));
}

TEST(Drawing, AStrokeIsOnePointWideAndCentredOnTheEdge) {
    const CGImage bitmap = drawn({6, 6}, [](NSGraphicsContext& context) {
        context.strokeRect({1.5, 1.5, 3, 3});
    });
    // The line covers exactly the ring of pixels 1 and 4.
    for (int y = 0; y < 6; ++y)
        for (int x = 0; x < 6; ++x) {
            const bool inside = x >= 1 && x <= 4 && y >= 1 && y <= 4;
            const bool hollow = x >= 2 && x <= 3 && y >= 2 && y <= 3;
            EXPECT_EQ(pixelAt(bitmap, x, y), inside && !hollow ? kBlack : kClear) << x << ' ' << y;
        }
}

TEST(Drawing, AStrokesPointIsAsManyPixelsAsTheDestinationsIs) {
    NSImage image = NSImage::initWithSize({4, 4});
    const auto fine = plainRepresentation(8, 4, kClear);  // two pixels a point across, one up
    fine->setSize({4, 4});
    image.addRepresentation(fine);
    FocusLock focus(image, fine);
    focus->strokeRect({0.5, 0.5, 3, 3});
    focus.unlock();
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 8; ++x) {
            const bool hollow = x >= 2 && x <= 5 && y >= 1 && y <= 2;
            EXPECT_EQ(pixelAt(*image.representations()[0]->bitmap(), x, y),
                      hollow ? kClear : kBlack)
                << x << ' ' << y;
        }
}

TEST(Drawing, TheClipKeepsWhatLiesOutside) {
    const CGImage bitmap = drawn({3, 1}, [](NSGraphicsContext& context) {
        context.clipToRect({1, 0, 1, 1});
        context.fillRect({0, 0, 3, 1});
    });
    EXPECT_EQ(pixelsOf(bitmap), (std::vector<Pixel>{kClear, kBlack, kClear}));
}

TEST(Drawing, CopyReplacesAndSourceOverLaysOver) {
    const NSImage half = plainImage(1, 1, {0, 0, 0, 128});
    const auto over = [&half](CompositeOperation operation) {
        return pixelAt(drawn({1, 1},
                             [&](NSGraphicsContext& context) {
                                 context.setColor(NSColor::whiteColor());
                                 context.fillRect({0, 0, 1, 1});
                                 context.drawImage(half, {0, 0, 1, 1}, {0, 0, 1, 1}, operation, 1);
                             }),
                       0, 0);
    };
    EXPECT_EQ(over(CompositeOperation::Copy), (Pixel{0, 0, 0, 128}));
    // 255 * (255 - 128) / 255 = 127.
    EXPECT_EQ(over(CompositeOperation::SourceOver), (Pixel{127, 127, 127, 255}));
}

TEST(Drawing, DestinationInMultipliesByTheSourcesAlpha) {
    const CGImage bitmap = drawn({1, 1}, [](NSGraphicsContext& context) {
        context.setColor(NSColor::whiteColor());
        context.fillRect({0, 0, 1, 1});
        context.setColor(NSColor::colorWithDeviceWhite(0, 0.5));
        context.fillRect({0, 0, 1, 1}, CompositeOperation::DestinationIn);
    });
    EXPECT_NEAR(pixelAt(bitmap, 0, 0).a, 127.5, 0.5);
    EXPECT_EQ(pixelAt(bitmap, 0, 0).r, pixelAt(bitmap, 0, 0).a);
}

TEST(Drawing, APartOfAnImageIsTakenInItsPoints) {
    const NSImage image = imageOf(2, {kRed, kGreen, kBlue, kWhite});  // blue is at the origin
    const CGImage bitmap = drawn({1, 1}, [&image](NSGraphicsContext& context) {
        context.drawImage(image, {0, 0, 1, 1}, {0, 0, 1, 1}, CompositeOperation::SourceOver, 1);
    });
    EXPECT_EQ(pixelAt(bitmap, 0, 0), kBlue);
}

TEST(Drawing, AResizedImageIsDrawnStretchedToItsSize) {
    NSImage image = imageOf(2, {kRed, kBlue});
    image.setSize({4, 2});
    const CGImage bitmap = drawn({4, 2}, [&image](NSGraphicsContext& context) {
        context.setImageInterpolation(InterpolationQuality::None);
        context.compositeImage(image, {0, 0}, CompositeOperation::Copy);
    });
    EXPECT_EQ(pixelsOf(bitmap), (std::vector<Pixel>{kRed, kRed, kBlue, kBlue,  //
                                                    kRed, kRed, kBlue, kBlue}));
}

TEST(Drawing, TheRepresentationOfTheImagesSizeIsTakenBeforeALargerOne) {
    NSImage image = NSImage::initWithSize({1, 1});
    image.addRepresentation(plainRepresentation(8, 8, kRed));
    image.addRepresentation(plainRepresentation(1, 1, kBlue));
    const auto shown = [&image] {
        return pixelAt(drawn({1, 1},
                             [&image](NSGraphicsContext& context) {
                                 context.compositeImage(image, {0, 0}, CompositeOperation::Copy);
                             }),
                       0, 0);
    };
    EXPECT_EQ(shown(), kBlue);
    image.removeRepresentation(image.representations()[1]);
    EXPECT_EQ(shown(), kRed);
}

TEST(Drawing, AnImageWithNothingToDrawDrawsNothing) {
    NSImage shown = NSImage::initWithSize({1, 1});
    FocusLock focus(shown);
    focus->compositeImage(NSImage::initWithSize({1, 1}), {0, 0}, CompositeOperation::Copy);
    focus->drawRepresentation(nullptr, {0, 0, 1, 1});
    NSImage flat = plainImage(1, 1, kRed);
    flat.setSize({1, 0});
    focus->drawImage(flat, {0, 0, 1, 1}, {0, 0, 1, 1}, CompositeOperation::Copy, 1);
    EXPECT_FALSE(focus->isChanged());
}

TEST(Capture, CutsOutTheAreaAsItIsNow) {
    NSImage image = imageOf(3, {kRed, kGreen, kBlue, kWhite, kBlack, kClear});
    FocusLock focus(image);
    const auto part = focus->bitmapOfRect({1, 0, 2, 1});
    ASSERT_TRUE(part);
    EXPECT_EQ(part->size(), (CGSize{2, 1}));
    EXPECT_EQ(pixelsOf(*part->bitmap()), (std::vector<Pixel>{kBlack, kClear}));
    EXPECT_EQ(focus->bitmapOfRect({0, 0, 0, 1}), nullptr);
}

}  // namespace
}  // namespace skarnel
