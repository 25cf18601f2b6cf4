// Expected places are worked out by hand from: view = viewport / 2 + (image - centre) * factor,
// with the content's top left corner brought to a whole device pixel.
#include "qt/view_transform.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace skarnel {
namespace {

ViewTransform made(CGSize viewport, CGSize image) {
    ViewTransform view;
    view.setViewport(viewport);
    view.setImageSize(image);
    return view;
}

void expectNear(CGPoint actual, CGPoint expected, double tolerance = 1e-9) {
    EXPECT_NEAR(actual.x, expected.x, tolerance);
    EXPECT_NEAR(actual.y, expected.y, tolerance);
}

struct RatioRow {
    const char* name;
    double ratio;
    double logical;
    double device;
};

TEST(ViewTransform, DevicePixelsAreWholeAtEveryRatio) {
    // 1201 * 1.25 = 1501.25; 801 * 1.5 = 1201.5; 3 * 1.3333333333333333 is 4 but for rounding.
    const RatioRow rows[] = {
        {"1", 1.0, 801, 801},        {"1.25", 1.25, 800, 1000}, {"1.25 cut", 1.25, 1201, 1501},
        {"1.5 cut", 1.5, 801, 1201}, {"2", 2.0, 801, 1602},     {"third", 4.0 / 3, 3, 4},
        {"nothing", 2.0, 0, 0},      {"negative", 1.0, -5, 0},
    };
    for (const RatioRow& row : rows)
        EXPECT_EQ(ViewTransform::devicePixels(row.logical, row.ratio), row.device) << row.name;
}

TEST(ViewTransform, AHundredPercentIsOneImagePixelOnOneDevicePixelAtEveryRatio) {
    for (const double ratio : {1.0, 1.25, 1.5, 2.0}) {
        ViewTransform view =
            made({ViewTransform::devicePixels(800, ratio), ViewTransform::devicePixels(600, ratio)},
                 {100, 50});
        view.setFactor(1.0);
        const CGPoint a = view.toView({10, 20});
        const CGPoint b = view.toView({11, 21});
        expectNear({b.x - a.x, b.y - a.y}, {1, 1});
        EXPECT_EQ(view.content().x, std::floor(view.content().x));
        EXPECT_EQ(view.content().y, std::floor(view.content().y));
    }
}

struct FitRow {
    const char* name;
    CGSize viewport;
    CGSize image;
    double factor;
};

TEST(ViewTransform, FitShowsTheWholePictureAsLargeAsItGoes) {
    const FitRow rows[] = {
        {"same size", {800, 600}, {800, 600}, 1.0},
        {"shrinks by the tighter side", {800, 600}, {4000, 1200}, 0.2},
        {"shrinks by the height", {800, 600}, {800, 1200}, 0.5},
        {"enlarges", {800, 600}, {100, 100}, 6.0},
        {"no viewport", {0, 600}, {100, 100}, 1.0},
        {"no picture", {800, 600}, {0, 0}, 1.0},
    };
    for (const FitRow& row : rows) {
        ViewTransform view = made(row.viewport, row.image);
        view.zoomToFit();
        EXPECT_DOUBLE_EQ(view.factor(), row.factor) << row.name;
        EXPECT_TRUE(view.fits()) << row.name;
    }
}

TEST(ViewTransform, FitFollowsTheViewportAndTheNextPicture) {
    ViewTransform view = made({800, 600}, {400, 300});
    view.zoomToFit();
    EXPECT_DOUBLE_EQ(view.factor(), 2.0);
    view.setViewport({400, 600});
    EXPECT_DOUBLE_EQ(view.factor(), 1.0);
    view.setImageSize({800, 300});
    EXPECT_DOUBLE_EQ(view.factor(), 0.5);
}

TEST(ViewTransform, AFactorEndsFittingAndStays) {
    ViewTransform view = made({800, 600}, {400, 300});
    view.zoomToFit();
    view.setFactor(1.0);
    EXPECT_FALSE(view.fits());
    view.setViewport({200, 100});
    view.setImageSize({50, 50});
    EXPECT_DOUBLE_EQ(view.factor(), 1.0);
}

TEST(ViewTransform, FactorsThatMeanNothingChangeNothing) {
    ViewTransform view = made({800, 600}, {400, 300});
    view.zoomToFit();
    const ViewTransform before = view;
    for (const double bad : {0.0, -1.0, std::numeric_limits<double>::quiet_NaN(),
                             std::numeric_limits<double>::infinity()}) {
        view.setFactor(bad);
        view.zoomAt(bad, {0, 0});
        EXPECT_TRUE(view == before) << bad;
    }
    view.setRotation(std::numeric_limits<double>::quiet_NaN());
    EXPECT_TRUE(view == before);
}

TEST(ViewTransform, FactorsAreBroughtIntoBounds) {
    ViewTransform view = made({800, 600}, {400, 300});
    view.setFactor(1e9);
    EXPECT_EQ(view.factor(), ViewTransform::kMaxFactor);
    view.setFactor(1e-9);
    EXPECT_EQ(view.factor(), ViewTransform::kMinFactor);
}

TEST(ViewTransform, ASmallPictureIsCentredOnAWholePixel) {
    // (801 - 400) / 2 = 200.5, which comes to 201; (600 - 300) / 2 = 150.
    ViewTransform view = made({801, 600}, {400, 300});
    view.setFactor(1.0);
    EXPECT_EQ(view.content(), (CGRect{201, 150, 400, 300}));
    expectNear(view.toView({0, 0}), {201, 150});
    expectNear(view.toImage({201, 150}), {0, 0});
}

TEST(ViewTransform, ViewAndImagePointsAreInversesUnderZoomScrollAndTurn) {
    for (const double degrees : {0.0, 90.0, 37.5, -120.0}) {
        ViewTransform view = made({640, 480}, {1000, 700});
        view.setRotation(degrees);
        view.setFactor(2.5);
        view.scrollBy(-123, 45);
        for (const CGPoint point : {CGPoint{0, 0}, CGPoint{999.5, 3.25}, CGPoint{500, 350}})
            expectNear(view.toImage(view.toView(point)), point, 1e-7);
    }
}

TEST(ViewTransform, AQuarterTurnIsExactAndClockwise) {
    // The top left corner of 400 x 200 goes to the top right of 200 x 400.
    ViewTransform view = made({600, 600}, {400, 200});
    view.setFactor(1.0);
    view.setRotation(90);
    EXPECT_EQ(view.content(), (CGRect{200, 100, 200, 400}));
    expectNear(view.toView({0, 0}), {400, 100});
    expectNear(view.toView({400, 0}), {400, 500});
}

TEST(ViewTransform, FitSeesTheTurnedSize) {
    // 400 x 200 turned by a quarter is 200 x 400: 600 / 400.
    ViewTransform view = made({600, 600}, {400, 200});
    view.zoomToFit();
    view.setRotation(90);
    EXPECT_DOUBLE_EQ(view.factor(), 1.5);
}

TEST(ViewTransform, ZoomKeepsThePointUnderTheCursor) {
    ViewTransform view = made({800, 600}, {4000, 3000});
    view.setFactor(1.0);
    const CGPoint cursor{200, 450};
    const CGPoint under = view.toImage(cursor);
    view.zoomAt(2.0, cursor);
    // The content's corner is brought to a whole device pixel, so half of one is the tolerance.
    expectNear(view.toView(under), cursor, 0.5 + 1e-9);
    EXPECT_DOUBLE_EQ(view.factor(), 2.0);
}

TEST(ViewTransform, ScrollingStopsAtTheEdges) {
    ViewTransform view = made({800, 600}, {1000, 500});
    view.setFactor(1.0);
    EXPECT_EQ(view.scrollRange(), (CGPoint{200, 0}));
    EXPECT_EQ(view.scroll(), (CGPoint{100, 0}));
    view.scrollBy(1e6, 1e6);
    EXPECT_EQ(view.content(), (CGRect{0, 50, 1000, 500}));
    EXPECT_EQ(view.scroll(), (CGPoint{0, 0}));
    view.scrollBy(-1e6, 0);
    EXPECT_EQ(view.content().x, -200);
    view.setScroll({30, 0});
    EXPECT_EQ(view.scroll(), (CGPoint{30, 0}));
    EXPECT_EQ(view.content().x, -30);
}

TEST(ViewTransform, NothingScrollsWhileThePictureFits) {
    ViewTransform view = made({801, 601}, {333, 777});
    view.zoomToFit();
    EXPECT_EQ(view.scrollRange(), (CGPoint{0, 0}));
    const ViewTransform before = view;
    view.scrollBy(20, 20);
    EXPECT_TRUE(view == before);
}

TEST(ViewTransform, APartIsShownAlone) {
    ViewTransform view = made({800, 600}, {1000, 1000});
    view.zoomToFit();
    view.setPart({100, 200, 400, 300});
    EXPECT_DOUBLE_EQ(view.factor(), 2.0);
    expectNear(view.toView({100, 200}), {0, 0});
    expectNear(view.toView({500, 500}), {800, 600});
    view.setPart({});
    EXPECT_EQ(view.part(), (CGRect{0, 0, 1000, 1000}));
}

TEST(ViewTransform, APartIsClippedToTheImage) {
    ViewTransform view = made({800, 600}, {100, 100});
    view.setPart({-10, 50, 60, 500});
    EXPECT_EQ(view.part(), (CGRect{0, 50, 50, 50}));
    view.setPart({200, 200, 10, 10});
    EXPECT_EQ(view.part(), (CGRect{0, 0, 100, 100}));
}

TEST(ViewTransform, HitsOnlyTheShownPart) {
    ViewTransform view = made({800, 600}, {400, 300});
    view.setFactor(1.0);
    EXPECT_TRUE(view.hits({200, 150}));
    EXPECT_FALSE(view.hits({199.9, 150}));
    EXPECT_TRUE(view.hits({599.9, 449.9}));
    EXPECT_FALSE(view.hits({600, 449}));
    // Turned by 45 degrees the corner of the box is outside of the picture.
    view.setRotation(45);
    const CGRect box = view.content();
    EXPECT_FALSE(view.hits({box.x + 2, box.y + 2}));
    EXPECT_TRUE(view.hits({box.midX(), box.midY()}));
    EXPECT_FALSE(ViewTransform().hits({0, 0}));
}

TEST(ViewTransform, NegativeSizesCountAsNone) {
    ViewTransform view = made({-5, -5}, {-3, 10});
    EXPECT_EQ(view.viewport(), (CGSize{0, 0}));
    EXPECT_TRUE(view.isEmpty());
}

}  // namespace
}  // namespace skarnel
