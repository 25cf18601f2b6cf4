// Pictures that come from the clipboard.
#include <QAction>
#include <QBuffer>
#include <QDir>
#include <QLabel>
#include <QMimeData>
#include <QTemporaryDir>
#include <QUrl>

#include "application_fixture.h"
#include "util/limited_to.h"
#include "util/log/system_log.h"

namespace skarnel {
namespace {

class PasteTest : public ApplicationTest {
  protected:
    // A place of its own for temporary files, which all programs of a user share otherwise.
    void SetUp() override {
        ApplicationTest::SetUp();
        ASSERT_TRUE(temporary_.isValid());
        qputenv("TMPDIR", QFile::encodeName(temporary_.path()));
    }
    void TearDown() override {
        app.reset();
        qunsetenv("TMPDIR");
        ApplicationTest::TearDown();
    }
    /// Puts the data on the clipboard, which owns it, and pastes.
    void paste(QMimeData* data) {
        QApplication::clipboard()->setMimeData(data);
        app->actions().paste->trigger();
    }
    static QByteArray encoded(const QImage& image, const char* format) {
        QByteArray bytes;
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        EXPECT_TRUE(image.save(&buffer, format)) << format;
        return bytes;
    }
    static QImage plain(QColor color) {
        QImage image(12, 10, QImage::Format_RGBA8888);
        image.fill(color);
        return image;
    }
    /// The folders of pasted pictures that lie in the private folder.
    QStringList pastedFolders() {
        const auto own = app->toolkit().temporaryDirectory();
        return QDir(QString::fromStdString(own.value_or("/nowhere")))
            .entryList({QStringLiteral("pasted-*")}, QDir::Dirs | QDir::Hidden);
    }
    QLabel* toast() { return window().findChild<QLabel*>(QStringLiteral("toast")); }

  private:
    QTemporaryDir temporary_;
};

TEST_F(PasteTest, EveryFormatThatIsReadIsPasted) {
    const struct {
        const char* mime;
        const char* format;
        int alpha;  // of the pixels; 255 where the format has none
        int tolerance;
    } rows[] = {
        {"image/png", "PNG", 100, 1}, {"image/bmp", "BMP", 255, 0}, {"image/jpeg", "JPG", 255, 3}};
    start();
    for (const auto& row : rows) {
        SCOPED_TRACE(row.mime);
        ASSERT_TRUE(app->openPicture(picture(QStringLiteral("other.png"), 50, 50, Qt::blue)));
        auto* data = new QMimeData;
        data->setData(QString::fromLatin1(row.mime),
                      encoded(plain(QColor(255, 0, 0, row.alpha)), row.format));
        paste(data);
        EXPECT_EQ(app->controller().saveFilename, "Pasted Picture Reflection");
        ASSERT_EQ(viewer().shownImage().size(), QSize(12, 20));
        const QColor seen = viewer().shownImage().pixelColor(6, 5);
        EXPECT_EQ(seen.alpha(), row.alpha);
        EXPECT_NEAR(seen.red(), 255, row.tolerance);
        EXPECT_NEAR(seen.blue(), 0, row.tolerance);
    }
}

TEST_F(PasteTest, OfSeveralFormatsTheExactOneIsTaken) {
    start();
    auto* data = new QMimeData;
    data->setData(QStringLiteral("image/jpeg"), encoded(plain(Qt::blue), "JPG"));
    data->setData(QStringLiteral("image/png"), encoded(plain(QColor(255, 0, 0, 100)), "PNG"));
    data->setText(QStringLiteral("a caption"));
    paste(data);
    ASSERT_EQ(viewer().shownImage().size(), QSize(12, 20));
    EXPECT_EQ(viewer().shownImage().pixelColor(6, 5).alpha(), 100);
}

TEST_F(PasteTest, TheAddressOfAFileIsTheRoadOfThatFile) {
    start();
    const QString path = picture(QStringLiteral("Beach 50%.png"), 30, 20, Qt::red);
    auto* data = new QMimeData;
    data->setUrls(
        {QUrl(QStringLiteral("https://skarnel.example/a.png")), QUrl::fromLocalFile(path)});
    // A file manager gives an icon besides, which is not what is meant.
    data->setData(QStringLiteral("image/png"), encoded(plain(Qt::blue), "PNG"));
    paste(data);
    EXPECT_EQ(app->controller().saveFilename, "Beach 50% Reflection");
    EXPECT_EQ(viewer().shownImage().size(), QSize(30, 40));
    EXPECT_EQ(app->state().recentFiles(), QStringList{path});
    EXPECT_TRUE(pastedFolders().isEmpty());
}

TEST_F(PasteTest, WhatIsNoPictureIsAnsweredAndLeavesNothing) {
    start();
    const auto nothing = [&](QMimeData* data) {
        paste(data);
        EXPECT_EQ(app->controller().saveFilename, "TavelinLogo");
        ASSERT_NE(toast(), nullptr);
        EXPECT_EQ(toast()->text(), QStringLiteral("There is no picture on the clipboard."));
        EXPECT_TRUE(toast()->isVisible());
        toast()->hide();
        EXPECT_TRUE(pastedFolders().isEmpty());
    };
    nothing(new QMimeData);
    QApplication::clipboard()->clear();
    app->actions().paste->trigger();
    EXPECT_EQ(app->controller().saveFilename, "TavelinLogo");
    auto* words = new QMimeData;
    words->setText(QStringLiteral("/tmp/picture.png"));
    nothing(words);
    auto* damaged = new QMimeData;
    damaged->setData(QStringLiteral("image/png"), encoded(plain(Qt::red), "PNG").left(40));
    nothing(damaged);
    auto* web = new QMimeData;
    web->setUrls({QUrl(QStringLiteral("https://skarnel.example/a.png"))});
    nothing(web);
}

TEST_F(PasteTest, WithoutAFolderForItTheCauseIsInTheLog) {
    start();
    const auto own = app->toolkit().temporaryDirectory();
    ASSERT_TRUE(own);
    ASSERT_TRUE(QDir(QString::fromStdString(*own)).removeRecursively());
    QFile file(folder.filePath(QStringLiteral("no folder")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    qputenv("TMPDIR", QFile::encodeName(file.fileName()));
    auto* data = new QMimeData;
    data->setData(QStringLiteral("image/png"), encoded(plain(Qt::red), "PNG"));
    const ScopedLogCapture log;
    paste(data);
    EXPECT_EQ(log.text(), "Couldn't paste a picture: There is no folder for temporary files\n");
    EXPECT_EQ(app->controller().saveFilename, "TavelinLogo");
}

TEST_F(PasteTest, WhereItCannotBeWrittenTheOldPictureStaysAndTheCauseIsInTheLog) {
    start();
    const auto png = [] {
        auto* data = new QMimeData;
        data->setData(QStringLiteral("image/png"), encoded(plain(Qt::red), "PNG"));
        return data;
    };
    paste(png());
    const QStringList first = pastedFolders();
    ASSERT_EQ(first.size(), 1);
    const QString file = QString::fromStdString(*app->toolkit().temporaryDirectory()) +
                         QLatin1Char('/') + first.front() + QStringLiteral("/Pasted Picture.tiff");
    const QByteArray before = bytesOf(file);
    ASSERT_GT(before.size(), 0);

    const ScopedLogCapture log;
    {
        const test::LimitedTo oneByteLess(RLIMIT_FSIZE, static_cast<rlim_t>(before.size() - 1));
        paste(png());
    }
    EXPECT_EQ(log.text(), "Couldn't paste a picture: File too large\n");
    ASSERT_NE(toast(), nullptr);
    EXPECT_EQ(toast()->text(), QStringLiteral("The picture cannot be pasted."));
    EXPECT_EQ(pastedFolders(), first);
    EXPECT_EQ(bytesOf(file), before);
    EXPECT_EQ(app->controller().saveFilename, "Pasted Picture Reflection");
}

TEST_F(PasteTest, AStartRemovesWhatAKilledProgramPasted) {
    make();
    const QString own = QString::fromStdString(*app->toolkit().temporaryDirectory());
    ASSERT_TRUE(QDir(own).mkpath(QStringLiteral("pasted-Ab12Cd")));
    QFile left(own + QStringLiteral("/pasted-Ab12Cd/Pasted Picture.tiff"));
    ASSERT_TRUE(left.open(QIODevice::WriteOnly));
    ASSERT_EQ(pastedFolders().size(), 1);
    app->start({});
    EXPECT_TRUE(QTest::qWaitFor([&] { return pastedFolders().isEmpty(); }, kPatience));
}

TEST_F(PasteTest, ThePastedFileLastsAsLongAsItIsTheSource) {
    start();
    const auto png = [&](QColor color) {
        auto* data = new QMimeData;
        data->setData(QStringLiteral("image/png"), encoded(plain(color), "PNG"));
        return data;
    };
    paste(png(Qt::red));
    const QStringList first = pastedFolders();
    ASSERT_EQ(first.size(), 1);
    const QDir inside(QString::fromStdString(*app->toolkit().temporaryDirectory()) +
                      QLatin1Char('/') + first.front());
    EXPECT_EQ(inside.entryList(QDir::Files), QStringList{QStringLiteral("Pasted Picture.tiff")});
    paste(png(Qt::green));
    const QStringList second = pastedFolders();
    ASSERT_EQ(second.size(), 1);
    EXPECT_NE(second, first);
    ASSERT_TRUE(app->openPicture(picture(QStringLiteral("other.png"), 50, 50, Qt::blue)));
    EXPECT_TRUE(pastedFolders().isEmpty());
    paste(png(Qt::green));
    ASSERT_EQ(pastedFolders().size(), 1);
    const QString own = QString::fromStdString(*app->toolkit().temporaryDirectory());
    app.reset();
    EXPECT_TRUE(QDir(own).entryList({QStringLiteral("pasted-*")}, QDir::Dirs).isEmpty());
}

}  // namespace
}  // namespace skarnel
