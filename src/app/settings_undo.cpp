#include "app/settings_undo.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cstdint>
#include <utility>

namespace skarnel {

bool operator==(const SettingsState& a, const SettingsState& b) {
    const auto sameBits = [](float x, float y) {
        return std::bit_cast<std::uint32_t>(x) == std::bit_cast<std::uint32_t>(y);
    };
    return a.applyBackgroundColor == b.applyBackgroundColor &&
           std::equal(a.numbers.begin(), a.numbers.end(), b.numbers.begin(), sameBits);
}

SettingsState defaultSettings() {
    SettingsState state;
    for (std::size_t i = 0; i < kReflectionSettings.size(); ++i) {
        state.numbers[i] = kReflectionSettings[i].defaultValue;
    }
    return state;
}

SettingsState readSettings(const NSUserDefaults& defaults) {
    SettingsState state;
    for (std::size_t i = 0; i < kReflectionSettings.size(); ++i) {
        const ReflectionSetting& setting = kReflectionSettings[i];
        const bool hasFallback = setting.key == "alpha";
        state.numbers[i] = hasFallback && !defaults.objectForKey(setting.key)
                               ? setting.defaultValue
                               : defaults.floatForKey(setting.key);
    }
    state.applyBackgroundColor = defaults.boolForKey(kApplyBackgroundColorKey);
    return state;
}

SettingsUndo::SettingsUndo(std::size_t limit) : limit_(std::max<std::size_t>(limit, 1)) {}

void SettingsUndo::beginGesture(std::string label, const SettingsState& before) {
    endGesture(before);
    open_ = Entry{std::move(label), before, before, {}, {}};
}

void SettingsUndo::endGesture(const SettingsState& after) {
    std::optional<Entry> ended = std::exchange(open_, std::nullopt);
    if (ended) record(std::move(ended->label), ended->before, after);
}

void SettingsUndo::record(std::string label, const SettingsState& before,
                          const SettingsState& after) {
    if (before == after) return;
    append({std::move(label), before, after, {}, {}});
}

void SettingsUndo::recordAction(std::string label, std::function<void()> back,
                                std::function<void()> forth) {
    assert(!isGestureOpen());
    append({std::move(label), {}, {}, std::move(back), std::move(forth)});
}

void SettingsUndo::append(Entry entry) {
    entries_.resize(done_);
    entries_.push_back(std::move(entry));
    if (entries_.size() > limit_) entries_.erase(entries_.begin());
    done_ = entries_.size();
}

std::string SettingsUndo::undoLabel() const {
    return canUndo() ? entries_[done_ - 1].label : std::string();
}

std::string SettingsUndo::redoLabel() const {
    return canRedo() ? entries_[done_].label : std::string();
}

std::optional<SettingsState> SettingsUndo::undo() {
    assert(!isGestureOpen());
    if (!canUndo()) return std::nullopt;
    const Entry& entry = entries_[--done_];
    if (!entry.back) return entry.before;
    entry.back();
    return std::nullopt;
}

std::optional<SettingsState> SettingsUndo::redo() {
    assert(!isGestureOpen());
    if (!canRedo()) return std::nullopt;
    const Entry& entry = entries_[done_++];
    if (!entry.forth) return entry.after;
    entry.forth();
    return std::nullopt;
}

}  // namespace skarnel
