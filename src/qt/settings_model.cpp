#include "qt/settings_model.h"

#include <utility>

namespace skarnel {

SettingsModel::SettingsModel(NSUserDefaults& defaults, SendAction action, QObject* parent)
    : QObject(parent), defaults_(defaults), action_(std::move(action)) {}

void SettingsModel::beginGesture(const QString& name) {
    openName_ = name.toStdString();
    undo_.beginGesture(openName_, readSettings(defaults_));
}

void SettingsModel::continueGesture(const QString& name) {
    if (undo_.isGestureOpen() && openName_ == name.toStdString()) return;
    beginGesture(name);
}

void SettingsModel::endGesture() {
    if (!undo_.isGestureOpen()) return;
    undo_.endGesture(readSettings(defaults_));
    emit historyChanged();
}

void SettingsModel::editNumber(std::string_view key, float value) {
    defaults_.setFloat(value, key);
    emit numberChanged(key, value);
    emit historyChanged();
    askForAction();
}

void SettingsModel::editApplyBackground(bool on) {
    defaults_.setBool(on, kApplyBackgroundColorKey);
    emit applyBackgroundChanged(on);
    askForAction();
}

void SettingsModel::changeNumber(const QString& name, std::string_view key, float value) {
    beginGesture(name);
    editNumber(key, value);
    endGesture();
}

void SettingsModel::changeAll(const QString& name, const SettingsState& values) {
    beginGesture(name);
    write(values);
    endGesture();
}

void SettingsModel::recordChange(const QString& name, const std::function<void()>& change) {
    flush();
    beginGesture(name);
    change();
    endGesture();
}

void SettingsModel::recordAction(const QString& name, const std::function<void()>& back,
                                 const std::function<void()>& forth) {
    endGesture();
    forth();
    recordDone(name, back, forth);
}

void SettingsModel::recordDone(const QString& name, const std::function<void()>& back,
                               const std::function<void()>& forth) {
    endGesture();  // the action may have let events in, and a slider may be held since
    undo_.recordAction(name.toStdString(), back, forth);
    emit historyChanged();
}

void SettingsModel::undo() {
    endGesture();
    if (const auto state = undo_.undo()) write(*state);
    emit historyChanged();
}

void SettingsModel::redo() {
    endGesture();
    if (const auto state = undo_.redo()) write(*state);
    emit historyChanged();
}

void SettingsModel::write(const SettingsState& values) {
    for (std::size_t i = 0; i < kReflectionSettings.size(); ++i)
        defaults_.setFloat(values.numbers[i], kReflectionSettings[i].key);
    defaults_.setBool(values.applyBackgroundColor, kApplyBackgroundColorKey);
    emit refreshed();
    askForAction();
}

void SettingsModel::askForAction() {
    if (std::exchange(actionWaits_, true)) return;
    // Queued behind the input events that have already arrived: those only write keys.
    QMetaObject::invokeMethod(this, &SettingsModel::flush, Qt::QueuedConnection);
}

void SettingsModel::flush() {
    if (!std::exchange(actionWaits_, false)) return;
    action_();
}

}  // namespace skarnel
