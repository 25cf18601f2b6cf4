// The open and save panels, the colour panel and alerts on Qt's dialogs.
#pragma once

#include <QColor>
#include <QColorDialog>
#include <QDBusConnection>
#include <QPointer>
#include <QWidget>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

#include "platform/notification_center.h"
#include "platform/panels.h"
#include "qt/window_state.h"

class QFileDialog;
class QMessageBox;

namespace skarnel {

class SaveDialog;
class SaveOptionsView;

/// The bus of the desktop's file dialogs, for a program in a sandbox.
using FilePortal = std::optional<QDBusConnection>;

/// Remembers its folder in the window's state, which is borrowed.
class QtOpenPanel final : public NSOpenPanel {
  public:
    /// With a bus the desktop's own dialog is asked for there.
    QtOpenPanel(WindowState& state, QWidget* parent, FilePortal portal = {})
        : state_(state), parent_(parent), portal_(std::move(portal)) {}

    void setAllowsMultipleSelection(bool allows) override { multiple_ = allows; }
    void setCanChooseDirectories(bool can) override { directories_ = can; }
    void setCanChooseFiles(bool can) override { files_ = can; }
    void setCanCreateDirectories(bool can) override { createDirectories_ = can; }
    void setTitle(std::string_view title) override { title_ = title; }
    void setPrompt(std::string_view prompt) override { prompt_ = prompt; }
    int runModalForTypes(const std::vector<std::string>& types) override;
    std::vector<std::string> filenames() const override { return filenames_; }

  private:
    void configure(QFileDialog& dialog, const std::vector<std::string>& types) const;
    int runPortalForTypes(const std::vector<std::string>& types);

    WindowState& state_;
    QWidget* parent_;
    FilePortal portal_;
    bool multiple_ = false;
    bool directories_ = false;
    bool files_ = true;
    bool createDirectories_ = true;
    std::string title_;
    std::string prompt_;
    std::vector<std::string> filenames_;
};

/// A sheet: modal for its window alone. Asks before it overwrites.
/// Told around the making and writing of a file, during which nothing is handled; may be empty.
struct SaveNotes {
    std::function<void(const QString& path)> begins;
    std::function<void()> ends;
};

class QtSavePanel final : public NSSavePanel, public std::enable_shared_from_this<QtSavePanel> {
  public:
    /// With a bus the place is chosen in the desktop's own dialog, after the format.
    explicit QtSavePanel(WindowState& state, FilePortal portal = {}, SaveNotes notes = {})
        : state_(state), portal_(std::move(portal)), notes_(std::move(notes)) {}

    void setAccessoryView(SaveOptionsView* view) { accessory_ = view; }
    void beginSheet(const std::optional<std::string>& directory, std::string_view file,
                    NSWindow& modalForWindow, DidEnd didEnd, void* contextInfo) override;
    std::string filename() const override { return filename_; }

  private:
    void beginPortalSheet(const QString& file, NSWindow& modalForWindow, const DidEnd& didEnd,
                          void* contextInfo);
    void follow(SaveDialog& dialog);
    void ended(SaveDialog& dialog, int result, const DidEnd& didEnd, void* contextInfo);
    void concluded(bool saved, const DidEnd& didEnd, void* contextInfo);

    WindowState& state_;
    FilePortal portal_;
    SaveNotes notes_;
    QPointer<QWidget> accessoryGuard_;
    SaveOptionsView* accessory_ = nullptr;
    std::string filename_;
};

class QtSaveOptions final : public IKSaveOptions,
                            public std::enable_shared_from_this<QtSaveOptions> {
  public:
    /// The recipe's text is offered to be kept inside the file; empty for no such offer. The
    /// background, as "#RRGGBB", is asked for when the properties are: the user can change it while
    /// the sheet is up.
    QtSaveOptions(const ImageProperties& properties, std::string_view type, std::string recipe = {},
                  std::function<std::string()> background = {})
        : properties_(properties),
          type_(type),
          recipe_(std::move(recipe)),
          background_(std::move(background)) {}

    void addSaveOptionsAccessoryViewToSavePanel(NSSavePanel& panel) override;
    std::string imageUTType() const override { return type_; }
    ImageProperties imageProperties() const override;

  private:
    ImageProperties properties_;
    std::string type_;
    std::string recipe_;
    std::function<std::string()> background_;
};

/// The one colour panel. While `focusedText` gives an editor, its colour goes to the text there.
class QtColorPanel final : public NSColorPanel {
  public:
    using ColorText = std::function<bool(const QColor&)>;
    QtColorPanel(NSNotificationCenter& center, QWidget* parent);

    /// Called first on every change: colours the text in focus and says whether there was one.
    void setColorText(ColorText colorText) { colorText_ = std::move(colorText); }

    NSColor color() const override;
    void orderFront(const NSObject* sender) override;

    /// Hides the panel with its window, and brings it back with it.
    void followWindow(bool shown);

    /// Shows a colour without announcing it as a change.
    void showColor(const QColor& color);
    /// As if the user had picked it.
    void pick(const QColor& color);
    QColorDialog* dialog() const { return dialog_; }

  private:
    QColorDialog& made();
    void changed(const QColor& color);

    NSNotificationCenter& center_;
    QWidget* parent_;
    ColorText colorText_;
    QColor color_ = Qt::black;
    bool waits_ = false;             // was on the screen when its window was hidden
    QPointer<QColorDialog> dialog_;  // the parent's child
};

class QtAlert final : public NSAlert, public std::enable_shared_from_this<QtAlert> {
  public:
    QtAlert(std::string_view message, std::vector<std::string> buttons,
            std::string_view informative)
        : message_(message), buttons_(std::move(buttons)), informative_(informative) {}

    void setAlertStyle(NSAlertStyle style) override { style_ = style; }
    int runModal() override;
    void beginSheet(NSWindow& modalForWindow, const NSObject* modalDelegate, DidEnd didEnd,
                    void* contextInfo) override;

  private:
    std::unique_ptr<QMessageBox> box(QWidget* parent) const;

    std::string message_;
    std::vector<std::string> buttons_;
    std::string informative_;
    NSAlertStyle style_ = NSAlertStyle::Warning;
};

}  // namespace skarnel
