#include "qt/user_presets.h"

#include <QJsonArray>
#include <QJsonObject>
#include <cmath>
#include <optional>

#include "qt/window_state.h"

namespace skarnel {
namespace {

const QString kStateName = QStringLiteral("presets");
const QString kNameKey = QStringLiteral("name");

QString keyOf(std::size_t setting) {
    const std::string_view key = kReflectionSettings[setting].key;
    return QString::fromLatin1(key.data(), static_cast<qsizetype>(key.size()));
}

std::optional<UserPreset> presetOf(const QJsonObject& json) {
    UserPreset preset{json.value(kNameKey).toString().trimmed(), {}};
    if (preset.name.isEmpty()) return std::nullopt;
    for (std::size_t i = 0; i < kReflectionSettings.size(); ++i) {
        const QJsonValue value = json.value(keyOf(i));
        const auto number = static_cast<float>(value.toDouble());
        if (!value.isDouble() || !std::isfinite(number)) return std::nullopt;
        preset.settings[i] = number;
    }
    return preset;
}

QJsonObject jsonOf(const UserPreset& preset) {
    QJsonObject json{{kNameKey, preset.name}};
    for (std::size_t i = 0; i < kReflectionSettings.size(); ++i) {
        json.insert(keyOf(i), static_cast<double>(preset.settings[i]));
    }
    return json;
}

}  // namespace

UserPresets::UserPresets(WindowState& state, QObject* parent) : QObject(parent), state_(state) {
    load();
}

void UserPresets::load() {
    const QJsonArray entries = state_.value(kStateName).toArray();
    for (const auto& entry : entries) {
        const auto preset = presetOf(entry.toObject());
        if (preset && !isTaken(preset->name, -1)) presets_.append(*preset);
    }
}

void UserPresets::store() {
    QJsonArray entries;
    for (const UserPreset& preset : std::as_const(presets_)) entries.append(jsonOf(preset));
    state_.setValue(kStateName, entries);
    state_.save();
    emit changed();
}

bool UserPresets::isTaken(const QString& name, qsizetype except) const {
    for (qsizetype i = 0; i < presets_.size(); ++i) {
        if (i != except && presets_[i].name.compare(name, Qt::CaseInsensitive) == 0) return true;
    }
    return false;
}

qsizetype UserPresets::add(const QString& name, const SettingNumbers& settings) {
    const QString wanted = name.trimmed().isEmpty() ? tr("My Look") : name.trimmed();
    QString free = wanted;
    for (int number = 2; isTaken(free, -1); ++number) {
        free = QStringLiteral("%1 %2").arg(wanted, QString::number(number));
    }
    presets_.append({free, settings});
    store();
    return presets_.size() - 1;
}

bool UserPresets::rename(qsizetype index, const QString& name) {
    const QString wanted = name.trimmed();
    const bool there = index >= 0 && index < presets_.size();
    if (!there || wanted.isEmpty() || isTaken(wanted, index)) return false;
    if (presets_[index].name == wanted) return true;
    presets_[index].name = wanted;
    store();
    return true;
}

void UserPresets::remove(qsizetype index) {
    if (index < 0 || index >= presets_.size()) return;
    presets_.removeAt(index);
    store();
}

}  // namespace skarnel
