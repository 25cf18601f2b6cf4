// The whole application on stores of its own, for tests that drive the real window.
#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QColorDialog>
#include <QFile>
#include <QImage>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QTest>

#include "app/standard_text_files.h"
#include "qt/application.h"
#include "qt/page/text_layout.h"
#include "qt/settings_panel.h"
#include "qt/text_editor.h"
#include "qt/viewer.h"
#include "textimaging/text_system.h"

namespace skarnel {

class ApplicationTest : public ::testing::Test {
  protected:
    static constexpr int kPatience = 10'000;  // milliseconds until a condition counts as failed

    void make() {
        app = std::make_unique<Application>(
            ApplicationParts{folder.filePath(QStringLiteral("settings.json")).toStdString(),
                             folder.filePath(QStringLiteral("state/window.json")), textSystem,
                             textFiles, makeWebView, guideCatalogue});
    }

    void start(const QStringList& pictures = {}) {
        make();
        app->start(pictures);
        settle();
    }

    /// Sends what the model has waiting and lets every event that is there be handled.
    void settle() {
        app->model().flush();
        QApplication::processEvents();
    }

    /// A picture of one colour, on disk.
    QString picture(const QString& name, int width, int height, const QColor& color) {
        QImage image(width, height, QImage::Format_RGBA8888);
        image.fill(color);
        const QString path = folder.filePath(name);
        EXPECT_TRUE(image.save(path));
        return path;
    }

    QByteArray bytesOf(const QString& path) {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
        return file.readAll();
    }

    MainWindow& window() { return app->window(); }
    Viewer& viewer() { return app->window().viewer(); }
    SettingsPanel& panel() { return app->window().settings(); }

    QTemporaryDir folder;
    TextSystem textSystem{TextLayout{naturalTextSize, paragraphHeights}};
    StandardTextFiles textFiles;
    /// Set before the application is made, where text is to become a picture; else none does.
    decltype(ApplicationParts::makeWebView) makeWebView;
    /// Set before the application is made, where the guide is to open in another language.
    QString guideCatalogue;
    std::unique_ptr<Application> app;
};

}  // namespace skarnel
