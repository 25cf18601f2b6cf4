// The application: the controller with its toolkit, the window, and the wires between them.
#pragma once

#include <QDeadlineTimer>
#include <QObject>
#include <QStringList>
#include <QTimer>
#include <QUrl>
#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>

#include "app/image_operations.h"
#include "app/stored_user_defaults.h"
#include "app/vantera_desktop_controller.h"
#include "qt/activation_token.h"
#include "qt/main_actions.h"
#include "qt/main_window.h"
#include "qt/motion.h"
#include "qt/settings_model.h"
#include "qt/toolkit.h"
#include "qt/toolkit_controls.h"
#include "qt/toolkit_views.h"
#include "qt/window_state.h"
#include "storage/private_folder.h"
#include "storage/settings_store.h"
#include "util/log/result.h"

namespace skarnel {

class Companions;

/// The folders of pasted pictures, in the toolkit's temporary directory, begin with it.
inline constexpr std::string_view kPastedPrefix = "pasted-";

/// Where the application keeps what outlives it, and the text system it stands on (borrowed).
struct ApplicationParts {
    std::string settingsPath;
    QString statePath;
    AttributedTextServices& attributedText;
    TextFiles& textFiles;
    std::function<std::unique_ptr<WebView>(const CGRect&, NSNotificationCenter&)> makeWebView;
    QString catalogue = {};  ///< of the language that the texts are in; empty for English
};

class Application final : public QObject {
    Q_OBJECT
  public:
    /// Makes everything up to the point where the controller has its outlets.
    explicit Application(const ApplicationParts& parts);
    ~Application() override;

    /// Restores the window's place, shows it, sets the controller up and shows the logo's
    /// reflection, then the first of the pictures.
    void start(const QStringList& pictures);

    /// Makes a file the source picture. A file that is no picture is answered with a word to the
    /// user and changes nothing. Paths and file addresses.
    bool openPicture(const QString& path);
    /// Opens the first and puts the others into Open Recent; while a sheet is up, all of them.
    /// What comes before the start has installed its first picture waits for that.
    void openPictures(const QStringList& paths);
    /// Makes a picture that was shown before the source picture again, as the start does with the
    /// first one.
    void showSource(const NSImage& picture, const std::string& saveName, const QString& title);
    /// Tells the user where the page is that nothing on this computer opens.
    void tellRefusedPage(const QUrl& page);

    /// Brings the window to the front, also after it was hidden, by the token of the start that
    /// asks for it.
    void raise(const ActivationToken& token = {});
    /// Takes what is typed in the panel's fields and waits there, as leaving them would, and sends
    /// the action for it.
    void takeTyped();
    /// Ends the program as closing the window does: sheets are cancelled, everything is stored.
    void end();
    /// Stores what is to be found again at the next start.
    void persist();
    /// The same without asking the window, which may have lost its display.
    void persistWithoutWindow();

    MainWindow& window() { return window_; }
    MainActions& actions() { return actions_; }
    SettingsModel& model() { return model_; }
    VanteraDesktopController& controller() { return controller_; }
    QtToolkit& toolkit() { return toolkit_; }
    QtWindow& resultWindow() { return nsWindow_; }
    QtTextView& textView() { return textView_; }
    QtImageView& imageView() { return imageView_; }
    StoredUserDefaults& defaults() { return defaults_; }
    WindowState& state() { return state_; }
    const Motion& motion() const { return motion_; }
    Companions& companions() { return *companions_; }
    /// Of the window's language; empty for English.
    const QString& catalogue() const { return catalogue_; }

  private:
    // application.cpp: the outlets and the window's own events
    void setOutlets();
    void connectWindow();
    void connectSettings();
    void connectColors();
    void restoreWindow();
    void laidOut();
    void persistAtEnd();

    // commands.cpp: what the actions do
    void connectFile();
    void connectEdit();
    void connectView();
    void connectText();
    void fillRecent();
    void copyAsPng();
    void copySelection();
    void commitColorText();
    void showTextColor();
    void showAbout();

    // source_commands.cpp: where the picture comes from
    void pastePicture();
    /// Runs a command that may install another source picture; shows when it has, which is given
    /// back. The title is the name proposed for saving unless another is given.
    bool changingSource(const std::function<void()>& command, const QString& title = {});
    void sourceChanged(const QString& title = {});
    /// After a file was to become the source: it is a recent file now, or the log has the cause why
    /// there is no picture, which is given back.
    std::optional<Error> noteOpened(const QString& path);
    void tellRefusedPicture(const QString& name, const Error& cause);

    QString catalogue_;
    WindowState state_;
    SettingsStore store_;
    StoredUserDefaults defaults_;
    QtToolkit toolkit_;
    ImageOperations operations_;
    VanteraDesktopController controller_;
    SettingsModel model_;
    MainWindow window_;
    MainActions actions_;

    QtWindow nsWindow_;
    QtImageView imageView_;
    QtTextView textView_;
    QtTextField colorText_;
    QtTaggedSender colorWell_{0};
    QtButton applyBackground_;
    QtProgressIndicator progress_;
    std::array<std::unique_ptr<QtSlider>, kSettingRanges.size()> sliders_;
    std::array<std::unique_ptr<QtNumberTextField>, kSettingRanges.size()> fields_;
    QTimer storeTimer_;
    QDeadlineTimer storeBy_;  // while the timer runs
    Motion motion_;
    bool awake_ = false;                     // the logo is installed: pictures may come
    std::unique_ptr<PrivateFolder> pasted_;  // holds the pasted picture while it is the source
    QStringList waiting_;                    // pictures of calls that came before
    bool triedAtEnd_ = false;                // nothing changed since all was stored for the end
    Companions* companions_ = nullptr;       // last: it holds on to all the others; a child
};

}  // namespace skarnel
