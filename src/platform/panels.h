// The panels: open, save with its format options, colours, and alerts.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "imaging/io/image_io.h"
#include "imaging/nscolor.h"
#include "platform/object.h"
#include "platform/window.h"

namespace skarnel {

/// What a panel answers when the user confirmed; any other number means cancelled.
inline constexpr int NSOKButton = 1;
inline constexpr int NSCancelButton = 0;

class NSOpenPanel : public NSObject {
  public:
    virtual void setAllowsMultipleSelection(bool allows) = 0;
    virtual void setCanChooseDirectories(bool can) = 0;
    virtual void setCanChooseFiles(bool can) = 0;
    virtual void setCanCreateDirectories(bool can) = 0;
    virtual void setTitle(std::string_view title) = 0;
    /// The label of the confirming button.
    virtual void setPrompt(std::string_view prompt) = 0;

    /// Runs modally for the whole application, showing only files with one of the extensions
    /// (given without the full stop, compared in any letter case).
    virtual int runModalForTypes(const std::vector<std::string>& types) = 0;

    /// Full paths of what was chosen, UTF-8.
    virtual std::vector<std::string> filenames() const = 0;
};

/// Kept alive by its sheet until that has ended.
class NSSavePanel : public NSObject {
  public:
    using DidEnd = std::function<void(NSSavePanel& panel, int returnCode, void* contextInfo)>;

    /// Shows the panel as a sheet on `window` and returns at once. `directory` none leaves the
    /// folder to the panel. `didEnd` is called once, when the user closes the sheet.
    virtual void beginSheet(const std::optional<std::string>& directory, std::string_view file,
                            NSWindow& modalForWindow, DidEnd didEnd, void* contextInfo) = 0;

    /// The full path chosen, UTF-8.
    virtual std::string filename() const = 0;
};

/// The format of a save and its options, which the user chooses in a view inside the save panel.
class IKSaveOptions : public NSObject {
  public:
    /// Puts the options view into the panel, before its sheet begins.
    virtual void addSaveOptionsAccessoryViewToSavePanel(NSSavePanel& panel) = 0;

    /// The type identifier chosen, at first the one it was made with.
    virtual std::string imageUTType() const = 0;

    /// What to write with the picture: the properties it was made with and the options chosen.
    virtual ImageProperties imageProperties() const = 0;
};

/// One panel for the whole application, not modal. With a text view in focus it colours text, by
/// the toolkit's own handling. Posts NSColorPanelColorDidChangeNotification on every change.
class NSColorPanel : public NSObject {
  public:
    virtual NSColor color() const = 0;
    /// Brings the panel to the front. `sender` may be null.
    virtual void orderFront(const NSObject* sender) = 0;
};

/// The toolkit's alert styles.
enum class NSAlertStyle { Warning = 0, Informational = 1, Critical = 2 };

/// Kept alive by its sheet until that has ended.
class NSAlert : public NSObject {
  public:
    using DidEnd = std::function<void(NSAlert& alert, int returnCode, void* contextInfo)>;

    virtual void setAlertStyle(NSAlertStyle style) = 0;

    /// Runs modally for the whole application; returns when a button was pressed.
    virtual int runModal() = 0;

    /// Shows the alert as a sheet and returns at once. `didEnd` may be empty.
    virtual void beginSheet(NSWindow& modalForWindow, const NSObject* modalDelegate, DidEnd didEnd,
                            void* contextInfo) = 0;
};

}  // namespace skarnel
