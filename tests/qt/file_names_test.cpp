// Names of files that are not UTF-8, and patterns for dialogs.
#include "qt/file_names.h"

#include <sys/stat.h>
#include <unistd.h>

#include <QAction>
#include <QDir>
#include <QDropEvent>
#include <QLabel>
#include <QMenu>
#include <QMimeData>
#include <QUrl>

#include "application_fixture.h"

namespace skarnel {
namespace {

const QString kRead = QStringLiteral("caf\uFFFD.png");  // how "caf" E9 ".png" reads
constexpr const char* kLatin = "caf\xE9.png";
constexpr const char* kGreek = "caf\xDD.png";

constexpr const char* kFolder = "\374ber";

class FileNamesTest : public ApplicationTest {
  protected:
    /// The toolkit cannot remove what it cannot name.
    void TearDown() override {
        for (const char* name : {kLatin, kGreek}) ::unlink(path(name).c_str());
        ::rmdir(path(kFolder).c_str());
    }

    std::string path(const char* name) { return folder.path().toStdString() + "/" + name; }
    /// A picture whose name is these bytes.
    void pictureNamed(const char* name, int width, int height) {
        const QString plain = picture(QStringLiteral("plain.png"), width, height, Qt::red);
        ASSERT_EQ(::rename(plain.toLocal8Bit().constData(), path(name).c_str()), 0);
    }
    QString shown() { return folder.filePath(kRead); }
};

TEST_F(FileNamesTest, ThePathOfTheOneFileWhoseNameReadsSoIsFound) {
    EXPECT_EQ(bytesOfPath(QStringLiteral("/a/b c.png")), "/a/b c.png");
    EXPECT_EQ(bytesOfPath(QStringLiteral("/a/\u00E9.png")), "/a/\xC3\xA9.png");
    EXPECT_EQ(bytesOfPath(shown()), path("caf\xEF\xBF\xBD.png")) << "nothing there";
    pictureNamed(kLatin, 30, 20);
    EXPECT_EQ(bytesOfPath(shown()), path(kLatin));
    pictureNamed(kGreek, 40, 20);
    EXPECT_EQ(bytesOfPath(shown()), std::nullopt);
}

TEST_F(FileNamesTest, AFolderWithSuchANameIsGoneThrough) {
    ASSERT_EQ(::mkdir(path(kFolder).c_str(), 0700), 0);
    EXPECT_EQ(bytesOfPath(folder.filePath(QStringLiteral("\uFFFDber/a.png"))),
              path(kFolder) + "/a.png");
}

TEST_F(FileNamesTest, AnAddressBecomesThePathThatItsBytesSpell) {
    const auto path = [](const char* address) {
        return pathOfAddress(QUrl(QString::fromLatin1(address)));
    };
    EXPECT_EQ(path("file:///a/caf%E9.png"), QStringLiteral("/a/") + kRead);
    EXPECT_EQ(path("file:///a/caf%C3%A9%25.png"), QStringLiteral("/a/caf\u00E9%.png"));
    EXPECT_EQ(path("https://skarnel.example/a.png"), QString());
}

TEST_F(FileNamesTest, TheHeadIsThatOfARegularFileAlone) {
    pictureNamed(kLatin, 30, 20);
    const auto head = headOfFile(path(kLatin), 4);
    ASSERT_TRUE(head) << head.error().message;
    EXPECT_EQ(*head, QByteArray("\x89PNG"));
    const auto causeOf = [](const std::string& name) {
        const auto none = headOfFile(name, 4);
        return none ? std::string("it has a head") : none.error().message;
    };
    EXPECT_EQ(causeOf(path("missing")), "No such file or directory");
    EXPECT_EQ(causeOf(folder.path().toStdString()), "It is a folder");
    ASSERT_EQ(::mkfifo(path("pipe").c_str(), 0600), 0);
    EXPECT_EQ(causeOf(path("pipe")), "It is not an ordinary file");
}

// A process may not read its own memory at address 0: as a disk that fails does.
TEST_F(FileNamesTest, AReadThatFailsHasACauseOfTheCatalogues) {
    const auto none = headOfFile("/proc/self/mem", 4);
    ASSERT_FALSE(none);
    EXPECT_EQ(none.error().message, "Input/output error");
    const auto whole = headOfFile("/proc/self/cmdline", 1 << 20);  // whose size reads 0
    ASSERT_TRUE(whole) << whole.error().message;
    EXPECT_TRUE(whole->contains("test_qt"));
}

TEST_F(FileNamesTest, APictureThatCannotBeReadIsToldWithItsCause) {
    start();
    auto* toast = window().findChild<QLabel*>(QStringLiteral("toast"));
    ASSERT_NE(toast, nullptr);
    ASSERT_EQ(::symlink("loop.png", path("loop.png").c_str()), 0);
    ASSERT_TRUE(QDir(folder.path()).mkdir(QStringLiteral("folder.png")));
    const struct {
        const char* name;
        const char* told;
    } rows[] = {
        {"gone.png", "“gone.png” cannot be read: No such file or directory."},
        {"folder.png", "“folder.png” cannot be read: It is a folder."},
        {"loop.png", "“loop.png” cannot be read: Too many levels of symbolic links."},
    };
    for (const auto& row : rows) {
        EXPECT_FALSE(app->openPicture(folder.filePath(QString::fromLatin1(row.name))));
        EXPECT_EQ(toast->text().toStdString(), row.told);
    }
}

TEST_F(FileNamesTest, AFilterTakesLettersInAnyCase) {
    EXPECT_EQ(inAnyCase(QStringLiteral("Photos (*.jpg *.jp2)")),
              QStringLiteral("Photos (*.[jJ][pP][gG] *.[jJ][pP]2)"));
    EXPECT_EQ(inAnyCase(QStringLiteral("All (*)")), QStringLiteral("All (*)"));
}

TEST_F(FileNamesTest, SuchAPictureOpensFromACallADropAndTheMenu) {
    pictureNamed(kLatin, 30, 20);
    start({shown()});
    EXPECT_EQ(viewer().shownImage().size(), QSize(30, 40));
    EXPECT_EQ(window().windowTitle(), QStringLiteral("caf\uFFFD Reflection — Skarnel"));
    ASSERT_TRUE(app->openPicture(picture(QStringLiteral("other.png"), 50, 50, Qt::blue)));
    EXPECT_EQ(viewer().shownImage().size(), QSize(50, 100));

    QMimeData data;
    data.setUrls(
        {QUrl(QUrl::fromLocalFile(folder.path()).toString() + QStringLiteral("/caf%E9.png"))});
    QDragEnterEvent enter(QPoint(50, 50), Qt::CopyAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(&window(), &enter);
    QDropEvent drop(QPointF(50, 50), Qt::CopyAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(&window(), &drop);
    EXPECT_EQ(viewer().shownImage().size(), QSize(30, 40));

    ASSERT_TRUE(app->openPicture(folder.filePath(QStringLiteral("other.png"))));
    QMenu* recent = app->actions().recent;
    emit recent->aboutToShow();
    ASSERT_EQ(recent->actions().value(1)->text(), kRead);
    recent->actions().value(1)->trigger();
    EXPECT_EQ(viewer().shownImage().size(), QSize(30, 40));
}

TEST_F(FileNamesTest, OfSeveralNamesThatReadTheSameNoneIsTakenForAnother) {
    pictureNamed(kLatin, 30, 20);
    pictureNamed("caf\xEF\xBF\xBD.png", 40, 20);
    start();
    EXPECT_FALSE(app->openPicture(shown()));
    EXPECT_EQ(app->controller().saveFilename, "TavelinLogo");
    auto* toast = window().findChild<QLabel*>(QStringLiteral("toast"));
    ASSERT_NE(toast, nullptr);
    EXPECT_TRUE(toast->isVisible());
    EXPECT_TRUE(toast->text().contains(kRead)) << toast->text().toStdString();
}

TEST_F(FileNamesTest, ThePictureOfSuchANameIsSavedUnderOneThatCanBeRead) {
    pictureNamed(kLatin, 30, 20);
    start({shown()});
    ASSERT_TRUE(QDir(folder.path()).mkdir(QStringLiteral("saved")));
    app->state().setSaveFolder(folder.filePath(QStringLiteral("saved")));
    app->actions().save->trigger();
    QApplication::processEvents();
    auto* sheet = window().findChild<QDialog*>(QStringLiteral("savePanel"));
    ASSERT_NE(sheet, nullptr);
    sheet->accept();
    QApplication::processEvents();
    EXPECT_EQ(QDir(folder.filePath(QStringLiteral("saved"))).entryList(QDir::Files),
              QStringList{QStringLiteral("caf\uFFFD Reflection.tiff")});
    EXPECT_TRUE(QFile::exists(folder.filePath(QStringLiteral("saved/caf\uFFFD Reflection.tiff"))));
}

}  // namespace
}  // namespace skarnel
