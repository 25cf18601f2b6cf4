// What is no picture, on every road by which pictures come into the window.
#include <sys/stat.h>
#include <unistd.h>

#include <QAction>
#include <QDropEvent>
#include <QFileDialog>
#include <QLabel>
#include <QMenu>
#include <QMimeData>
#include <QTimer>
#include <QUrl>
#include <vector>

#include "application_fixture.h"
#include "util/log/system_log.h"

namespace skarnel {
namespace {

struct OddFile {
    QString path;
    const char* cause;  // a part of what is told
};

constexpr const char* kNotOrdinary = "It is not an ordinary file";
constexpr const char* kNoPicture = "is no picture that can be opened";

class OddFilesTest : public ApplicationTest {
  protected:
    QString at(const char* name) { return folder.filePath(QString::fromLatin1(name)); }

    QString write(const char* name, const QByteArray& bytes) {
        QFile file(at(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        return file.fileName();
    }

    std::vector<OddFile> oddFiles() {
        const QString pipe = at("pipe.png");
        EXPECT_EQ(::mkfifo(pipe.toLocal8Bit().constData(), 0600), 0);
        EXPECT_TRUE(QDir(folder.path()).mkdir(QStringLiteral("folder.png")));
        EXPECT_EQ(::symlink("loop.png", at("loop.png").toLocal8Bit().constData()), 0);
        std::vector<OddFile> files{{pipe, kNotOrdinary},
                                   {QStringLiteral("/dev/zero"), kNotOrdinary},
                                   {at("folder.png"), "It is a folder"},
                                   {at("loop.png"), "Too many levels of symbolic links"},
                                   {at("away.png"), "No such file or directory"},
                                   {write("empty.png", {}), kNoPicture},
                                   {QStringLiteral("/proc/self/status"), kNoPicture}};
        // Root may read whatever it likes.
        const QString locked = write("locked.png", "\x89PNG");
        EXPECT_TRUE(QFile::setPermissions(locked, {}));
        if (::access(locked.toLocal8Bit().constData(), R_OK) != 0)
            files.push_back({locked, "Permission denied"});
        return files;
    }

    void drop(QWidget& target, const QString& path) {
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(path)});
        QDragEnterEvent enter({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&target, &enter);
        QDropEvent dropped({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&target, &dropped);
    }

    void paste(const QString& path) {
        auto* data = new QMimeData;
        data->setUrls({QUrl::fromLocalFile(path)});
        QApplication::clipboard()->setMimeData(data);
        app->actions().paste->trigger();
    }

    void openRecent(const QString& path) {
        app->state().addRecentFile(path);
        emit app->actions().recent->aboutToShow();
        app->actions().recent->actions().front()->trigger();
        app->state().clearRecentFiles();
    }

    /// Opens the panel, types the path, and ends the panel where it does not take it.
    void openFromPanel(const QString& path) {
        QTimer poll;
        bool typed = false;
        QObject::connect(&poll, &QTimer::timeout, &poll, [&] {
            auto* panel = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
            if (panel == nullptr) return;
            if (typed) return panel->reject();
            typed = true;
            auto* name = panel->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
            name->setText(path);
            QTest::keyClick(name, Qt::Key_Return);
        });
        poll.start(5);
        app->actions().open->trigger();
        EXPECT_TRUE(typed);
    }

    QLabel& toast() { return *window().findChild<QLabel*>(QStringLiteral("toast")); }
};

TEST_F(OddFilesTest, AreAnsweredWithTheirCauseOnEveryRoadAndChangeNothing) {
    start();
    const QImage before = viewer().shownImage();
    const QString title = window().windowTitle();
    const struct {
        const char* name;
        std::function<void(const QString&)> open;
    } roads[] = {
        {"argument", [&](const QString& path) { app->openPictures({path}); }},
        {"drop on the viewer", [&](const QString& path) { drop(viewer(), path); }},
        {"drop on the window", [&](const QString& path) { drop(window(), path); }},
        {"drop on the panel", [&](const QString& path) { drop(*panel().viewport(), path); }},
        {"paste", [&](const QString& path) { paste(path); }},
        {"recent", [&](const QString& path) { openRecent(path); }},
    };
    const std::vector<OddFile> files = oddFiles();
    for (const auto& road : roads) {
        for (const OddFile& file : files) {
            SCOPED_TRACE(road.name + (": " + file.path.toStdString()));
            window().endTelling();
            road.open(file.path);
            EXPECT_TRUE(toast().isVisible());
            EXPECT_TRUE(toast().text().contains(QFileInfo(file.path).fileName()));
            EXPECT_TRUE(toast().text().contains(QString::fromLatin1(file.cause)))
                << toast().text().toStdString();
            EXPECT_EQ(app->controller().saveFilename, "TavelinLogo");
            EXPECT_EQ(window().windowTitle(), title);
            EXPECT_TRUE(app->state().recentFiles().isEmpty());
        }
    }
    EXPECT_EQ(viewer().shownImage(), before);
}

TEST_F(OddFilesTest, NamedAtTheStartTheyDoNotKeepTheWindowFromOpening) {
    for (const OddFile& file : oddFiles()) {
        SCOPED_TRACE(file.path.toStdString());
        start({file.path});
        EXPECT_TRUE(window().isVisible());
        EXPECT_EQ(app->controller().saveFilename, "TavelinLogo");
        EXPECT_TRUE(toast().text().contains(QString::fromLatin1(file.cause)))
            << toast().text().toStdString();
        app.reset();
    }
}

TEST_F(OddFilesTest, ChosenInTheOpenPanelTheyAreInTheLogWithTheirCause) {
    start();
    app->state().setOpenFolder(folder.path());
    const QImage before = viewer().shownImage();
    for (const OddFile& file : oddFiles()) {
        // These two the panel itself answers.
        const QFileInfo info(file.path);
        if (info.isDir() || !info.exists()) continue;
        SCOPED_TRACE(file.path.toStdString());
        const ScopedLogCapture log;
        openFromPanel(file.path);
        EXPECT_TRUE(log.text().starts_with("Couldn't open " + file.path.toStdString() + ": "))
            << log.text();
        EXPECT_TRUE(app->state().recentFiles().isEmpty());
        EXPECT_EQ(viewer().shownImage(), before);
        // What cannot be decoded is the source all the same, which then gives no file and no copy.
        EXPECT_EQ(app->controller().saveFilename,
                  info.completeBaseName().toStdString() + " Reflection");
    }
}

TEST_F(OddFilesTest, APictureThatIsTooLargeForItsFileIsToldAndLoggedAsThat) {
    start();
    // One bit a pixel, all of one colour: 8 MB that shrink to a few thousand bytes.
    QImage flat(8001, 8001, QImage::Format_Mono);
    flat.fill(0);
    const QString path = at("flat.png");
    ASSERT_TRUE(flat.save(path));
    const qint64 bytes = QFileInfo(path).size();
    ASSERT_LT(bytes, 8001LL * 8001 / 2000);
    const std::string cause =
        "The picture says it has 8001 x 8001 pixels, too many for a file of " +
        std::to_string(bytes) + " bytes (skarnel-render --max-pixels allows them)";
    const ScopedLogCapture log;
    EXPECT_FALSE(app->openPicture(path));
    EXPECT_EQ(toast().text().toStdString(), "“flat.png” cannot be opened: " + cause + ".");
    EXPECT_EQ(log.text(), "Couldn't open " + path.toStdString() + ": " + cause + "\n");
    EXPECT_TRUE(app->state().recentFiles().isEmpty());
}

}  // namespace
}  // namespace skarnel
