// The roads on which pictures come into the window and leave it over the clipboard.
#include <QAction>
#include <QBuffer>
#include <QDropEvent>
#include <QFileDialog>
#include <QLabel>
#include <QMimeData>
#include <QUrl>

#include "application_fixture.h"

namespace skarnel {
namespace {

class PhotoRoadsTest : public ApplicationTest {};

void dropOn(QWidget& widget, const QMimeData& data) {
    QDragEnterEvent enter(QPoint(50, 50), Qt::CopyAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(&widget, &enter);
    EXPECT_TRUE(enter.isAccepted());
    QDropEvent drop(QPointF(50, 50), Qt::CopyAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(&widget, &drop);
}

TEST_F(PhotoRoadsTest, OpeningAPictureNamesTheSaveAndForgetsTheToolsWork) {
    start();
    app->actions().tools[1]->trigger();
    viewer().selectAll();
    EXPECT_TRUE(app->actions().copySelection->isEnabled());
    ASSERT_TRUE(app->openPicture(picture(QStringLiteral("Beach.2010.png"), 60, 40, Qt::red)));
    EXPECT_EQ(app->controller().saveFilename, "Beach.2010 Reflection");
    EXPECT_FALSE(viewer().sheet().hasEdits());
    EXPECT_FALSE(app->actions().copySelection->isEnabled());
    EXPECT_EQ(viewer().shownImage().size(), QSize(60, 80));
    EXPECT_EQ(app->state().recentFiles(),
              QStringList{folder.filePath(QStringLiteral("Beach.2010.png"))});
}

TEST_F(PhotoRoadsTest, OfSeveralPicturesTheFirstIsOpenedAndTheOthersAreRecent) {
    const QString first = picture(QStringLiteral("First.png"), 30, 30, Qt::green);
    const QString second = picture(QStringLiteral("Second.png"), 30, 30, Qt::blue);
    const QString third = picture(QStringLiteral("Third.png"), 30, 30, Qt::red);
    start({first, second});
    EXPECT_EQ(app->controller().saveFilename, "First Reflection");
    EXPECT_EQ(app->state().recentFiles(), (QStringList{first, second}));
    app->openPictures({third, second});
    EXPECT_EQ(app->controller().saveFilename, "Third Reflection");
    EXPECT_EQ(app->state().recentFiles(), (QStringList{third, second, first}));
    app->openPictures({});
    EXPECT_EQ(app->controller().saveFilename, "Third Reflection");
}

TEST_F(PhotoRoadsTest, UnderASheetAPictureFromElsewhereWaitsAmongTheRecentOnes) {
    start();
    const QString path = picture(QStringLiteral("Later.png"), 30, 30, Qt::green);
    app->actions().save->trigger();
    QApplication::processEvents();
    auto* sheet = window().findChild<QFileDialog*>(QStringLiteral("savePanel"));
    ASSERT_NE(sheet, nullptr);
    app->openPictures({path});
    EXPECT_EQ(app->controller().saveFilename, "TavelinLogo");
    EXPECT_EQ(app->state().recentFiles(), QStringList{path});
    sheet->reject();
}

TEST_F(PhotoRoadsTest, UnderASheetADroppedPictureWaitsAmongTheRecentOnesToo) {
    start();
    const QString path = picture(QStringLiteral("Later.png"), 30, 30, Qt::green);
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(path)});
    app->actions().save->trigger();
    QApplication::processEvents();
    auto* sheet = window().findChild<QFileDialog*>(QStringLiteral("savePanel"));
    ASSERT_NE(sheet, nullptr);
    dropOn(window(), data);
    EXPECT_EQ(app->controller().saveFilename, "TavelinLogo");
    EXPECT_EQ(app->state().recentFiles(), QStringList{path});
    sheet->reject();
    QApplication::processEvents();
    dropOn(window(), data);
    EXPECT_EQ(app->controller().saveFilename, "Later Reflection");
}

TEST_F(PhotoRoadsTest, OfSeveralDroppedPicturesTheFirstIsOpenedAndTheOthersAreRecent) {
    start();
    const QString first = picture(QStringLiteral("First.png"), 30, 30, Qt::green);
    const QString second = picture(QStringLiteral("Second.png"), 30, 30, Qt::blue);
    QMimeData data;
    data.setUrls({QUrl(QStringLiteral("https://skarnel.example/a.png")), QUrl::fromLocalFile(first),
                  QUrl::fromLocalFile(second)});
    dropOn(window(), data);
    EXPECT_EQ(app->controller().saveFilename, "First Reflection");
    EXPECT_EQ(app->state().recentFiles(), (QStringList{first, second}));
}

TEST_F(PhotoRoadsTest, APictureOfACallDuringTheStartIsOpenedAfterTheLogo) {
    const QString own = picture(QStringLiteral("Own.png"), 30, 30, Qt::red);
    const QString path = picture(QStringLiteral("Called.png"), 30, 30, Qt::green);
    make();
    app->openPictures({path});
    EXPECT_FALSE(app->controller().image);
    app->start({own});
    EXPECT_EQ(app->controller().saveFilename, "Called Reflection");
    EXPECT_EQ(viewer().shownImage().size(), QSize(30, 60));
    EXPECT_EQ(app->state().recentFiles(), (QStringList{path, own}));
}

TEST_F(PhotoRoadsTest, AFileThatIsNoPictureIsAnsweredAndChangesNothing) {
    start();
    const QString path = folder.filePath(QStringLiteral("notes.png"));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("just text");
    file.close();
    const QImage before = viewer().shownImage();
    EXPECT_FALSE(app->openPicture(path));
    EXPECT_FALSE(app->openPicture(folder.filePath(QStringLiteral("missing.png"))));
    auto* toast = window().findChild<QLabel*>(QStringLiteral("toast"));
    ASSERT_NE(toast, nullptr);
    EXPECT_TRUE(toast->isVisible());
    EXPECT_TRUE(toast->text().contains(QStringLiteral("missing.png")));
    EXPECT_EQ(viewer().shownImage(), before);
    EXPECT_EQ(app->controller().saveFilename, "TavelinLogo");
    EXPECT_TRUE(app->state().recentFiles().isEmpty());
}

TEST_F(PhotoRoadsTest, ADroppedPictureIsOpenedAndAForeignDropIsAnswered) {
    start();
    const QString path = picture(QStringLiteral("Dropped.png"), 30, 30, Qt::green);
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(path)});
    dropOn(window(), data);
    EXPECT_EQ(app->controller().saveFilename, "Dropped Reflection");
    QMimeData foreign;
    foreign.setUrls({QUrl(QStringLiteral("https://skarnel.example/a.png"))});
    dropOn(window(), foreign);
    EXPECT_TRUE(window().findChild<QLabel*>(QStringLiteral("toast"))->isVisible());
    EXPECT_EQ(app->controller().saveFilename, "Dropped Reflection");
}

TEST_F(PhotoRoadsTest, CopyPutsExactlyOneTypeOnTheClipboardAtFullSize) {
    start();
    ASSERT_TRUE(app->openPicture(picture(QStringLiteral("Big.png"), 3000, 2000, Qt::red)));
    app->actions().copy->trigger();
    const QMimeData* item = QApplication::clipboard()->mimeData();
    EXPECT_EQ(item->formats(), QStringList{QStringLiteral("image/tiff")});
    const QByteArray bytes = item->data(QStringLiteral("image/tiff"));
    const auto decoded = decodeImage({reinterpret_cast<const std::uint8_t*>(bytes.data()),
                                      static_cast<std::size_t>(bytes.size())});
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded->image.width(), 3000);
    EXPECT_EQ(decoded->image.height(), 4000);
}

TEST_F(PhotoRoadsTest, CopyAsPngPutsOnlyPngThere) {
    start();
    ASSERT_TRUE(app->openPicture(picture(QStringLiteral("Small.png"), 30, 20, Qt::red)));
    app->actions().copyAsPng->trigger();
    const QMimeData* item = QApplication::clipboard()->mimeData();
    EXPECT_EQ(item->formats(), QStringList{QStringLiteral("image/png")});
    const QImage image = QImage::fromData(item->data(QStringLiteral("image/png")));
    EXPECT_EQ(image.size(), QSize(30, 40));
    EXPECT_EQ(image.pixelColor(3, 3), QColor(Qt::red));
}

TEST_F(PhotoRoadsTest, APastedPictureTakesTheRoadOfAPhoto) {
    start();
    QImage red(12, 10, QImage::Format_RGBA8888);
    red.fill(QColor(255, 0, 0, 100));
    auto* data = new QMimeData;
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    red.save(&buffer, "PNG");
    data->setData(QStringLiteral("image/png"), png);
    QApplication::clipboard()->setMimeData(data);
    app->actions().paste->trigger();
    EXPECT_EQ(app->controller().saveFilename, "Pasted Picture Reflection");
    EXPECT_EQ(viewer().shownImage().size(), QSize(12, 20));
    EXPECT_TRUE(app->state().recentFiles().isEmpty());
}

TEST_F(PhotoRoadsTest, AClipboardWithoutAPictureIsAnswered) {
    start();
    QApplication::clipboard()->setText(QStringLiteral("words"));
    app->actions().paste->trigger();
    EXPECT_EQ(app->controller().saveFilename, "TavelinLogo");
    EXPECT_TRUE(window().findChild<QLabel*>(QStringLiteral("toast"))->isVisible());
}

}  // namespace
}  // namespace skarnel
