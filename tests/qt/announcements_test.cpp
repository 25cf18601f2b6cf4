// What is told to somebody who does not see the window: new pictures, saves and copies.
#include <QAction>
#include <QClipboard>
#include <QDropEvent>
#include <QFileDialog>
#include <QLabel>
#include <QMimeData>
#include <QUrl>

#include "access_fixture.h"
#include "qt/announcer.h"
#include "qt/main_actions.h"

namespace skarnel {
namespace {

/// A listener that keeps the words of every announcement.
class AnnouncementsTest : public AccessTest {
  protected:
    void SetUp() override {
        ASSERT_TRUE(listens()) << "needs the toolkit's inner headers, package qt6-base-private-dev";
        start();
        ASSERT_TRUE(app->openPicture(picture(QStringLiteral("First.png"), 300, 200, Qt::red)));
        settle();
        forget();
    }
    static void forget() {
        heard.clear();
        words.clear();
        QAccessible::installUpdateHandler([](QAccessibleEvent* event) {
            hear(event);
            if (event->type() == QAccessible::Alert)
                words << event->accessibleInterface()->text(QAccessible::Name);
        });
    }
    bool toastIsShown() {
        return window().findChild<QLabel*>(QStringLiteral("toast"))->isVisible();
    }
    /// Saves under the name that is typed into the sheet.
    void saveAs(const QString& path) {
        app->actions().save->trigger();
        QApplication::processEvents();
        auto* sheet = window().findChild<QFileDialog*>(QStringLiteral("savePanel"));
        ASSERT_NE(sheet, nullptr);
        auto* name = sheet->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
        ASSERT_NE(name, nullptr);
        name->setText(path);
        words.clear();
        QTest::keyClick(name, Qt::Key_Return);
        QApplication::processEvents();
    }

    static inline QStringList words;
};

TEST_F(AnnouncementsTest, ANewPictureAtTheSameZoomIsToldWithItsNameAndSize) {
    const double zoom = viewer().zoomFactor();
    ASSERT_TRUE(app->openPicture(picture(QStringLiteral("Beach.png"), 300, 200, Qt::blue)));
    EXPECT_EQ(viewer().zoomFactor(), zoom);
    EXPECT_TRUE(wasHeard(QAccessible::ValueChanged, viewer()));
    EXPECT_TRUE(wasHeard(QAccessible::DescriptionChanged, viewer()));
    const QString value = viewOf(viewer()).text(QAccessible::Value);
    // The picture's rows and as many of its reflection.
    EXPECT_TRUE(value.startsWith(QStringLiteral("Beach Reflection; 300 by 400 pixels, zoom ")))
        << value.toStdString();
    EXPECT_TRUE(viewOf(viewer())
                    .text(QAccessible::Description)
                    .startsWith(QStringLiteral("Beach Reflection. ")));
    EXPECT_EQ(words, QStringList{value});
    EXPECT_FALSE(toastIsShown());
}

TEST_F(AnnouncementsTest, APastedPictureIsTold) {
    auto* data = new QMimeData;
    data->setData(QStringLiteral("image/png"),
                  bytesOf(picture(QStringLiteral("clip.png"), 40, 30, Qt::green)));
    QApplication::clipboard()->setMimeData(data);
    app->actions().paste->trigger();
    ASSERT_EQ(words.size(), 1);
    EXPECT_TRUE(words[0].startsWith(QStringLiteral("Pasted Picture Reflection; 40 by 60 pixels")))
        << words[0].toStdString();
}

TEST_F(AnnouncementsTest, ADroppedPictureIsTold) {
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(picture(QStringLiteral("Dropped.png"), 50, 20, Qt::blue))});
    QDragEnterEvent enter({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&window(), &enter);  // makes it the drag's target
    QDropEvent drop({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&window(), &drop);
    ASSERT_EQ(words.size(), 1);
    EXPECT_TRUE(words[0].startsWith(QStringLiteral("Dropped Reflection; 50 by 40 pixels")))
        << words[0].toStdString();
}

TEST_F(AnnouncementsTest, AFileThatIsNoPictureIsToldOnceAndThePictureKeepsItsName) {
    QFile file(folder.filePath(QStringLiteral("notes.txt")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("no picture");
    file.close();
    EXPECT_FALSE(app->openPicture(file.fileName()));
    EXPECT_EQ(words.size(), 1);
    EXPECT_EQ(viewer().pictureName(), QStringLiteral("First Reflection"));
}

TEST_F(AnnouncementsTest, ASaveIsToldWithTheNameAndWithoutASight) {
    saveAs(folder.filePath(QStringLiteral("Sea.tiff")));
    ASSERT_TRUE(QFile::exists(folder.filePath(QStringLiteral("Sea.tiff"))));
    EXPECT_EQ(words, QStringList{QStringLiteral("Saved Sea.tiff")});
    EXPECT_FALSE(toastIsShown());
    EXPECT_TRUE(wasHeard(QAccessible::ObjectShow, *window().findChild<Announcer*>()));
}

TEST_F(AnnouncementsTest, ASaveThatFailsIsNotToldAsOne) {
    std::unique_ptr<CGImageDestination> destination =
        app->toolkit().imageFiles().imageDestinationCreateWithURL(
            folder.filePath(QStringLiteral("missing/Sea.tiff")).toStdString(), kUTTypeTIFF);
    destination->addImage(*ImageOperations().getCGImageRef(*app->controller().image), {});
    EXPECT_FALSE(destination->finalize());
    EXPECT_TRUE(words.isEmpty());
}

TEST_F(AnnouncementsTest, CopiesAreToldThoughTheSoundIsOff) {
    app->actions().playCue->setChecked(false);
    words.clear();
    app->actions().copy->trigger();
    EXPECT_EQ(words, QStringList{QStringLiteral("Copied")});
    words.clear();
    app->actions().copyAsPng->trigger();
    EXPECT_EQ(words, QStringList{QStringLiteral("Copied as PNG")});
    EXPECT_FALSE(toastIsShown());
}

TEST_F(AnnouncementsTest, AnAnnouncementIsANotificationInTheWindow) {
    window().announce(QStringLiteral("Something went well."));
    auto* announcer = window().findChild<Announcer*>();
    QAccessibleInterface* view = QAccessible::queryAccessibleInterface(announcer);
    ASSERT_NE(view, nullptr);
    EXPECT_EQ(view->role(), QAccessible::Notification);
    EXPECT_EQ(view->text(QAccessible::Name), QStringLiteral("Something went well."));
    EXPECT_EQ(view->parent(), &viewOf(window()));
    EXPECT_EQ(view->childCount(), 0);
    EXPECT_TRUE(wasHeard(QAccessible::NameChanged, *announcer));
    EXPECT_TRUE(wasHeard(QAccessible::ObjectShow, *announcer));
    EXPECT_TRUE(wasHeard(QAccessible::Alert, *announcer));
}

}  // namespace
}  // namespace skarnel
