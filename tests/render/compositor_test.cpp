#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "imaging/cgcontext.h"
#include "imaging/kernels/targets.h"
#include "imaging/row_source.h"
#include "imaging/test_images.h"
#include "oracle.h"
#include "render/reflection.h"

namespace skarnel {
namespace {

using test::imageOf;
using test::noiseImage;
using test::pixelAt;
using test::samePixels;
using test::solidImage;
using test::validNoise;
namespace oracle = test::oracle;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

struct Settings {
    float width = 0;
    float height = 100;
    float offset = 0;
    float start = 0;
    float gradient = 7;
    RenderInputs inputs{};
};

std::optional<ReflectionResult> render(const CGImage& picture, const Settings& s) {
    return addReflectionToCGImage(picture, s.width, s.height, s.offset, s.start, s.gradient,
                                  s.inputs);
}

/// The pipeline as it was thought out: one image after the other, each drawn into the next.
std::optional<CGImage> stepByStep(const CGImage& picture, const Settings& s) {
    const auto mirrored = ReflectCIImage(CIImage::imageWithCGImage(picture));
    const auto shaped =
        PerspectiveCIImage(*mirrored, s.width, s.height, s.start, s.gradient, s.inputs.peakOpacity);
    const auto reflection = shaped ? CIImageGetCGImage(*shaped) : std::nullopt;
    if (!reflection) return std::nullopt;
    const double yTop = (static_cast<double>(s.offset) / 100 + 1) * reflection->height();
    const int width = std::max(picture.width(), reflection->width());
    const auto canvas = MyCreateBitmapContext(width, static_cast<int>(picture.height() + yTop));
    if (!canvas) return std::nullopt;
    const CGRect whole{0, 0, 1.0 * width, 1.0 * canvas->height()};
    canvas->clearRect(whole);
    if (s.inputs.background) {
        canvas->saveState();
        canvas->setFillColor(*s.inputs.background);
        canvas->fillRect(whole);
        canvas->restoreState();
    }
    canvas->drawImage(*reflection, {0, 0, 1.0 * width, 1.0 * reflection->height()});
    const int x = reflection->width() / 2 - picture.width() / 2;
    canvas->drawImage(picture, {1.0 * x, yTop, 1.0 * picture.width(), 1.0 * picture.height()});
    const CGImage snapshot = *canvas->createImage();
    return perspectiveImage(snapshot, s.inputs.imagePerspective).value_or(snapshot);
}

TEST(Compositor, OnePassGivesTheBytesOfTheStepsOneByOne) {
    const DeviceColor half{0.2, 0.9, 0.4, 0.5};
    const Settings table[] = {
        {},
        {10, 60, 5, 10, 7, {200, {}, 30}},
        {10, 60, 5, 10, 7, {200, half, 30}},
        {0, 50, 20, 0, 7, {255, {}, 50}},
        {0, 100, -20, 0, 7, {200, {}, 50}},
        {0, 100, -150, 0, 7, {200, {}, 50}},
        {-20, 100, 0, 0, 7, {200, {}, 50}},
        {-20, 70, 13, 0, 7, {200, half, 80}},
        {25, 133, 7.7F, 30, 4, {400, {}, 10}},
        {25, -60, 7.7F, 30, 4, {200, half, 60}},
        {3, 33.3F, 1.1F, 0, 0, {200, DeviceColor{1, 0, 0, 1}, 99}},
        {150, 10, 300, 0, 12, {200, {}, 25}},
    };
    for (const Settings& s : table)
        for (const auto& [width, height] : {std::pair{61, 47}, {300, 21}, {5, 90}, {1, 30}}) {
            const CGImage picture = validNoise(width, height, 31);
            const auto expected = stepByStep(picture, s);
            const auto actual = render(picture, s);
            ASSERT_EQ(actual.has_value(), expected.has_value());
            if (!actual) continue;
            EXPECT_TRUE(samePixels(actual->image, *expected))
                << width << " x " << height << ", width " << s.width << " height " << s.height
                << " offset " << s.offset << " turn " << s.inputs.imagePerspective;
        }
}

std::optional<ReflectionResult> renderWhenRead(const CGImage& picture, const Settings& s) {
    const RenderInputReaders readers([&] { return s.inputs.peakOpacity; },
                                     [&] { return s.inputs.background; },
                                     [&] { return s.inputs.imagePerspective; });
    return addReflectionToCGImage(picture, s.width, s.height, s.offset, s.start, s.gradient,
                                  readers, Drawing::WhenRead);
}

const DeviceColor kHalfClear{0.2, 0.9, 0.4, 0.5};
const Settings kReadCases[] = {
    {},
    {10, 60, 5, 10, 7, {200, {}, 30}},
    {10, 60, 5, 10, 7, {200, kHalfClear, 80}},
    {0, 50, 20.5F, 0, 7, {255, {}, 50}},
    {0, 100, -150, 0, 7, {200, {}, 50}},
    {-20, 70, 13, 0, 7, {200, kHalfClear, 50}},
    {25, -60, 7.7F, 30, 4, {400, {}, 10}},
    {30, 80, 12, 0, 7, {200, {}, 50}},
    {100, 160, 50, 0, 7, {255, {}, 50}},
    {30, 40, -20.5F, 0, 7, {200, kHalfClear, 50}},
};

/// All pixels of a row; what is said to lie in memory beside the content is looked at there.
std::vector<std::uint8_t> wholeRow(const SourceRow& row, int width) {
    const auto bytes = [](int pixels) { return std::ptrdiff_t{4} * pixels; };
    std::vector<std::uint8_t> pixels(static_cast<std::size_t>(bytes(width)));
    if (row.isWhole)
        std::copy_n(row.bytes - bytes(row.first), bytes(width), pixels.begin());
    else
        std::copy_n(row.bytes, bytes(row.end - row.first), pixels.begin() + bytes(row.first));
    return pixels;
}

TEST(Compositor, RowsReadOneByOneAreThoseOfTheWholeRender) {
    const CGImage picture = validNoise(61, 47, 5);
    for (const Settings& s : kReadCases) {
        const CGImage whole = render(picture, s)->image;
        EXPECT_EQ(whole.rowSource(), nullptr);
        const CGImage undrawn = renderWhenRead(picture, s)->image;
        RowSource* source = undrawn.rowSource();
        ASSERT_NE(source, nullptr);
        const auto rowBytes = std::size_t{4} * static_cast<std::size_t>(whole.width());
        std::vector<std::uint8_t> scratch(rowBytes);
        for (int y = whole.height() - 1; y >= 0; --y)
            ASSERT_EQ(std::memcmp(wholeRow(source->row(y, scratch.data()), whole.width()).data(),
                                  whole.pixels().row(y), rowBytes),
                      0)
                << "row " << y << ", height " << s.height << " turn " << s.inputs.imagePerspective;
        EXPECT_TRUE(samePixels(undrawn, whole));
        EXPECT_EQ(undrawn.rowSource(), nullptr);
    }
}

TEST(Compositor, RowsSayWhatTheyHaveBesideTheirContent) {
    const CGImage picture = validNoise(61, 47, 5);
    const CGImage undrawn = renderWhenRead(picture, {100, 100, 100, 0, 7, {255, {}, 50}})->image;
    std::vector<std::uint8_t> scratch(std::size_t{4} * 183);
    // 61 columns of the picture amid 183, a gap of 47 rows, and a trapezoid whose last row has no
    // inset.
    const SourceRow inPicture = undrawn.rowSource()->row(10, scratch.data());
    EXPECT_EQ(std::pair(inPicture.first, inPicture.end), std::pair(61, 122));
    EXPECT_EQ(inPicture.bytes, picture.pixels().row(10)) << "the picture's own row";
    const SourceRow inGap = undrawn.rowSource()->row(55, scratch.data());
    EXPECT_GE(inGap.first, inGap.end);
    EXPECT_TRUE(inGap.isWhole);
    const SourceRow atSeam = undrawn.rowSource()->row(undrawn.height() - 47, scratch.data());
    EXPECT_EQ(atSeam.first, 61);
    const SourceRow last = undrawn.rowSource()->row(undrawn.height() - 1, scratch.data());
    EXPECT_LE(last.first, 1);
    EXPECT_EQ(last.end, 183);
}

TEST(Compositor, AnUndrawnResultIsScaledToTheBytesOfADrawnOne) {
    const CGImage picture = validNoise(61, 47, 6);
    const auto drawnInto = [](const CGImage& image, CGRect place) {
        const auto context = CGContext::create(70, 90);
        context->drawImage(image, place);
        return std::move(*context).takeImage();
    };
    for (const Settings& s : kReadCases) {
        const CGImage whole = render(picture, s)->image;
        const CGImage undrawn = renderWhenRead(picture, s)->image;
        for (const CGRect& place :
             {CGRect{0, 0, 30, 45}, CGRect{3.25, -4.5, 20.75, 31}, CGRect{-200, -300, 600, 700},
              CGRect{1, 2, 1.0 * whole.width(), 1.0 * whole.height()}, CGRect{5, 5, 60, 3.3}})
            EXPECT_TRUE(samePixels(drawnInto(undrawn, place), drawnInto(whole, place)))
                << "height " << s.height << " into " << place.width << " x " << place.height;
        EXPECT_NE(undrawn.rowSource(), nullptr) << "scaling needs no bitmap of the whole size";
    }
}

// Turned results of more than 256 columns are made strip by strip. The last place wants more rows
// for each of its own than a strip keeps.
TEST(Compositor, AWideTurnIsScaledStripByStripToTheBytesOfADrawnOne) {
    const CGImage picture = validNoise(700, 90, 8);
    const auto drawnInto = [](const CGImage& image, CGRect place) {
        const auto context = CGContext::create(300, 80);
        context->drawImage(image, place);
        return std::move(*context).takeImage();
    };
    const Settings cases[] = {{0, 100, 0, 0, 7, {200, {}, 20}},
                              {40, 60, 5, 10, 7, {200, {}, 70}},
                              {10, -60, 5, 10, 7, {200, kHalfClear, 80}}};
    for (const Settings& s : cases) {
        const CGImage whole = render(picture, s)->image;
        const CGImage undrawn = renderWhenRead(picture, s)->image;
        ASSERT_NE(undrawn.rowSource(), nullptr);
        EXPECT_GT(undrawn.rowSource()->strips(), 1);
        for (const CGRect& place :
             {CGRect{0, 0, 280, 75}, CGRect{-300, -20, 900, 400},
              CGRect{0.5, 1.5, 1.0 * whole.width(), 1.0 * whole.height()}, CGRect{3, 3, 250, 4.5}})
            EXPECT_TRUE(samePixels(drawnInto(undrawn, place), drawnInto(whole, place)))
                << "turn " << s.inputs.imagePerspective << " into " << place.width << " x "
                << place.height;
        EXPECT_NE(undrawn.rowSource(), nullptr) << "scaling needs no bitmap of the whole size";
        EXPECT_TRUE(samePixels(undrawn, whole));
    }
}

TEST(Compositor, EachStripGivesItsColumnsOfEveryRow) {
    const CGImage picture = validNoise(700, 90, 9);
    const Settings s{20, 70, 5, 10, 7, {200, {}, 30}};
    const CGImage whole = render(picture, s)->image;
    const CGImage undrawn = renderWhenRead(picture, s)->image;
    RowSource* source = undrawn.rowSource();
    ASSERT_NE(source, nullptr);
    int next = 0;
    for (int strip = 0; strip < source->strips(); ++strip) {
        source->beginStrip(strip);
        int end = next;
        for (int y = 0; y < whole.height(); ++y) {
            const SourceRow row = source->row(y, nullptr);
            ASSERT_EQ(row.first, next);
            ASSERT_GT(row.end, next);
            end = row.end;
            ASSERT_EQ(std::memcmp(row.bytes, whole.pixels().row(y) + std::ptrdiff_t{4} * next,
                                  std::size_t{4} * static_cast<std::size_t>(end - next)),
                      0)
                << "strip " << strip << " row " << y;
        }
        next = end;
    }
    EXPECT_EQ(next, whole.width());
}

TEST(Compositor, AnUndrawnResultOutlivesThePictureAndIsDrawnOnceForAllCopies) {
    std::optional<CGImage> picture = validNoise(20, 10, 7);
    const CGImage whole = render(*picture, {})->image;
    const CGImage undrawn = renderWhenRead(*picture, {})->image;
    picture.reset();
    const CGImage& same = undrawn;
    const CGImage copy(same);
    EXPECT_TRUE(copy.isSame(undrawn));
    EXPECT_TRUE(samePixels(copy, whole));
    EXPECT_EQ(undrawn.rowSource(), nullptr);
    EXPECT_EQ(undrawn.pixels().bytes, copy.pixels().bytes);
}

TEST(Compositor, TheDefaultsPutThePictureOverItsFadedMirror) {
    const CGImage picture = noiseImage(37, 23, 3);
    const auto result = render(picture, {});
    ASSERT_TRUE(result);
    ASSERT_EQ(result->image.width(), 37);
    ASSERT_EQ(result->image.height(), 46);
    EXPECT_EQ(result->turn, TurnOutcome::Turned);
    std::vector<std::uint8_t> mirror;
    for (int y = 22; y >= 0; --y) {
        const std::uint8_t* row = picture.pixels().row(y);
        EXPECT_EQ(std::memcmp(result->image.pixels().row(y), row, 4 * 37), 0);
        mirror.insert(mirror.end(), row, row + 4 * 37);
    }
    const auto expected = oracle::shape(imageOf(37, 23, mirror).pixels(), {});
    EXPECT_EQ(std::memcmp(result->image.pixels().row(23), expected.data(), expected.size()), 0);
}

TEST(Compositor, ATurnOf0Or50Or100LeavesThePixels) {
    const CGImage picture = noiseImage(30, 20, 4);
    const auto still = render(picture, {10, 100, 50, 0, 7, {200, {}, 50}});
    for (const float turn : {0.0F, 100.0F})
        EXPECT_TRUE(
            samePixels(render(picture, {10, 100, 50, 0, 7, {200, {}, turn}})->image, still->image));
}

TEST(Compositor, AWidthOf10PutsThePictureOverTheNarrowTopRow) {
    const auto result = render(solidImage(300, 100, {1, 2, 3, 255}), {10, 100, 0, 0, 0});
    ASSERT_TRUE(result);
    ASSERT_EQ(result->image.width(), 360);
    EXPECT_EQ(pixelAt(result->image, 29, 50)[3], 0);
    EXPECT_EQ(pixelAt(result->image, 30, 50)[3], 255);
    EXPECT_EQ(pixelAt(result->image, 329, 50)[3], 255);
    EXPECT_EQ(pixelAt(result->image, 330, 50)[3], 0);
    EXPECT_EQ(pixelAt(result->image, 0, 199)[3], 200);
    EXPECT_EQ(pixelAt(result->image, 359, 199)[3], 200);
}

TEST(Compositor, AHalfHeightReflectionMakesTheCanvasHalfTaller) {
    EXPECT_EQ(render(noiseImage(8, 31, 1), {0, 50})->image.height(), 31 + 15);
}

TEST(Compositor, AnOffsetOf20LeavesAGapAndOneOfMinus20SlidesUnderThePicture) {
    const CGImage picture = solidImage(10, 100, {9, 9, 9, 255});
    const auto gap = render(picture, {0, 100, 20, 0, 0});
    ASSERT_EQ(gap->image.height(), 220);
    EXPECT_EQ(pixelAt(gap->image, 5, 99)[3], 255);
    EXPECT_EQ(pixelAt(gap->image, 5, 100)[3], 0);
    EXPECT_EQ(pixelAt(gap->image, 5, 119)[3], 0);
    EXPECT_EQ(pixelAt(gap->image, 5, 120)[3], 200);
    const auto under = render(picture, {0, 100, -20, 0, 0});
    ASSERT_EQ(under->image.height(), 180);
    EXPECT_EQ(pixelAt(under->image, 5, 99)[3], 255);
    EXPECT_EQ(pixelAt(under->image, 5, 100)[3], 200);
}

TEST(Compositor, AHalfTransparentBackgroundFillsGapAndCorners) {
    const auto result = render(solidImage(20, 20, {0, 0, 255, 255}),
                               {50, 100, 50, 0, 0, {200, DeviceColor{1, 0, 0, 0.5}, 50}});
    ASSERT_TRUE(result);
    EXPECT_EQ(pixelAt(result->image, 0, 0), (std::vector<int>{128, 0, 0, 128}));
    EXPECT_EQ(pixelAt(result->image, 20, 25), (std::vector<int>{128, 0, 0, 128}));
    // The reflection over it: 128 * (255 - 200) / 255 = 27.6; 200 + 27.6.
    EXPECT_EQ(pixelAt(result->image, 20, 40), (std::vector<int>{28, 0, 200, 228}));
}

TEST(Compositor, ANegativeWidthStretchesTheReflectionAndShiftsThePictureLeft) {
    // W1 = 300 - 60 = 240; the picture starts at 120 - 150 = -30.
    std::vector<std::uint8_t> columns;
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 300; ++x)
            for (const int k : {x % 256, x / 256, 0, 255})
                columns.push_back(static_cast<std::uint8_t>(k));
    const auto result = render(imageOf(300, 30, columns), {-10, 100, 0, 0, 0});
    ASSERT_TRUE(result);
    ASSERT_EQ(result->image.width(), 300);
    EXPECT_EQ(pixelAt(result->image, 0, 5)[0], 30);
    EXPECT_EQ(pixelAt(result->image, 269, 5), (std::vector<int>{43, 1, 0, 255}));
    EXPECT_EQ(pixelAt(result->image, 270, 5)[3], 0);
    EXPECT_EQ(pixelAt(result->image, 299, 45)[3], 200);
}

TEST(Compositor, SettingsWithoutAResultGiveNone) {
    const CGImage picture = noiseImage(20, 20, 1);
    EXPECT_FALSE(render(picture, {0, 0}));
    EXPECT_FALSE(render(picture, {0, kNaN}));
    EXPECT_FALSE(render(picture, {0, kInfinity}));
    EXPECT_FALSE(render(picture, {0, 100, kNaN}));
    EXPECT_FALSE(render(picture, {0, 100, kInfinity}));
    EXPECT_FALSE(render(picture, {0, 100, -200}));  // no canvas row
    EXPECT_FALSE(render(picture, {-50}));           // no column
    EXPECT_FALSE(render(picture, {0, 1e9F}));
    EXPECT_FALSE(render(picture, {2e9F}));
}

TEST(Compositor, ATurnThatIsNoNumberLeavesTheUnturnedCanvas) {
    const CGImage picture = noiseImage(20, 20, 1);
    for (const float turn : {kNaN, kInfinity, -kInfinity}) {
        const auto result = render(picture, {0, 100, 0, 0, 7, {200, {}, turn}});
        ASSERT_TRUE(result);
        EXPECT_EQ(result->turn, TurnOutcome::Unturned);
        EXPECT_TRUE(samePixels(result->image, render(picture, {})->image));
    }
}

TEST(Compositor, AnUprightReflectionComesFromANegativeHeight) {
    std::vector<std::uint8_t> rows;
    for (int y = 0; y < 4; ++y)
        rows.insert(rows.end(), {static_cast<std::uint8_t>(50 * y), 0, 0, 255});
    const auto result = render(imageOf(1, 4, rows), {0, -100, 0, 0, 0, {255, {}, 50}});
    ASSERT_TRUE(result);
    for (int y = 0; y < 8; ++y) EXPECT_EQ(pixelAt(result->image, 0, y)[0], 50 * (y % 4));
}

TEST(Compositor, AFractionalOffsetSharesOutTheEdgeRows) {
    // yTop = 1.05 * 10 = 10.5: half of the top row is cut off, half a row stays over the gap.
    const auto result = render(solidImage(4, 10, {100, 100, 100, 200}), {0, 100, 5, 0, 0});
    ASSERT_EQ(result->image.height(), 20);
    EXPECT_EQ(pixelAt(result->image, 1, 0)[3], 200);
    EXPECT_EQ(pixelAt(result->image, 1, 8)[3], 200);
    // Half covered over the reflection's first row, 200 * 200 / 255 = 156.
    EXPECT_EQ(pixelAt(result->image, 1, 9)[3], 100);
}

TEST(Compositor, ThreeSamplesAPixelAreDrawnOpaque) {
    const std::vector<std::uint8_t> rgb{1, 2, 3, 4, 5, 6};
    const auto picture = CGImage::copyOf({rgb.data(), 1, 2, 3, 3});
    const auto result = render(*picture, {});
    ASSERT_TRUE(result);
    EXPECT_EQ(pixelAt(result->image, 0, 0), (std::vector<int>{1, 2, 3, 255}));
    EXPECT_EQ(pixelAt(result->image, 0, 1), (std::vector<int>{4, 5, 6, 255}));
}

TEST(Compositor, InputsAreAskedForInTheirOrderAndNotAfterAFailure) {
    std::string asked;
    const RenderInputReaders readers(
        [&] {
            asked += "opacity ";
            return 200.0F;
        },
        [&] {
            asked += "background ";
            return std::optional<DeviceColor>{};
        },
        [&] {
            asked += "turn ";
            return 50.0F;
        });
    const CGImage picture = noiseImage(9, 9, 1);
    EXPECT_TRUE(addReflectionToCGImage(picture, 0, 100, 0, 0, 7, readers));
    EXPECT_EQ(asked, "opacity background turn ");
    asked.clear();
    EXPECT_FALSE(addReflectionToCGImage(picture, 0, 0, 0, 0, 7, readers));
    EXPECT_EQ(asked, "");
    EXPECT_FALSE(addReflectionToCGImage(picture, -60, 100, 0, 0, 7, readers));
    EXPECT_EQ(asked, "opacity ");
    asked.clear();
    EXPECT_FALSE(addReflectionToCGImage(picture, 0, 100, -300, 0, 7, readers));
    EXPECT_EQ(asked, "opacity ");
}

TEST(Compositor, EveryTargetRendersTheSameImage) {
    const CGImage picture = validNoise(421, 133, 9);
    const Settings s{10, 60, 5, 10, 7, {200, DeviceColor{0, 0.5, 1, 0.25}, 30}};
    std::optional<ReflectionResult> expected;
    {
        const kernels::ScopedTarget scalarOnly(kernels::kScalarTarget);
        expected = render(picture, s);
    }
    for (const kernels::Target target : kernels::supportedTargets()) {
        const kernels::ScopedTarget only(target);
        EXPECT_TRUE(samePixels(render(picture, s)->image, expected->image))
            << kernels::targetName(target);
    }
}

TEST(Compositor, ALargeResultHasTheSameBytesThoughItIsStreamed) {
    const CGImage picture = validNoise(1501, 1400, 10);
    for (const float turn : {50.0F, 30.0F}) {
        const Settings s{10, 60, 5, 10, 7, {200, {}, turn}};
        EXPECT_TRUE(samePixels(render(picture, s)->image, *stepByStep(picture, s)));
    }
}

TEST(Mirror, ReversesTheRowsAndKeepsTheExtent) {
    const CGImage picture = noiseImage(5, 4, 2);
    const auto mirrored = ReflectCIImage(CIImage::imageWithCGImage(picture));
    ASSERT_TRUE(mirrored);
    EXPECT_EQ(mirrored->extent(), (CGRect{0, 0, 5, 4}));
    const auto image = CIImageGetCGImage(*mirrored);
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 5; ++x) EXPECT_EQ(pixelAt(*image, x, y), pixelAt(picture, x, 3 - y));
}

TEST(CIImageGetCGImage, TruncatesTheExtentAndGivesNoneForNothing) {
    const CIImage image = CIImage::imageWithCGImage(noiseImage(10, 10, 1));
    const auto scaled = [&](double x, double y) {
        auto filter = CIFilter::filterWithName("CIAffineTransform");
        filter->setValue(image, "inputImage");
        filter->setValue(AffineTransform::scale(x, y), "inputTransform");
        return CIImageGetCGImage(*filter->outputImage());
    };
    EXPECT_EQ(scaled(1, 0.77)->height(), 7);
    EXPECT_FALSE(scaled(1, 0));
    EXPECT_FALSE(scaled(0.05, 1));
    EXPECT_FALSE(scaled(1e6, 1e6));  // 4e14 bytes are no 32-bit number
}

TEST(MyCreateBitmapContext, IsTransparentOrNone) {
    const auto canvas = MyCreateBitmapContext(3, 2);
    ASSERT_TRUE(canvas);
    EXPECT_TRUE(samePixels(*canvas->createImage(), solidImage(3, 2, {0, 0, 0, 0})));
    EXPECT_FALSE(MyCreateBitmapContext(0, 2));
    EXPECT_FALSE(MyCreateBitmapContext(3, -1));
}

}  // namespace
}  // namespace skarnel
