// The settings as the window edits them: the stored values, who shows them, and undo.
#pragma once

#include <QObject>
#include <QString>
#include <functional>
#include <string_view>

#include "app/settings_undo.h"
#include "platform/user_defaults.h"
#include "qt/setting_ranges.h"

namespace skarnel {

/// Writes each edit to its key at once and then, once for all edits that are already waiting in
/// the event queue, lets the action be sent: a drag never piles up renders of values that the
/// hand has left behind. Undo holds one entry for each gesture.
class SettingsModel final : public QObject {
    Q_OBJECT
  public:
    using SendAction = std::function<void()>;
    SettingsModel(NSUserDefaults& defaults, SendAction action, QObject* parent = nullptr);

    float number(std::string_view key) const { return defaults_.floatForKey(key); }
    bool applyBackground() const { return defaults_.boolForKey(kApplyBackgroundColorKey); }

    /// Everything edited from here to `endGesture` is one entry of undo.
    void beginGesture(const QString& name);
    void endGesture();
    /// As `beginGesture`, for what has no end of its own, such as notches of the wheel: goes on
    /// with the open gesture of that name; any other gesture, or undo, ends it.
    void continueGesture(const QString& name);

    /// Writes the number and asks for the action.
    void editNumber(std::string_view key, float value);
    void editApplyBackground(bool on);
    /// Both as a gesture of their own.
    void changeNumber(const QString& name, std::string_view key, float value);
    void changeAll(const QString& name, const SettingsState& values);

    /// Writes all without an entry of undo, for the functions of `recordAction`.
    void write(const SettingsState& values);

    /// Runs `change`, which writes the settings by itself (reset does), as one entry of undo.
    void recordChange(const QString& name, const std::function<void()>& change);

    /// Makes a change of something else by `forth`, as one entry of undo among the settings'.
    void recordAction(const QString& name, const std::function<void()>& back,
                      const std::function<void()>& forth);

    /// The same for a change that has been made already. Ends a gesture that has begun meanwhile.
    void recordDone(const QString& name, const std::function<void()>& back,
                    const std::function<void()>& forth);

    void undo();
    void redo();
    const SettingsUndo& history() const { return undo_; }

    /// Sends the action that is waiting, if there is one, now.
    void flush();

  signals:
    void numberChanged(std::string_view key, float value);
    void applyBackgroundChanged(bool on);
    /// Every control is to show what is stored.
    void refreshed();
    /// What can be undone and redone may have changed.
    void historyChanged();

  private:
    void askForAction();

    NSUserDefaults& defaults_;
    SendAction action_;
    SettingsUndo undo_;
    std::string openName_;
    bool actionWaits_ = false;
};

}  // namespace skarnel
