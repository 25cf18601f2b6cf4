// What the window's commands do: each goes to the controller, or serves the window alone.
#include <QAction>
#include <QApplication>
#include <QBuffer>
#include <QClipboard>
#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QTextCursor>
#include <algorithm>

#include "qt/accessible_parts.h"
#include "qt/appearance.h"
#include "qt/application.h"
#include "qt/cause_text.h"
#include "qt/companions.h"
#include "qt/icons.h"
#include "qt/page_refusal.h"
#include "qt/picture_painter.h"
#include "qt/preset_strip.h"
#include "qt/recipe_commands.h"
#include "qt/settings_panel.h"
#include "qt/text_bar.h"
#include "qt/text_editor.h"
#include "qt/viewer.h"
#include "qt/wait_cursor.h"
#include "storage/file_system.h"
#include "storage/safe_file.h"
#include "util/log/system_log.h"

namespace skarnel {
namespace {

constexpr double kSlowSavePixels = 4e6;  // from here on a save may take a second and more

QByteArray toQt(const Bytes& bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), static_cast<qsizetype>(bytes.size())};
}

/// A recent file's name, with its folder's where another one is called the same.
QString recentName(const QString& path, const QStringList& all) {
    const QFileInfo file(path);
    const auto same = [&](const QString& each) {
        return QFileInfo(each).fileName() == file.fileName();
    };
    if (std::count_if(all.begin(), all.end(), same) < 2) return file.fileName();
    return QStringLiteral("%1 — %2").arg(file.fileName(), file.dir().dirName());
}

}  // namespace

// File ---------------------------------------------------------------------------------------

void Application::connectFile() {
    connect(actions_.open, &QAction::triggered, this, [this] {
        const bool changed = changingSource([this] { controller_.browse(nullptr); });
        const QStringList chosen = state_.takeChosen();
        for (const QString& path : chosen)
            if (changed) noteOpened(path);
    });
    connect(actions_.save, &QAction::triggered, this, [this] {
        takeTyped();
        controller_.save(nullptr);
    });
    connect(actions_.saveAndEdit, &QAction::triggered, this, [this] {
        takeTyped();
        controller_.saveAndEdit(nullptr);
    });
    connect(actions_.closeNoSave, &QAction::triggered, this,
            [this] { controller_.closeNoSave(nullptr); });
    toolkit_.setSaveNotes({[this](const QString& path) {
                               const std::optional<NSImage>& source = controller_.image;
                               if (!source) return;
                               const CGSize size = source->size();
                               if (size.width * size.height < kSlowSavePixels) return;
                               window_.tell(tr("Saving “%1” …").arg(QFileInfo(path).fileName()));
                               window_.repaint();  // now, since nothing is handled until it is done
                           },
                           [this] { window_.endTelling(); }});
    toolkit_.setSaved([this](const std::string& path) {
        window_.announce(tr("Saved %1").arg(QFileInfo(QString::fromStdString(path)).fileName()));
    });
    connect(actions_.quit, &QAction::triggered, &window_, &QWidget::close);
    connect(actions_.recent, &QMenu::aboutToShow, this, &Application::fillRecent);
    fillRecent();
}

void Application::fillRecent() {
    actions_.recent->clear();
    actions_.recent->setToolTipsVisible(true);
    const QStringList files = state_.recentFiles();
    for (const QString& path : files) {
        QString name = recentName(path, files);
        QAction* each =
            actions_.recent->addAction(name.replace(QLatin1Char('&'), QLatin1String("&&")));
        each->setToolTip(path);
        connect(each, &QAction::triggered, this, [this, path] { openPicture(path); });
    }
    actions_.recent->addSeparator();
    QAction* clear = actions_.recent->addAction(tr("&Clear Menu"));
    clear->setEnabled(!files.isEmpty());
    connect(clear, &QAction::triggered, this, [this] { state_.clearRecentFiles(); });
}

// Edit ---------------------------------------------------------------------------------------

void Application::connectEdit() {
    connect(actions_.copy, &QAction::triggered, this, [this] {
        takeTyped();
        const WaitCursor atWork;
        controller_.putImageOnClipboard(nullptr);
    });
    toolkit_.setCopied([this] { window_.announce(tr("Copied")); });
    connect(actions_.copyAsPng, &QAction::triggered, this, &Application::copyAsPng);
    connect(actions_.copySelection, &QAction::triggered, this, &Application::copySelection);
    connect(actions_.paste, &QAction::triggered, this, &Application::pastePicture);
    connect(actions_.selectAll, &QAction::triggered, this,
            [this] { window_.viewer().selectAll(); });
    connect(&window_.viewer(), &Viewer::selectionChanged, this, [this] {
        actions_.copySelection->setEnabled(window_.viewer().sheet().selection.has_value());
    });
    connect(actions_.undo, &QAction::triggered, &model_, &SettingsModel::undo);
    connect(actions_.redo, &QAction::triggered, &model_, &SettingsModel::redo);
    connect(&model_, &SettingsModel::historyChanged, this,
            [this] { actions_.showHistory(model_); });
    actions_.showHistory(model_);
    const auto reset = [this] {
        model_.recordChange(tr("Reset"), [this] { controller_.reset(nullptr); });
    };
    connect(actions_.reset, &QAction::triggered, this, reset);
    connect(&window_.settings().resetButton(), &QPushButton::clicked, this, reset);
    connect(actions_.playCue, &QAction::toggled, this,
            [this](bool on) { state_.setCueMuted(!on); });
}

void Application::copyAsPng() {
    takeTyped();
    const WaitCursor atWork;
    controller_.sliderChanged(nullptr);
    if (!controller_.image) return;
    const auto source = operations_.getCGImageRef(*controller_.image);
    const auto result = source ? controller_.reflectedImage(*source) : std::nullopt;
    if (!result) return;
    const auto bytes = encodeImage(*result, kUTTypePNG);
    if (!bytes) return systemLog("Couldn't copy as PNG: " + bytes.error().message);
    QtPasteboard::putOnly(QStringLiteral("image/png"), toQt(*bytes));
    window_.announce(tr("Copied as PNG"));
    if (const auto sound = controller_.completionSound()) sound->play();
}

void Application::copySelection() {
    const QImage selected = window_.viewer().selectedPicture();
    if (selected.isNull()) return;
    QBuffer png;
    png.open(QIODevice::WriteOnly);
    if (selected.save(&png, "PNG")) QtPasteboard::putOnly(QStringLiteral("image/png"), png.data());
}

// View and tools -----------------------------------------------------------------------------

void Application::connectView() {
    for (std::size_t i = 0; i < actions_.zoom.size(); ++i)
        connect(actions_.zoom[i], &QAction::triggered, this, [this, i] {
            const QtTaggedSender sender(static_cast<std::int64_t>(i));
            controller_.doZoom(&sender);
        });
    for (std::size_t i = 0; i < actions_.tools.size(); ++i)
        connect(actions_.tools[i], &QAction::triggered, this, [this, i] {
            const QtTaggedSender sender(static_cast<std::int64_t>(i));
            controller_.switchToolMode(&sender);
        });
    Viewer& viewer = window_.viewer();
    connect(&viewer, &Viewer::zoomChanged, this, [this, &viewer] {
        actions_.showZoom(viewer.zoomFactor());
        announceValue(viewer);
    });
    connect(&viewer, &Viewer::editsChanged, this, [&viewer] { announceValue(viewer); });
    connect(&viewer, &Viewer::toolModeChanged, this, [this, &viewer] {
        actions_.tools[static_cast<std::size_t>(viewer.toolMode())]->setChecked(true);
        announceTool(viewer);
    });
    connect(actions_.discardEdits, &QAction::triggered, &viewer, &Viewer::discardEdits);
    connect(actions_.checkerboard, &QAction::toggled, this, [this](bool on) {
        window_.viewer().setCheckerboard(on);
        state_.setCheckerboard(on);
    });
    connect(actions_.showText, &QAction::toggled, this, [this](bool on) {
        window_.setTextShown(on);
        state_.setTextShown(on);
    });
    connect(actions_.fullScreen, &QAction::triggered, this, [this](bool on) {
        window_.setWindowState(window_.windowState().setFlag(Qt::WindowFullScreen, on));
    });
    for (std::size_t i = 0; i < actions_.appearance.size(); ++i)
        connect(actions_.appearance[i], &QAction::triggered, this, [this, i] {
            state_.setAppearance(appearanceName(static_cast<Appearance>(i)));
            applyAppearance(static_cast<Appearance>(i));
            window_.textEditor().setGround(window_.viewer().background());
        });
}

// Text and colours ---------------------------------------------------------------------------

void Application::connectText() {
    // The picture's file has a name that nobody chose.
    const auto imageText = [this] {
        const std::optional<NSImage> before = controller_.image;
        const std::string logged = loggedWhile(
            [this] { changingSource([this] { controller_.imageText(nullptr); }, tr("Text")); });
        const std::optional<NSImage>& now = controller_.image;
        if (now && (!before || !now->isSame(*before))) return;
        // The command's own alert has said it already, or the program is ending.
        if (QApplication::activeModalWidget() != nullptr || !window_.isVisible()) return;
        const auto cause = whyNoPage(logged);
        window_.tell(cause ? tr("The text cannot be made a picture: %1.").arg(causeText(*cause))
                           : tr("The text cannot be made a picture."));
    };
    connect(actions_.imageText, &QAction::triggered, this, imageText);
    connect(&window_.textBar().imageButton(), &QPushButton::clicked, this, imageText);
    connect(&window_.textBar(), &TextBar::colorAsked, this, &Application::showTextColor);
    connect(actions_.textColor, &QAction::triggered, this, &Application::showTextColor);
    connect(actions_.backgroundColor, &QAction::triggered, this, [this] {
        if (nsWindow_.firstResponder() == &textView_) window_.viewer().setFocus();
        toolkit_.colorPanel().showColor(window_.viewer().background());
        controller_.backgroundColor(nullptr);
    });
    connect(actions_.help, &QAction::triggered, this, [this] { controller_.vanteraHelp(nullptr); });
    connect(actions_.about, &QAction::triggered, this, &Application::showAbout);
}

void Application::showTextColor() {
    TextEditor& editor = window_.textEditor();
    actions_.showText->setChecked(true);
    editor.setFocus();
    toolkit_.colorPanel().showColor(editor.currentCharFormat().foreground().color());
    toolkit_.colorPanel().orderFront(nullptr);
}

void Application::takeTyped() {
    if (companions_) companions_->presets().finishTyping();
    window_.settings().commitNumbers();
    commitColorText();
    model_.flush();
}

void Application::commitColorText() {
    QLineEdit& field = window_.settings().colorText();
    if (!field.isModified()) return;
    field.setModified(false);
    QString typed = field.text().trimmed();
    if (!typed.startsWith(QLatin1Char('#'))) typed.prepend(QLatin1Char('#'));
    QColor color = typed.size() == 7 ? QColor(typed) : QColor();
    if (!color.isValid()) {
        field.setText(QString::fromStdString(controller_.backgroundColorString()));
        return;
    }
    // Its text says nothing of opacity, which stays.
    color.setAlpha(window_.viewer().background().alpha());
    nsWindow_.setStandIn(&colorText_);
    toolkit_.colorPanel().showColor(window_.viewer().background());
    toolkit_.colorPanel().pick(color);
    nsWindow_.setStandIn(nullptr);
    field.setText(QString::fromStdString(controller_.backgroundColorString()));
}

void Application::showAbout() {
    QMessageBox box(&window_);
    box.setWindowTitle(tr("About Skarnel"));
    box.setIconPixmap(applicationIcon().pixmap(96, 96));
    box.setText(QStringLiteral("<b>Skarnel %1</b>").arg(QApplication::applicationVersion()));
    box.setInformativeText(tr("Turns a picture into its reflection."));
    box.exec();
}

}  // namespace skarnel
