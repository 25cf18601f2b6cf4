// The file that is dragged out: where it lies, how long, and what a failure says.
#include <sys/stat.h>
#include <utime.h>
#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QMouseEvent>

#include "application_fixture.h"
#include "qt/companions.h"
#include "qt/drag_folder.h"
#include "qt/result_drag.h"
#include "util/log/system_log.h"

namespace skarnel {
namespace {

class ResultFileTest : public ApplicationTest {
  protected:
    void SetUp() override {
        before_ = qgetenv("XDG_CACHE_HOME");
        qputenv("XDG_CACHE_HOME", folder.path().toUtf8());
        start();
    }
    void TearDown() override {
        if (before_.isEmpty())
            qunsetenv("XDG_CACHE_HOME");
        else
            qputenv("XDG_CACHE_HOME", before_);
    }
    QString drag() { return app->companions().makeResultFile(); }

  private:
    QByteArray before_;
};

TEST_F(ResultFileTest, ALaterDragLeavesTheFileOfAnEarlierOneAlone) {
    const QString first = drag();
    ASSERT_FALSE(first.isEmpty());
    const QByteArray bytes = bytesOf(first);
    app->model().changeNumber(QStringLiteral("Height"), "perspectiveHeight", 30);
    settle();
    const QString second = drag();
    EXPECT_NE(first, second);
    EXPECT_EQ(QFileInfo(first).fileName(), QFileInfo(second).fileName());
    EXPECT_EQ(bytesOf(first), bytes);
    EXPECT_NE(bytesOf(second), bytes);
    struct stat status {};
    ASSERT_EQ(::stat(QFileInfo(first).path().toUtf8().constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0700U);
}

TEST_F(ResultFileTest, ThePointerSaysThatTheFileIsBeingMade) {
    std::optional<Qt::CursorShape> shape;
    // Sees the drag before the window's own one, which was there first.
    new ResultDrag(viewer(), [&] {
        if (const QCursor* cursor = QGuiApplication::overrideCursor()) shape = cursor->shape();
        return QString();
    });
    ASSERT_TRUE(app->openPicture(picture(QStringLiteral("Red.png"), 60, 40, Qt::red)));
    settle();
    const QPoint from = viewer().rect().center();
    const QPoint to = from + QPoint(QApplication::startDragDistance(), 0);
    QTest::mousePress(&viewer(), Qt::LeftButton, {}, from);
    QMouseEvent move(QEvent::MouseMove, to, viewer().mapToGlobal(to), Qt::NoButton, Qt::LeftButton,
                     Qt::NoModifier);
    QApplication::sendEvent(&viewer(), &move);
    QTest::mouseRelease(&viewer(), Qt::LeftButton, {}, to);
    EXPECT_EQ(shape, Qt::WaitCursor);
    EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
}

TEST_F(ResultFileTest, KeepsTheSourcesResolution) {
    QImage image(60, 40, QImage::Format_RGBA8888);
    image.fill(Qt::red);
    image.setDotsPerMeterX(11811);  // 300 dots an inch
    image.setDotsPerMeterY(11811);
    const QString path = folder.filePath(QStringLiteral("Fine.png"));
    ASSERT_TRUE(image.save(path));
    ASSERT_TRUE(app->openPicture(path));
    EXPECT_EQ(QImage(drag()).dotsPerMeterX(), 11811);
}

TEST_F(ResultFileTest, AFailureIsToldAndLeavesNothing) {
    QFile block(folder.filePath(QStringLiteral("skarnel")));
    QDir(block.fileName()).removeRecursively();
    ASSERT_TRUE(block.open(QIODevice::WriteOnly));
    const ScopedLogCapture captured;
    EXPECT_TRUE(drag().isEmpty());
    EXPECT_EQ(captured.text().rfind("Couldn't make the file of a drag: ", 0), 0U)
        << captured.text();
    bool told = false;
    const QList<QLabel*> labels = window().findChildren<QLabel*>();
    for (const QLabel* label : labels)
        told = told || label->text().startsWith(QStringLiteral("The result cannot be dragged: "));
    EXPECT_TRUE(told);
}

TEST(DragFolder, WhatIsOlderThanADayIsRemovedAndLinksAreNotFollowed) {
    const QTemporaryDir folder;
    const QString parent = folder.filePath(QStringLiteral("dragged"));
    const auto fresh = freshDragFolder(parent);
    const auto old = freshDragFolder(parent);
    ASSERT_TRUE(fresh && old);
    const QString outside = folder.filePath(QStringLiteral("outside"));
    ASSERT_TRUE(QDir().mkpath(outside + QStringLiteral("/kept")));
    ASSERT_TRUE(QFile::link(outside, *old + QStringLiteral("/link")));
    QFile loose(parent + QStringLiteral("/Beach Reflection.png"));
    ASSERT_TRUE(loose.open(QIODevice::WriteOnly));
    loose.close();
    const QDateTime now = QDateTime::currentDateTime();
    const utimbuf dayAndAMinuteAgo{now.toSecsSinceEpoch() - 86'460,
                                   now.toSecsSinceEpoch() - 86'460};
    for (const QString& path : {*old, loose.fileName()})
        ASSERT_EQ(::utime(path.toUtf8().constData(), &dayAndAMinuteAgo), 0);
    removeOldDrags(parent, now);
    EXPECT_EQ(QDir(parent).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
              QStringList{QFileInfo(*fresh).fileName()});
    EXPECT_TRUE(QDir(outside + QStringLiteral("/kept")).exists());
    removeOldDrags(parent, now.addSecs(86'300));
    EXPECT_TRUE(QDir(*fresh).exists());
}

}  // namespace
}  // namespace skarnel
