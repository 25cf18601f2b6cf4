// Every command of the window as an action, in the menus and on the tool bar.
#pragma once

#include <QObject>
#include <array>

class QAction;
class QActionGroup;
class QLabel;
class QMenu;
class QToolBar;

namespace skarnel {

class MainWindow;
class SettingsModel;

/// Makes the actions and lays them out; what they do is connected by whoever owns the commands.
/// All actions are children of the window.
class MainActions final : public QObject {
    Q_OBJECT
  public:
    explicit MainActions(MainWindow& window);

    QAction* open = nullptr;
    QAction* save = nullptr;
    QAction* saveAndEdit = nullptr;
    QAction* closeNoSave = nullptr;
    QAction* quit = nullptr;

    QAction* undo = nullptr;
    QAction* redo = nullptr;
    QAction* copy = nullptr;
    QAction* copyAsPng = nullptr;
    QAction* copySelection = nullptr;
    QAction* paste = nullptr;
    QAction* selectAll = nullptr;
    QAction* reset = nullptr;
    QAction* playCue = nullptr;  // checkable

    /// By the zoom command's number: out, in, actual size, fit.
    std::array<QAction*, 4> zoom{};
    /// By the tool's number; checkable, one at a time.
    std::array<QAction*, 5> tools{};
    QAction* discardEdits = nullptr;
    QAction* checkerboard = nullptr;  // checkable
    QAction* showText = nullptr;      // checkable
    QAction* fullScreen = nullptr;    // checkable
    /// System, light, dark; checkable, one at a time.
    std::array<QAction*, 3> appearance{};

    QAction* imageText = nullptr;
    QAction* backgroundColor = nullptr;
    QAction* textColor = nullptr;

    QAction* help = nullptr;
    QAction* about = nullptr;

    QMenu* recent = nullptr;
    QToolBar* toolBar = nullptr;

    void showZoom(double factor);
    /// Names what would be undone and redone.
    void showHistory(const SettingsModel& model);

  private:
    QAction* make(const QString& text, const QString& icon, const QString& tip);
    void makeFile();
    void makeEdit();
    void makeView();
    void makeTools();
    void makeText();
    void fillMenus();
    void fillToolBar();

    MainWindow& window_;
    QLabel* zoomLabel_ = nullptr;
};

}  // namespace skarnel
