#include "qt/user_presets.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QPointer>
#include <algorithm>
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

/// The first entry that is a look of that name; -1 when there is none.
qsizetype indexOf(const QJsonArray& entries, const QString& name) {
    for (qsizetype i = 0; i < entries.size(); ++i) {
        const auto preset = presetOf(entries[i].toObject());
        if (preset && preset->name.compare(name, Qt::CaseInsensitive) == 0) return i;
    }
    return -1;
}

/// The place of that look, which may be called otherwise by now; -1 when another window has removed
/// it, even if it has saved other numbers under that name: looks of one name are two looks then.
qsizetype indexOf(const QJsonArray& entries, const QString& name, const SettingNumbers& settings) {
    const qsizetype at = indexOf(entries, name);
    if (at < 0) return -1;
    const auto stored = presetOf(entries[at].toObject());
    return stored->settings == settings ? at : -1;
}

/// The name, with a number behind it where it is taken.
QString freeName(const QJsonArray& entries, const QString& wanted) {
    QString free = wanted;
    for (int number = 2; indexOf(entries, free) >= 0; ++number)
        free = QStringLiteral("%1 %2").arg(wanted, QString::number(number));
    return free;
}

}  // namespace

UserPresets::UserPresets(WindowState& state, QObject* parent) : QObject(parent), state_(state) {
    load();
}

void UserPresets::load() {
    presets_.clear();
    const QJsonArray entries = state_.value(kStateName).toArray();
    for (const auto& entry : entries) {
        const auto preset = presetOf(entry.toObject());
        if (preset && !isTaken(preset->name, -1)) presets_.append(*preset);
    }
}

/// All at once: one look may have got the name that another one had.
void UserPresets::tellNewNames() {
    for (const std::weak_ptr<QString>& each : followed_) {
        const std::shared_ptr<QString> name = each.lock();
        if (!name) continue;
        const auto found = std::ranges::find(newNames_, *name, &std::pair<QString, QString>::first);
        if (found != newNames_.end()) *name = found->second;
    }
    newNames_.clear();
}

void UserPresets::follow(const std::shared_ptr<QString>& name) {
    std::erase_if(followed_, [](const auto& each) { return each.expired(); });
    followed_.push_back(name);
}

/// Another window may have looks of its own by now, and an entry that cannot be read here may be of
/// a later version: all of them stay.
void UserPresets::change(const std::function<void(QJsonArray& entries)>& how) {
    const auto changeStored = [&](const QJsonValue& stored) {
        QJsonArray entries = stored.toArray();
        tellNewNames();
        how(entries);
        return QJsonValue(entries);
    };
    const auto showMerged = [self = QPointer(this)] {
        if (!self) return;
        const QList<UserPreset> before = self->presets_;
        self->tellNewNames();
        self->load();
        if (self->presets_ != before) emit self->changed();
    };
    const auto join = [self = QPointer(this)](const QJsonArray& list, const QJsonValue& added) {
        QJsonObject entry = added.toObject();
        const QString before = entry.value(kNameKey).toString();
        const QString free = freeName(list, before);
        entry.insert(kNameKey, free);
        if (self && free != before) self->newNames_.emplace_back(before, free);
        return QJsonValue(entry);
    };
    state_.update(kStateName, changeStored, {join, showMerged});
    load();
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
    change([&](QJsonArray& entries) {
        entries.append(jsonOf({freeName(entries, wanted), settings}));
    });
    return presets_.size() - 1;
}

bool UserPresets::rename(qsizetype index, const QString& name) {
    const QString wanted = name.trimmed();
    const bool there = index >= 0 && index < presets_.size();
    if (!there || wanted.isEmpty() || isTaken(wanted, index)) return false;
    const UserPreset preset = presets_[index];
    if (preset.name == wanted) return true;
    const auto called = std::make_shared<QString>(preset.name);
    follow(called);
    change([&](QJsonArray& entries) {
        const qsizetype at = indexOf(entries, *called, preset.settings);
        if (at < 0) return;
        QJsonObject entry = entries[at].toObject();
        entry.insert(kNameKey, wanted);
        entries[at] = entry;
    });
    return true;
}

std::optional<RemovedPreset> UserPresets::remove(qsizetype index) {
    if (index < 0 || index >= presets_.size()) return std::nullopt;
    const UserPreset preset = presets_[index];
    const auto name = std::make_shared<QString>(preset.name);
    follow(name);
    std::optional<RemovedPreset> removed;
    change([&](QJsonArray& entries) {
        const qsizetype at = indexOf(entries, *name, preset.settings);
        if (at >= 0) removed = RemovedPreset{entries.takeAt(at).toObject(), at};
    });
    return removed;
}

QString UserPresets::restore(const RemovedPreset& removed) {
    QJsonObject entry = removed.entry;
    QString name = entry.value(kNameKey).toString().trimmed();
    change([&](QJsonArray& entries) {
        name = freeName(entries, name);
        entry.insert(kNameKey, name);
        entries.insert(std::min(removed.place, entries.size()), entry);
    });
    return name;
}

qsizetype UserPresets::placeOf(const QString& name) const {
    for (qsizetype i = 0; i < presets_.size(); ++i)
        if (presets_[i].name.compare(name, Qt::CaseInsensitive) == 0) return i;
    return -1;
}

}  // namespace skarnel
