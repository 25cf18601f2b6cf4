// The main window: what is in it and how its parts are laid out. Commands are in MainActions.
#pragma once

#include <QMainWindow>
#include <functional>

class QProgressBar;
class QSplitter;

namespace skarnel {

class Announcer;
class SettingsModel;
class SettingsPanel;
class TextBar;
class TextEditor;
class Toast;
class Viewer;

class MainWindow final : public QMainWindow {
    Q_OBJECT
  public:
    explicit MainWindow(SettingsModel& model);

    Viewer& viewer() const { return *viewer_; }
    TextEditor& textEditor() const { return *textEditor_; }
    TextBar& textBar() const { return *textBar_; }
    SettingsPanel& settings() const { return *settings_; }
    QSplitter& splitter() const { return *splitter_; }
    /// The controller has it; no command uses it, and it is never shown.
    QProgressBar& progress() const { return *progress_; }

    /// A word to the user over the picture, which goes by itself.
    void tell(const QString& message);
    /// Takes the word away: what it was about is over.
    void endTelling();

    /// A word to those who do not see the window; nothing is shown.
    void announce(const QString& message);

    /// The size of the first start: the proposed one, where the screen has room for it and for a
    /// window manager's frame.
    void takeFirstSize();

    /// Shows and hides the text below the picture.
    void setTextShown(bool shown);
    bool textShown() const;

    QSize sizeHint() const override { return {1100, 760}; }

  signals:
    void resized();
    /// The window is full screen and has the screen's size.
    void enteredFullScreen();
    /// The window went full screen or came back, whoever asked for it.
    void fullScreenChanged(bool on);
    /// The program itself hid the window or showed it; not minimising, nor another workspace.
    void shownChanged(bool shown);
    /// The user closes the window; nobody can prevent it any more.
    void closing();
    void picturesDropped(const QStringList& paths);
    /// Something was dropped that is no file of this machine.
    void dropRefused();

  protected:
    bool event(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

  private:
    QSize roomOnScreen() const;
    QWidget* textArea();
    void noticeFullScreen();

    Viewer* viewer_;
    TextEditor* textEditor_;
    TextBar* textBar_ = nullptr;
    SettingsPanel* settings_;
    QSplitter* splitter_;
    QProgressBar* progress_;
    Toast* toast_;
    Announcer* announcer_;
    bool fullScreenAwaited_ = false;
};

}  // namespace skarnel
