// What the viewer puts on the screen, and how much of it a new picture repaints.
#include <gtest/gtest.h>

#include <QApplication>
#include <QPaintEvent>
#include <QPainter>
#include <QScreen>
#include <QTest>
#include <algorithm>
#include <random>
#include <vector>

#include "imaging/pixel_memory.h"
#include "qt/preview_memory.h"
#include "qt/viewer.h"

namespace skarnel {
namespace {

const QColor kGround(0, 0, 40);

/// Premultiplied noise of every opacity.
CGImage noise(int width, int height, unsigned seed) {
    std::mt19937 random(seed);
    std::vector<std::uint8_t> bytes;
    for (int i = 0; i < width * height; ++i) {
        const unsigned alpha = std::min(255U, static_cast<unsigned>(random() % 300));
        for (int k = 0; k < 3; ++k)
            bytes.push_back(static_cast<std::uint8_t>(random() % (alpha + 1)));
        bytes.push_back(static_cast<std::uint8_t>(alpha));
    }
    return *CGImage::copyOf({bytes.data(), width, height, std::ptrdiff_t{4} * width, 4});
}

/// Collects what is repainted.
class Repaints final : public QObject {
  public:
    explicit Repaints(QWidget& widget) { widget.installEventFilter(this); }
    QRegion region;

  protected:
    bool eventFilter(QObject* /*watched*/, QEvent* event) override {
        if (event->type() == QEvent::Paint) region += static_cast<QPaintEvent*>(event)->region();
        return false;
    }
};

class ViewerPainting : public ::testing::Test {
  protected:
    ViewerPainting() {
        viewer.resize(400, 300);
        viewer.setBackground(kGround);
        viewer.show();
        viewer.zoomToActualSize();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&viewer));
        QApplication::processEvents();
    }

    /// The toolkit's own way: the ground, then the picture over it at `corner`.
    QImage expected(const CGImage& image, QPoint corner) {
        QImage sheet(viewer.size(), QImage::Format_RGB32);
        sheet.fill(kGround);
        QPainter(&sheet).drawImage(corner, paintableImage(image));
        return sheet;
    }

    /// The largest difference of a component.
    static int distance(const QImage& a, const QImage& b) {
        int most = a.size() == b.size() ? 0 : 255;
        for (int y = 0; y < a.height() && most < 255; ++y)
            for (int x = 0; x < a.width(); ++x) {
                const QRgb one = a.pixel(x, y);
                const QRgb other = b.pixel(x, y);
                most = std::max({most, std::abs(qRed(one) - qRed(other)),
                                 std::abs(qGreen(one) - qGreen(other)),
                                 std::abs(qBlue(one) - qBlue(other))});
            }
        return most;
    }

    /// What stands on the screen, not what a fresh painting of the widget would give.
    QImage onScreen() {
        QApplication::processEvents();
        return viewer.screen()->grabWindow(viewer.winId()).toImage();
    }

    Viewer viewer;
};

TEST_F(ViewerPainting, APictureLiesOverTheGroundAsTheToolkitWouldPutIt) {
    const CGImage image = noise(100, 60, 1);
    viewer.setImage(image);
    // (400 - 100) / 2 and (300 - 60) / 2. The toolkit rounds products otherwise.
    EXPECT_LE(distance(viewer.grab().toImage(), expected(image, {150, 120})), 1);
}

TEST_F(ViewerPainting, APictureLargerThanTheViewerIsCutAtItsEdges) {
    const CGImage image = noise(500, 400, 2);
    viewer.setImage(image);
    viewer.setAutohidesScrollers(true);
    const QImage shown = viewer.grab(QRect(0, 0, 350, 250)).toImage();
    EXPECT_LE(distance(shown, expected(image, {-50, -50}).copy(0, 0, 350, 250)), 1);
}

TEST_F(ViewerPainting, ANewGroundColourIsSeenThroughThePicture) {
    viewer.setImage(noise(100, 60, 3));
    const QImage before = viewer.grab().toImage();
    viewer.setBackground(Qt::white);
    const QImage after = viewer.grab().toImage();
    EXPECT_EQ(after.pixelColor(0, 0), QColor(Qt::white));
    EXPECT_GT(distance(before.copy(150, 120, 100, 60), after.copy(150, 120, 100, 60)), 100);
}

TEST_F(ViewerPainting, ANewPictureRepaintsItsOwnPlaceAlone) {
    viewer.setImage(noise(100, 60, 4));
    QApplication::processEvents();
    Repaints repaints(viewer);
    viewer.setImage(noise(120, 40, 5));
    QApplication::processEvents();
    // The two boxes together are 120 x 60 from (140, 120) on, with a pixel around.
    EXPECT_EQ(repaints.region.boundingRect(), QRect(139, 119, 122, 62));
}

/// As after opening: the first picture is larger than the window, the next ones fit by themselves.
TEST_F(ViewerPainting, ASmallerPictureRepaintsThePlaceOfTheFittedOne) {
    viewer.zoomToFit();
    viewer.setImage(noise(1000, 200, 9));
    QApplication::processEvents();
    Repaints repaints(viewer);
    viewer.setImage(noise(300, 40, 10));
    QApplication::processEvents();
    // 1000 x 200 was shown as 400 x 80 from (0, 110) on; a pixel around, cut by the viewer.
    EXPECT_EQ(repaints.region.boundingRect(), QRect(0, 109, 400, 82));
}

TEST_F(ViewerPainting, ATurnedPictureIsFollowedByAWholeRepaint) {
    viewer.setImage(noise(100, 60, 6));
    ViewerSheet turned = viewer.sheet();
    turned.view.setRotation(30);
    viewer.takeEdits(turned);
    QApplication::processEvents();
    Repaints repaints(viewer);
    viewer.setImage(noise(100, 60, 7));
    QApplication::processEvents();
    EXPECT_EQ(repaints.region.boundingRect(), viewer.rect());
}

TEST_F(ViewerPainting, WithMarksOrASelectionEverythingIsRepainted) {
    viewer.setImage(noise(100, 60, 6));
    viewer.selectAll();
    QApplication::processEvents();
    Repaints repaints(viewer);
    viewer.setImage(noise(100, 60, 7));
    QApplication::processEvents();
    EXPECT_EQ(repaints.region.boundingRect(), viewer.rect());
}

TEST_F(ViewerPainting, NothingOfAnEarlierPictureStaysOnTheScreen) {
    if (viewer.screen()->grabWindow(viewer.winId()).isNull()) GTEST_SKIP() << "no screen to read";
    std::mt19937 random(8);
    for (int round = 0; round < 36; ++round) {
        if (round == 12) viewer.zoomToFit();
        if (round == 24) viewer.setZoomFactor(1.7);
        if (round % 12 == 8) viewer.setCheckerboard(!viewer.checkerboard());
        const int width = 20 + static_cast<int>(random() % (round < 12 ? 300 : 900));
        const int height = 20 + static_cast<int>(random() % (round < 12 ? 200 : 700));
        viewer.setImage(noise(width, height, random()));
        ASSERT_EQ(onScreen().convertToFormat(QImage::Format_RGB32),
                  viewer.grab().toImage().convertToFormat(QImage::Format_RGB32))
            << "round " << round << ": " << width << " x " << height;
    }
}

/// Into the pixels of an image, as in a window's own memory, and by the painter, as on a pixmap.
/// Run at scales of 1 to 2, too.
TEST_F(ViewerPainting, AnImageIsPaintedOnAsAnyOtherDevice) {
    const double ratio = viewer.devicePixelRatioF();
    for (const auto& [width, height] : {std::pair{101, 60}, {99, 61}, {900, 30}, {40, 700}}) {
        viewer.setImage(noise(width, height, static_cast<unsigned>(width)));
        const QImage byPainter = viewer.grab().toImage().convertToFormat(QImage::Format_RGB32);
        QImage image(byPainter.size(), QImage::Format_RGB32);
        image.setDevicePixelRatio(ratio);
        image.fill(Qt::red);
        viewer.render(&image);
        EXPECT_EQ(image, byPainter) << width << " x " << height << " at " << ratio;
        // A part of it, as after a change of a part.
        image.fill(Qt::red);
        viewer.render(&image, QPoint(180, 130), QRect(180, 130, 50, 40));
        EXPECT_EQ(image.pixelColor(0, 0), QColor(Qt::red));
        const auto device = [&](int logical) { return static_cast<int>(logical * ratio) + 2; };
        const QRect inside(device(180), device(130), device(45) - 2, device(35) - 2);
        EXPECT_EQ(image.copy(inside), byPainter.copy(inside)) << width << " at " << ratio;
    }
}

TEST_F(ViewerPainting, AFirstPictureHasTheMemoryForTheNextOnesPrepared) {
    releaseIdlePixelMemory();
    const PreviewMemory memory(viewer);
    QApplication::processEvents();
    EXPECT_FALSE(memory.isReady()) << "there is no picture yet";
    viewer.resize(1000, 800);
    viewer.setImage(noise(100, 60, 9));
    ASSERT_TRUE(QTest::qWaitFor([&] { return memory.isReady(); }));
    // 3.2 MB: two blocks of 4 MB, and one of 8 for the turn.
    const std::size_t prepared = idlePixelMemory() >> 20;
    EXPECT_EQ(prepared, 16U);
    viewer.resize(400, 300);
    viewer.setImage(noise(90, 60, 10));
    QApplication::processEvents();
    ASSERT_TRUE(QTest::qWaitFor([&] { return memory.isReady(); }));
    EXPECT_EQ(idlePixelMemory() >> 20, prepared) << "what is there suffices";
}

}  // namespace
}  // namespace skarnel
