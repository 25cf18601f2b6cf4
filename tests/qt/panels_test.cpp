// The open panel, the options of the save panel and alerts, as the user meets them.
#include <QAbstractButton>
#include <QAction>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QMessageBox>
#include <QPushButton>
#include <QSpinBox>
#include <QTimer>
#include <QTreeView>

#include "application_fixture.h"
#include "qt/save_options_view.h"

namespace skarnel {
namespace {

class PanelsTest : public ApplicationTest {
  protected:
    /// What is to be done with the next modal window of that kind; it has to end it.
    template <typename Panel>
    void onNext(std::function<void(Panel&)> act) {
        auto* poll = new QTimer(&window());
        QObject::connect(poll, &QTimer::timeout, poll, [this, poll, act = std::move(act)] {
            auto* panel = qobject_cast<Panel*>(QApplication::activeModalWidget());
            if (panel == nullptr) return;
            poll->stop();
            poll->deleteLater();
            ++met;
            act(*panel);
        });
        poll->start(5);
    }

    static QLineEdit& nameOf(QFileDialog& panel) {
        return *panel.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
    }
    static void choose(QFileDialog& panel, const QString& typed) {
        nameOf(panel).setText(typed);
        QTest::keyClick(&nameOf(panel), Qt::Key_Return);
    }

    /// Saves over the sheet; `set` makes the choices in its format view.
    QString saveAs(const QString& name, const std::function<void(SaveOptionsView&)>& set) {
        app->actions().save->trigger();
        QApplication::processEvents();
        auto* sheet = window().findChild<QFileDialog*>(QStringLiteral("savePanel"));
        if (sheet == nullptr) return {};
        set(*sheet->findChild<SaveOptionsView*>(QStringLiteral("saveOptions")));
        const QString path = folder.filePath(name);
        choose(*sheet, path);
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return path;
    }

    DecodedImage read(const QString& path) {
        const QByteArray bytes = bytesOf(path);
        auto decoded = decodeImage({reinterpret_cast<const std::uint8_t*>(bytes.constData()),
                                    static_cast<std::size_t>(bytes.size())});
        EXPECT_TRUE(decoded) << path.toStdString();
        return *std::move(decoded);
    }

    int met = 0;
};

/// The entry of row and column 0 of a JPEG's first table of quantisation: the smaller, the finer.
int firstQuantum(const QByteArray& jpeg) {
    const qsizetype table = jpeg.indexOf(QByteArray("\xFF\xDB", 2));
    return table < 0 ? -1 : static_cast<unsigned char>(jpeg[table + 5]);
}

TEST_F(PanelsTest, TheOpenPanelHasItsTitleItsButtonAndTheEightTypes) {
    start();
    for (const char* name : {"a.jpg", "b.jpeg", "c.jp2", "d.bmp", "e.png", "f.tif", "g.tiff",
                             "h.psd", "Photo.Jpg", "i.webp", "notes.txt"}) {
        QFile file(folder.filePath(QString::fromLatin1(name)));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    }
    app->state().setOpenFolder(folder.path());
    onNext<QFileDialog>([&](QFileDialog& panel) {
        EXPECT_EQ(panel.windowTitle(), QStringLiteral("Choose photo"));
        EXPECT_EQ(panel.labelText(QFileDialog::Accept), QStringLiteral("Choose"));
        EXPECT_EQ(panel.fileMode(), QFileDialog::ExistingFile);
        EXPECT_EQ(panel.acceptMode(), QFileDialog::AcceptOpen);
        EXPECT_EQ(panel.windowModality(), Qt::ApplicationModal);
        EXPECT_EQ(panel.nameFilters(),
                  QStringList{QStringLiteral(
                      "Pictures (*.[jJ][pP][gG] *.[jJ][pP][eE][gG] *.[jJ][pP]2 *.[bB][mM][pP] "
                      "*.[pP][nN][gG] *.[tT][iI][fF] *.[tT][iI][fF][fF] *.[pP][sS][dD])")});
        auto* list = panel.findChild<QTreeView*>(QStringLiteral("treeView"));
        ASSERT_NE(list, nullptr);
        // Folders are listed before.
        const auto names = [&] {
            QStringList shown;
            for (int row = 0; row < list->model()->rowCount(list->rootIndex()); ++row)
                shown << list->model()->index(row, 0, list->rootIndex()).data().toString();
            shown.removeAll(QStringLiteral("state"));
            shown.sort();
            return shown;
        };
        const QStringList pictures{
            QStringLiteral("Photo.Jpg"), QStringLiteral("a.jpg"),  QStringLiteral("b.jpeg"),
            QStringLiteral("c.jp2"),     QStringLiteral("d.bmp"),  QStringLiteral("e.png"),
            QStringLiteral("f.tif"),     QStringLiteral("g.tiff"), QStringLiteral("h.psd")};
        EXPECT_TRUE(QTest::qWaitFor([&] { return names() == pictures; }, kPatience))
            << names().join(QLatin1Char(' ')).toStdString();
        panel.reject();
    });
    app->actions().open->trigger();
    EXPECT_EQ(met, 1);
}

TEST_F(PanelsTest, TheOpenPanelsAnswerIsTheSourceAndItsFolderIsRemembered) {
    start();
    ASSERT_TRUE(QDir(folder.path()).mkpath(QStringLiteral("photos/summer")));
    const QString photo = picture(QStringLiteral("photos/summer/Beach.png"), 30, 20, Qt::red);
    app->state().setOpenFolder(folder.path());
    onNext<QFileDialog>([&](QFileDialog& panel) { choose(panel, photo); });
    app->actions().open->trigger();
    EXPECT_EQ(app->controller().saveFilename, "Beach Reflection");
    EXPECT_EQ(viewer().shownImage().size(), QSize(30, 40));
    EXPECT_EQ(app->state().recentFiles(), QStringList{photo});
    app->persist();
    app.reset();
    start();
    onNext<QFileDialog>([&](QFileDialog& panel) {
        EXPECT_EQ(panel.directory().absolutePath(), QFileInfo(photo).absolutePath());
        panel.reject();
    });
    app->actions().open->trigger();
    EXPECT_EQ(met, 2);
    // A folder that is gone gives way to the user's own.
    ASSERT_TRUE(QDir(folder.filePath(QStringLiteral("photos"))).removeRecursively());
    onNext<QFileDialog>([&](QFileDialog& panel) {
        EXPECT_TRUE(panel.directory().exists());
        panel.reject();
    });
    app->actions().open->trigger();
    EXPECT_EQ(met, 3);
}

TEST_F(PanelsTest, CancellingTheOpenPanelChangesNothing) {
    start();
    const QImage before = viewer().shownImage();
    app->state().setOpenFolder(folder.path());
    onNext<QFileDialog>([&](QFileDialog& panel) {
        nameOf(panel).setText(picture(QStringLiteral("Beach.png"), 30, 20, Qt::red));
        panel.reject();
    });
    app->actions().open->trigger();
    EXPECT_EQ(met, 1);
    EXPECT_EQ(app->controller().saveFilename, "TavelinLogo");
    EXPECT_EQ(viewer().shownImage().cacheKey(), before.cacheKey());
    EXPECT_TRUE(app->state().recentFiles().isEmpty());
    EXPECT_EQ(app->state().openFolder(), folder.path());
}

TEST_F(PanelsTest, TheQualityChosenInTheSheetIsTheFiles) {
    start({picture(QStringLiteral("a.png"), 30, 20, QColor(200, 60, 30))});
    const auto at = [this](int percent) {
        return bytesOf(saveAs(QStringLiteral("q%1.jpeg").arg(percent), [&](SaveOptionsView& view) {
            view.setType(kUTTypeJPEG);
            view.findChild<QSpinBox*>()->setValue(percent);
        }));
    };
    // The standard's own luminance table begins with 16 and is the one of quality 50; a quality of
    // 90 takes a fifth of it and one of 10 five times as much (its Annex K and the usual scaling).
    EXPECT_EQ(firstQuantum(at(50)), 16);
    EXPECT_EQ(firstQuantum(at(90)), 3);
    EXPECT_EQ(firstQuantum(at(10)), 80);
}

TEST_F(PanelsTest, UnderAPictureSavedWithoutTransparencyLiesTheBackgroundOfThatMoment) {
    start({picture(QStringLiteral("a.png"), 30, 20, Qt::black)});
    QTest::mouseClick(&viewer(), Qt::LeftButton);
    app->toolkit().colorPanel().pick(QColor(0, 0, 255));
    const QImage saved(saveAs(QStringLiteral("matte.jpeg"), [&](SaveOptionsView& view) {
        view.setType(kUTTypeJPEG);
        app->toolkit().colorPanel().pick(QColor(255, 0, 0));
    }));
    ASSERT_EQ(saved.size(), QSize(30, 40));
    // The reflection's last row has faded out.
    const QColor ground = saved.pixelColor(15, 39);
    EXPECT_GT(ground.red(), 200);
    EXPECT_LT(ground.blue(), 60);
}

TEST_F(PanelsTest, TheCompressionChosenInTheSheetIsTheFiles) {
    start({picture(QStringLiteral("a.png"), 30, 20, Qt::red)});
    const struct {
        const char* name;
        std::int64_t tag;
    } rows[] = {{"None", 1}, {"LZW", 5}, {"Deflate", 8}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const QString path = saveAs(
            QStringLiteral("%1.tiff").arg(QLatin1String(row.name)), [&](SaveOptionsView& view) {
                for (auto* box : view.findChildren<QComboBox*>()) {
                    const int found = box->findText(QLatin1String(row.name));
                    if (found >= 0) box->setCurrentIndex(found);
                }
            });
        const DecodedImage saved = read(path);
        EXPECT_EQ(saved.image.height(), 40);
        EXPECT_EQ(std::get<std::int64_t>(saved.properties.at("{TIFF}.Compression")), row.tag);
    }
}

TEST_F(PanelsTest, TheSourcesResolutionIsKeptInEveryFormatThatHasOne) {
    QImage image(30, 20, QImage::Format_RGBA8888);
    image.fill(Qt::red);
    image.setDotsPerMeterX(11811);  // 300 dots an inch of 0.0254 m
    image.setDotsPerMeterY(11811);
    const QString source = folder.filePath(QStringLiteral("dense.png"));
    ASSERT_TRUE(image.save(source));
    start({source});
    const std::pair<std::string_view, const char*> rows[] = {{kUTTypeTIFF, "saved.tiff"},
                                                             {kUTTypePNG, "saved.png"},
                                                             {kUTTypeJPEG, "saved.jpeg"},
                                                             {kUTTypeBMP, "saved.bmp"}};
    for (const auto& [type, name] : rows) {
        SCOPED_TRACE(name);
        const DecodedImage saved =
            read(saveAs(QLatin1String(name), [&type = type](auto& view) { view.setType(type); }));
        EXPECT_NEAR(std::get<double>(saved.properties.at("DPIWidth")), 300, 0.1);
        EXPECT_NEAR(std::get<double>(saved.properties.at("DPIHeight")), 300, 0.1);
    }
}

TEST_F(PanelsTest, ClosingThePanelEndsNothingAndClosingTheMainWindowEndsTheLoopWell) {
    const bool before = QApplication::quitOnLastWindowClosed();
    QApplication::setQuitOnLastWindowClosed(false);  // as the program does
    start();
    app->actions().backgroundColor->trigger();
    bool panelWasAlone = false;
    QTimer::singleShot(0, &window(), [&] {
        app->actions().closeNoSave->trigger();
        app->raise();
        app->toolkit().colorPanel().dialog()->close();
        QApplication::processEvents();
        QTimer::singleShot(0, &window(), [&] {
            panelWasAlone = true;
            window().close();
        });
    });
    EXPECT_EQ(QApplication::exec(), 0);
    EXPECT_TRUE(panelWasAlone);
    QApplication::setQuitOnLastWindowClosed(before);
}

TEST_F(PanelsTest, ThePointerSaysThatThePictureIsReadCopiedOrWritten) {
    start();
    int waited = 0;
    const auto look = [&] { waited += QGuiApplication::overrideCursor() != nullptr ? 1 : 0; };
    QObject::connect(&viewer(), &Viewer::imageChanged, &viewer(), look);
    ASSERT_TRUE(app->openPicture(picture(QStringLiteral("a.png"), 30, 20, Qt::red)));
    EXPECT_EQ(waited, 1);
    app->actions().copy->trigger();
    EXPECT_EQ(waited, 2);
    app->actions().copyAsPng->trigger();
    EXPECT_EQ(waited, 3);
    const auto panel = app->toolkit().savePanel();
    panel->beginSheet(
        std::nullopt, "a.tiff", app->resultWindow(), [&](NSSavePanel&, int, void*) { look(); },
        nullptr);
    auto* sheet = window().findChild<QFileDialog*>(QStringLiteral("savePanel"));
    ASSERT_NE(sheet, nullptr);
    choose(*sheet, folder.filePath(QStringLiteral("a.tiff")));
    EXPECT_EQ(waited, 4);
    EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
}

TEST_F(PanelsTest, AnAlertWithoutAParentIsModalInTheStyleAskedFor) {
    start();
    const struct {
        NSAlertStyle style;
        QMessageBox::Icon icon;
    } rows[] = {{NSAlertStyle::Warning, QMessageBox::Warning},
                {NSAlertStyle::Informational, QMessageBox::Information},
                {NSAlertStyle::Critical, QMessageBox::Critical}};
    for (const auto& row : rows) {
        onNext<QMessageBox>([&](QMessageBox& alert) {
            EXPECT_EQ(alert.windowModality(), Qt::ApplicationModal);
            EXPECT_EQ(alert.parentWidget(), nullptr);
            EXPECT_EQ(alert.icon(), row.icon);
            EXPECT_EQ(alert.text(), QStringLiteral("Message."));
            EXPECT_EQ(alert.informativeText(), QStringLiteral("More."));
            ASSERT_EQ(alert.buttons().size(), 1);
            EXPECT_EQ(alert.buttons().front()->text(), QStringLiteral("OK"));
            alert.buttons().front()->click();
        });
        const int before = met;
        app->controller().doAlert("Message.", "More.", nullptr, row.style);
        EXPECT_EQ(met, before + 1) << "it returns when it has been answered";
    }
    EXPECT_TRUE(window().isVisible());
}

TEST_F(PanelsTest, AnAlertWithAParentIsASheetOfTheDefaultStyleAndReturnsAtOnce) {
    start();
    for (const NSAlertStyle style :
         {NSAlertStyle::Warning, NSAlertStyle::Informational, NSAlertStyle::Critical}) {
        app->controller().doAlert("Message.", "More.", &app->resultWindow(), style);
        QApplication::processEvents();
        auto* alert = window().findChild<QMessageBox*>(QStringLiteral("alert"));
        ASSERT_NE(alert, nullptr);
        EXPECT_TRUE(alert->isVisible());
        EXPECT_EQ(alert->windowModality(), Qt::WindowModal);
        EXPECT_EQ(alert->parentWidget(), &window());
        EXPECT_EQ(alert->icon(), QMessageBox::Warning);
        alert->buttons().front()->click();
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        EXPECT_EQ(window().findChild<QMessageBox*>(QStringLiteral("alert")), nullptr);
    }
}

}  // namespace
}  // namespace skarnel
