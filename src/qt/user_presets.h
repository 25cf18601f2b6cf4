// The looks that the user has saved: an ordered list with names, in the window's state file.
#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QObject>
#include <QString>
#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "recipe/presets.h"

namespace skarnel {

class WindowState;

struct UserPreset {
    QString name;
    SettingNumbers settings;
    friend bool operator==(const UserPreset&, const UserPreset&) = default;
};

/// A look as it is stored, and where it was among all that is stored.
struct RemovedPreset {
    QJsonObject entry;
    qsizetype place;
};

/// Names are trimmed, not empty, and differ from each other in more than letter case. Of a look
/// that comes to the disk later than another one of its name, since it could not be written at
/// once, the name gets a number behind it.
class UserPresets final : public QObject {
    Q_OBJECT
  public:
    /// Letters (UTF-16 units) that whoever types a name may give it.
    static constexpr int kLongestName = 200;

    /// The state is borrowed. Entries that cannot be read are left out.
    explicit UserPresets(WindowState& state, QObject* parent = nullptr);

    const QList<UserPreset>& all() const { return presets_; }

    /// Adds a look at the end and gives back its place. An empty name becomes "My Look", and a
    /// taken one gets a number behind it.
    qsizetype add(const QString& name, const SettingNumbers& settings);
    /// False, and nothing changes, for an empty name, one that another look has, or no such place.
    bool rename(qsizetype index, const QString& name);
    /// The look is kept for whoever wants it back; none where there is no such place, or where
    /// another window has another look of that name there by now.
    std::optional<RemovedPreset> remove(qsizetype index);
    /// Puts it back to where it was, under a name with a number where another has its own by now.
    /// The name that it has then.
    QString restore(const RemovedPreset& removed);
    /// The place of the look with this name in any letter case; -1 without one.
    qsizetype placeOf(const QString& name) const;
    /// Keeps the name of a look that was just added or renamed up to date for as long as somebody
    /// holds it: what cannot be written at once may get a number behind it later.
    void follow(const std::shared_ptr<QString>& name);

  signals:
    void changed();

  private:
    bool isTaken(const QString& name, qsizetype except) const;
    void load();
    void tellNewNames();
    void change(const std::function<void(QJsonArray& entries)>& how);

    WindowState& state_;
    QList<UserPreset> presets_;
    std::vector<std::weak_ptr<QString>> followed_;
    /// The names that looks had and got where they came to others of their name, not yet told.
    std::vector<std::pair<QString, QString>> newNames_;
};

}  // namespace skarnel
