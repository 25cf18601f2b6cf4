#include "qt/application.h"

#include <QApplication>
#include <QCheckBox>
#include <QDialog>
#include <QElapsedTimer>
#include <QFile>
#include <QLineEdit>
#include <QPointer>
#include <QSplitter>
#include <QWindow>
#include <algorithm>
#include <chrono>

#include "qt/appearance.h"
#include "qt/color_well.h"
#include "qt/companions.h"
#include "qt/float_slider.h"
#include "qt/icons.h"
#include "qt/number_field.h"
#include "qt/settings_panel.h"
#include "qt/text_bar.h"
#include "qt/text_editor.h"
#include "qt/viewer.h"
#include "storage/left_overs.h"

#ifndef SKARNEL_HELP_HOST
#error "the build says on which host the help is"
#endif

namespace skarnel {
namespace {

constexpr int kStoreDelay = 1000;     // milliseconds after the last change ...
constexpr int kStoreAtMost = 3000;    // ... and after the first, however many follow
constexpr int kExposePatience = 300;  // milliseconds that start-up waits for the window manager
// A start waits no longer for settings that another program keeps locked; they are stored later.
constexpr std::chrono::milliseconds kLockPatience{500};

}  // namespace

Application::Application(const ApplicationParts& parts)
    : catalogue_(parts.catalogue),
      state_(parts.statePath),
      store_(parts.settingsPath),
      defaults_((store_.setLockPatience(kLockPatience), store_)),
      toolkit_({defaults_, state_, parts.attributedText, parts.textFiles, parts.makeWebView}),
      controller_(toolkit_, operations_, SKARNEL_HELP_HOST),
      model_((controller_.init(), defaults_), [this] { controller_.sliderChanged(nullptr); }),
      window_(model_),
      actions_(window_),
      nsWindow_(window_),
      imageView_(window_.viewer()),
      textView_(window_.textEditor(), toolkit_.defaultNotificationCenter()),
      colorText_(window_.settings().colorText()),
      applyBackground_(window_.settings().applyBackground()),
      progress_(window_.progress()) {
    toolkit_.setMainWindow(&window_);
    toolkit_.setBackgroundText([this] { return controller_.backgroundColorString(); });
    window_.setWindowIcon(applicationIcon());
    setOutlets();
    connectWindow();
    connectSettings();
    connectColors();
    connectFile();
    connectEdit();
    connectView();
    connectText();
    companions_ = new Companions(*this);
}

Application::~Application() = default;

void Application::setOutlets() {
    controller_.resultWindow = &nsWindow_;
    controller_.textView = &textView_;
    controller_.resultView = &imageView_;
    controller_.resultViewBackgroundColorTextField = &colorText_;
    controller_.applyBackgroundColorButton = &applyBackground_;
    controller_.progress = &progress_;
    SettingsPanel& panel = window_.settings();
    for (std::size_t i = 0; i < kSettingRanges.size(); ++i) {
        sliders_[i] = std::make_unique<QtSlider>(panel.slider(kSettingRanges[i].key));
        fields_[i] = std::make_unique<QtNumberTextField>(panel.field(kSettingRanges[i].key));
        nsWindow_.setResponder(panel.slider(kSettingRanges[i].key), *sliders_[i]);
        nsWindow_.setResponder(panel.field(kSettingRanges[i].key), *fields_[i]);
    }
    // In the table's order: height, width, gap, start, gradient, opacity, turn.
    NSSlider** const sliders[] = {&controller_.perspectiveHeightSlider,
                                  &controller_.perspectiveWidthSlider,
                                  &controller_.offsetSlider,
                                  &controller_.startSlider,
                                  &controller_.gradientSlider,
                                  &controller_.alphaSlider,
                                  &controller_.imagePerspectiveSlider};
    NSTextField** const fields[] = {&controller_.perspectiveHeightTextField,
                                    &controller_.perspectiveWidthTextField,
                                    &controller_.offsetTextField,
                                    &controller_.startTextField,
                                    &controller_.gradientTextField,
                                    &controller_.alphaTextField,
                                    &controller_.imagePerspectiveTextField};
    for (std::size_t i = 0; i < kSettingRanges.size(); ++i) {
        *sliders[i] = sliders_[i].get();
        *fields[i] = fields_[i].get();
    }
    nsWindow_.setResponder(window_.viewer(), imageView_);
    nsWindow_.setResponder(window_.textEditor(), textView_);
    nsWindow_.setResponder(panel.colorText(), colorText_);
    nsWindow_.setResponder(panel.colorWell(), colorWell_);
    nsWindow_.setResponder(panel.applyBackground(), applyBackground_);
}

void Application::connectWindow() {
    connect(&window_, &MainWindow::resized, this, [this] {
        if (awake_) controller_.windowDidResize({"NSWindowDidResizeNotification", &nsWindow_});
    });
    connect(&window_, &MainWindow::enteredFullScreen, this, [this] {
        controller_.windowDidEnterFullScreen(
            {"NSWindowDidEnterFullScreenNotification", &nsWindow_});
    });
    connect(&window_, &MainWindow::closing, this, &Application::end);
    connect(&window_, &MainWindow::picturesDropped, this, &Application::openPictures);
    connect(&window_, &MainWindow::dropRefused, this, [this] {
        window_.tell(tr("Only a picture file of this computer can be dropped here."));
    });
    connect(QApplication::instance(), &QApplication::aboutToQuit, this, &Application::persistAtEnd);
    window_.textEditor().setMayEdit(
        [this](const std::vector<NSRange>& ranges, const std::vector<std::u16string>& texts) {
            return controller_.textViewShouldChangeTextInRanges(textView_, ranges, texts);
        });
}

void Application::connectSettings() {
    storeTimer_.setSingleShot(true);
    // The window's place and the recent files too: a program that is killed does not get to its
    // end.
    connect(&storeTimer_, &QTimer::timeout, this, &Application::persist);
    const auto storeSoon = [this] {
        triedAtEnd_ = false;
        if (!storeTimer_.isActive()) storeBy_.setRemainingTime(kStoreAtMost);
        const qint64 left = std::max<qint64>(storeBy_.remainingTime(), 0);
        storeTimer_.start(static_cast<int>(std::min<qint64>(left, kStoreDelay)));
    };
    state_.onChange(storeSoon);
    connect(&window_, &MainWindow::resized, this, storeSoon);
    connect(&window_.splitter(), &QSplitter::splitterMoved, this, storeSoon);
    connect(&model_, &SettingsModel::numberChanged, this, storeSoon);
    connect(&model_, &SettingsModel::applyBackgroundChanged, this, storeSoon);
    connect(&model_, &SettingsModel::refreshed, this, storeSoon);
}

void Application::connectColors() {
    SettingsPanel& panel = window_.settings();
    imageView_.followBackground([this, &panel](const QColor& color) {
        panel.colorWell().setColor(color);
        window_.textEditor().setGround(color);
    });
    connect(&panel.colorWell(), &ColorWell::clicked, this, [this, &panel] {
        panel.colorWell().setFocus();
        toolkit_.colorPanel().showColor(window_.viewer().background());
        controller_.backgroundColor(&colorWell_);
    });
    connect(&panel.colorText(), &QLineEdit::editingFinished, this, &Application::commitColorText);
    connect(&window_, &MainWindow::shownChanged, this,
            [this](bool shown) { toolkit_.colorPanel().followWindow(shown); });
    toolkit_.colorPanel().setColorText([this](const QColor& color) {
        if (nsWindow_.firstResponder() != &textView_) return false;
        QTextCharFormat format;
        format.setForeground(color);
        window_.textEditor().mergeStyle(format);
        return true;
    });
}

void Application::restoreWindow() {
    applyAppearance(appearanceNamed(state_.appearance()));
    if (!window_.restoreGeometry(state_.geometry())) window_.takeFirstSize();
    window_.splitter().restoreState(state_.splitter());
    window_.splitter().setChildrenCollapsible(false);
    window_.setTextShown(state_.textShown());
    window_.viewer().setCheckerboard(state_.checkerboard());
    actions_.showText->setChecked(state_.textShown());
    actions_.checkerboard->setChecked(state_.checkerboard());
    actions_.playCue->setChecked(!state_.cueMuted());
    actions_.appearance[static_cast<std::size_t>(appearanceNamed(state_.appearance()))]->setChecked(
        true);
    window_.settings().refresh();
}

/// The first working copy gets the size that the viewer has by then; a window manager may give
/// the window another size than asked for (a maximised one above all) before it shows it.
void Application::laidOut() {
    window_.show();
    QElapsedTimer waited;
    waited.start();
    while (window_.windowHandle() != nullptr && !window_.windowHandle()->isExposed() &&
           waited.elapsed() < kExposePatience) {
        QApplication::processEvents(QEventLoop::ExcludeUserInputEvents, 10);
    }
    QApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
}

void Application::start(const QStringList& pictures) {
    restoreWindow();
    window_.viewer().setFocus();
    laidOut();
    controller_.awakeFromNib();
    controller_.applicationWillFinishLaunching(
        {"NSApplicationWillFinishLaunchingNotification", nullptr});
    awake_ = true;
    sourceChanged();
    openPictures(pictures);
    openPictures(std::exchange(waiting_, {}));
    // Nothing on the screen waits for the desktop's answer.
    QTimer::singleShot(0, &motion_, [this] {
        if (const auto folder = toolkit_.temporaryDirectory())
            removeAbandonedFolders(*folder, kPastedPrefix);
        store_.removeLeftOvers();
        state_.removeLeftOvers();
        if (const QString saved = state_.saveFolder(); !saved.isEmpty())
            removeLeftOversApart(QFile::encodeName(saved).toStdString());
        if (!qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS"))
            motion_.follow(QDBusConnection::sessionBus());
    });
}

void Application::showSource(const NSImage& picture, const std::string& saveName,
                             const QString& title) {
    controller_.image = picture;
    controller_.saveFilename = saveName;
    controller_.loadImage();
    sourceChanged(title);
}

void Application::raise(const ActivationToken& token) {
    const OfferedToken offered(token);
    // A window manager would take a hidden window for a new one, and place it anew.
    if (window_.isHidden() && window_.windowHandle() != nullptr)
        window_.windowHandle()->setPosition(window_.windowHandle()->position());
    // A minimised window that was maximised or full-screen becomes so again.
    window_.setWindowState(window_.windowState() & ~Qt::WindowMinimized);
    window_.show();
    window_.raise();
    window_.activateWindow();
}

void Application::end() {
    // A dialog that has no button for it would refuse to be closed, and the end with it.
    for (QPointer<QWidget> last; QWidget* modal = QApplication::activeModalWidget(); last = modal) {
        auto* dialog = qobject_cast<QDialog*>(modal);
        if (dialog == nullptr || modal == last) break;
        dialog->reject();
    }
    takeTyped();
    persistAtEnd();
    QApplication::quit();
}

/// Closing the window is followed by the toolkit's own notice of the end. What could not be stored
/// is not tried again then, unless it changed: the session may grant a few seconds only.
void Application::persistAtEnd() {
    if (triedAtEnd_) return;
    persist();
    triedAtEnd_ = true;
}

/// The window's own first: it has the user's looks, and nobody else writes it for long.
void Application::persist() {
    model_.flush();
    state_.setGeometry(window_.saveGeometry());
    state_.setSplitter(window_.splitter().saveState());
    state_.save();
    defaults_.synchronize();
    storeTimer_.stop();
}

void Application::persistWithoutWindow() {
    state_.save();
    defaults_.synchronize();
}

void Application::tellRefusedPage(const QUrl& page) {
    window_.tell(tr("The page cannot be opened: %1")
                     .arg(page.isLocalFile() ? page.toLocalFile() : page.toString()));
}

}  // namespace skarnel
