// The looks' thumbnails: when they are made, and that nobody waits for them.
#include "qt/preset_thumbnail.h"

#include <QElapsedTimer>
#include <cstdint>
#include <functional>
#include <vector>

#include "companions_fixture.h"
#include "qt/preset_strip.h"

namespace skarnel {
namespace {

class ThumbnailsTest : public CompanionsTest {
  protected:
    static constexpr int kPatience = 60'000;  // milliseconds until a condition counts as failed

    /// Calls whenever a thumbnail was rendered and put in its place.
    void onThumbnail(const std::function<void()>& seen) {
        QObject::connect(strip().list().model(), &QAbstractItemModel::dataChanged, app.get(),
                         [seen](const QModelIndex&, const QModelIndex&, const QList<int>& roles) {
                             if (roles.contains(Qt::DecorationRole)) seen();
                         });
    }
};

TEST_F(ThumbnailsTest, ThumbnailsAreMadeAfterTheFirstPictureOneByOne) {
    start();
    EXPECT_TRUE(strip().isWorking());
    ASSERT_TRUE(QTest::qWaitFor([&] { return !strip().isWorking(); }, kPatience));
    const QImage first = strip().list().item(0)->icon().pixmap(84, 60).toImage();
    const QImage twin = strip().list().item(11)->icon().pixmap(84, 60).toImage();
    EXPECT_NE(first, twin);
    const QImage before = first;
    ASSERT_TRUE(app->openPicture(picture(QStringLiteral("red.png"), 300, 200, Qt::red)));
    ASSERT_TRUE(QTest::qWaitFor([&] { return strip().isWorking(); }, kPatience));
    ASSERT_TRUE(QTest::qWaitFor([&] { return !strip().isWorking(); }, kPatience));
    const QImage after = strip().list().item(0)->icon().pixmap(84, 60).toImage();
    EXPECT_NE(after, before);
    EXPECT_EQ(after.pixelColor(42, 20), QColor(Qt::red));
}

TEST_F(ThumbnailsTest, AWindowThatWasHiddenMakesThoseOfItsNewPictureWhenItIsShown) {
    start();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !strip().isWorking(); }, kPatience));
    ASSERT_TRUE(app->openPicture(picture(QStringLiteral("red.png"), 300, 200, Qt::red)));
    ASSERT_TRUE(QTest::qWaitFor([&] { return strip().isWorking(); }, kPatience));
    app->window().hide();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !strip().isWorking(); }, kPatience));
    app->window().show();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !strip().isWorking(); }, kPatience));
    for (const int index : {0, 11}) {
        const QImage made = strip().list().item(index)->icon().pixmap(84, 60).toImage();
        EXPECT_EQ(made.pixelColor(42, 20), QColor(Qt::red)) << index;
    }
}

// However slow the machine: the time since a change is taken before the change is made.
TEST_F(ThumbnailsTest, ThumbnailsWaitWhileSettingsChange) {
    constexpr int kDrag = 1000;  // milliseconds: all twelve take less when nothing changes
    constexpr int kRest = 250;   // milliseconds
    start();
    QElapsedTimer drag;
    QElapsedTimer sinceChange;
    onThumbnail([&] {
        if (!sinceChange.isValid()) return;
        EXPECT_GT(sinceChange.elapsed(), kRest) << "after " << drag.elapsed() << " ms";
    });
    drag.start();
    float value = 1;
    while (drag.elapsed() < kDrag) {
        sinceChange.restart();
        app->model().editNumber("gradient", value += 0.5F);
        QTest::qWait(1);
    }
    EXPECT_TRUE(QTest::qWaitFor([&] { return !strip().isWorking(); }, kPatience));
}

TEST_F(ThumbnailsTest, AChangeMadeWhileAThumbnailIsRenderedIsShownBeforeTheNext) {
    start();
    QStringList log;
    float value = 10;
    QObject::connect(&viewer(), &Viewer::imageChanged, [&] { log += QStringLiteral("preview"); });
    onThumbnail([&] {
        log += QStringLiteral("thumbnail");
        // The window is still within its work on the thumbnail: the hand's change waits in the
        // queue of events, as one that came while it was rendered.
        if (log.count(QStringLiteral("thumbnail")) > 3) return;
        QMetaObject::invokeMethod(
            app.get(), [&] { app->model().editNumber("gradient", value += 1); },
            Qt::QueuedConnection);
    });
    strip().sourceChanged();  // on a slow machine some may be there already
    ASSERT_TRUE(QTest::qWaitFor([&] { return log.size() >= 7; }, kPatience));
    const QStringList expected{QStringLiteral("thumbnail"), QStringLiteral("preview"),
                               QStringLiteral("thumbnail"), QStringLiteral("preview"),
                               QStringLiteral("thumbnail"), QStringLiteral("preview"),
                               QStringLiteral("thumbnail")};
    EXPECT_EQ(log.first(7), expected);
}

TEST(PresetThumbnail, ALookWithoutAResultHasNoPicture) {
    const std::vector<std::uint8_t> bytes(16, 255);
    const CGImage source = *CGImage::copyOf({bytes.data(), 2, 2, 8, 4});
    // A vertical scale of 0 leaves no reflection.
    EXPECT_TRUE(presetThumbnail(source, {0, 0, 0, 0, 7, 200, 50}).isNull());
    EXPECT_FALSE(presetThumbnail(source, {0, 100, 0, 0, 7, 200, 50}).isNull());
}

// The window stands still for each.
TEST(PresetThumbnail, IsSmallWhateverNumbersTheFieldsTook) {
    constexpr int kSide = 168;
    const std::vector<std::uint8_t> bytes(std::size_t{4} * kSide * kSide, 255);
    const CGImage source = *CGImage::copyOf({bytes.data(), kSide, kSide, 4L * kSide, 4});
    for (const float width : {-49.0F, 0.0F, 1000.0F}) {
        for (const float height : {-1000.0F, 100.0F, 1000.0F}) {
            for (const float gap : {-1000.0F, -50.0F, 0.0F, 1000.0F}) {
                for (const float turn : {-1000.0F, 25.0F, 50.0F, 1000.0F}) {
                    const QImage made =
                        presetThumbnail(source, {width, height, gap, 0, 7, 200, turn});
                    EXPECT_LE(qint64{made.width()} * made.height(), 600'000)
                        << width << ", " << height << ", " << gap << ", " << turn;
                }
            }
        }
    }
    // The ends of the sliders' travel: what the source is large enough for stays as it is.
    // 168 + 2 * 168 wide; 168, a gap of as much as the reflection, and the reflection of 336 high.
    EXPECT_EQ(presetThumbnail(source, {100, 200, 100, 0, 7, 200, 50}).size(), QSize(504, 840));
}

}  // namespace
}  // namespace skarnel
