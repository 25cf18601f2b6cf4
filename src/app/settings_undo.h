// Undo and redo of the settings: one entry for one gesture.
#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/user_defaults.h"
#include "render/settings.h"

namespace skarnel {

/// All that the settings' controls show.
struct SettingsState {
    std::array<float, kReflectionSettings.size()> numbers{};  // in the settings' order
    bool applyBackgroundColor = false;
    /// Floats compare by their bits, so that a state with NaN equals itself.
    friend bool operator==(const SettingsState& a, const SettingsState& b);
};

/// The defaults of every setting, as a reset leaves them.
SettingsState defaultSettings();

/// The stored settings as a render reads them: an absent opacity is its default, any other absent
/// number 0, an absent flag false.
SettingsState readSettings(const NSUserDefaults& defaults);

/// A history of settings' states. A gesture (a drag from press to release, a run of key presses, a
/// typed number, a reset) is recorded as one entry however many values it went through, and as none
/// when it ended where it began. Recording drops what could be redone.
class SettingsUndo {
  public:
    /// Keeps at most `limit` entries; the oldest go first. At least 1.
    explicit SettingsUndo(std::size_t limit = 100);

    /// Begins a gesture from a state; one that is still open ends at that state first. The label
    /// names the gesture in the menu ("Opacity").
    void beginGesture(std::string label, const SettingsState& before);

    /// Ends the open gesture; without one does nothing.
    void endGesture(const SettingsState& after);
    bool isGestureOpen() const { return open_.has_value(); }

    /// A gesture that begins and ends at once.
    void record(std::string label, const SettingsState& before, const SettingsState& after);

    /// A change of something else, which has been made: how it is taken back and made again.
    void recordAction(std::string label, std::function<void()> back, std::function<void()> forth);

    bool canUndo() const { return done_ > 0; }
    bool canRedo() const { return done_ < entries_.size(); }
    /// Labels of what would be undone and redone; empty when there is nothing.
    std::string undoLabel() const;
    std::string redoLabel() const;

    /// The state to return to; none when there is nothing, or when what is undone was an action,
    /// which is taken back (made again) here. A gesture that is still open must be
    /// ended first (asserted).
    std::optional<SettingsState> undo();
    std::optional<SettingsState> redo();

  private:
    struct Entry {
        std::string label;
        SettingsState before;
        SettingsState after;
        std::function<void()> back;  // of an action; empty in an entry of states
        std::function<void()> forth;
    };
    void append(Entry entry);
    std::size_t limit_;
    std::vector<Entry> entries_;
    std::size_t done_ = 0;  // entries_[0, done_) can be undone, the rest redone
    std::optional<Entry> open_;
};

}  // namespace skarnel
