// What the window remembers for convenience, apart from the settings and untouched by reset.
#pragma once

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QSet>
#include <QString>
#include <QStringList>
#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <utility>

#include "storage/file_system.h"
#include "storage/shared_file.h"
#include "util/log/result.h"

namespace skarnel {

/// One small JSON file. Nothing here is worth an error message: what cannot be read counts as not
/// there, and is kept beside as "window.json.damaged" before anything is written; a file that
/// cannot be read at the moment, for want of memory for instance, is left as it is; what cannot be
/// written is logged and tried again with the next change, and so is what would be larger than the
/// 1 MB that are read. Windows that run at the same time write only what they changed, each over
/// what the others left.
class WindowState {
  public:
    /// $XDG_STATE_HOME/skarnel/window.json, with ~/.local/state where that is not set; empty when
    /// the user has no home, and then nothing is kept.
    static QString defaultPath();

    explicit WindowState(QString path, FileSystem& fileSystem = systemFileSystem());

    /// Removes what a killed program's write left beside the file.
    void removeLeftOvers() const;

    static constexpr int kMostRecent = 10;

    /// The form in which an entry that was added here comes into a list that others have changed.
    using Join = std::function<QJsonValue(const QJsonArray& list, const QJsonValue& added)>;
    struct Merge {
        Join join;
        std::function<void()> done;  // after a later save has written the list
    };

    QByteArray geometry() const;
    void setGeometry(const QByteArray& geometry);
    QByteArray splitter() const;
    void setSplitter(const QByteArray& sizes);
    QString openFolder() const;
    void setOpenFolder(const QString& folder);
    QString saveFolder() const;
    void setSaveFolder(const QString& folder);
    bool cueMuted() const;
    void setCueMuted(bool muted);
    bool checkerboard() const;
    void setCheckerboard(bool shown);
    bool textShown() const;
    void setTextShown(bool shown);
    /// "light", "dark", or empty for the system's own.
    QString appearance() const;
    void setAppearance(const QString& name);

    /// Absolute paths, the latest first. With every write come those that other windows wrote.
    QStringList recentFiles() const;
    void addRecentFile(const QString& path);
    void clearRecentFiles();

    /// What the open panel chose, handed over once; not stored.
    void setChosen(const QStringList& paths) { chosen_ = paths; }
    QStringList takeChosen() { return std::exchange(chosen_, {}); }

    /// Values that other parts of the window keep, by a name of their own.
    QJsonValue value(const QString& name) const { return values_.value(name); }
    void setValue(const QString& name, const QJsonValue& value);

    /// Sets a value to `change` of what lies on disk, at once and while no other program writes;
    /// for lists to which each program adds its own. What cannot be written now is merged later, as
    /// `merge` says.
    void update(const QString& name, const std::function<QJsonValue(const QJsonValue&)>& change,
                Merge merge);

    /// Called after every change, so that somebody can save a little later.
    void onChange(std::function<void()> told) { told_ = std::move(told); }

    /// Writes what changed since the last time. False when that failed.
    bool save();

  private:
    struct OnDisk {
        QJsonObject values;
        bool whole = true;
        std::optional<Error> unread;  // an ordinary file is there, and what was in the way
    };
    OnDisk read() const;
    QJsonArray withAddedRecent(const QJsonValue& list) const;
    /// Puts what is not yet written into what lies on disk.
    void mergeInto(QJsonObject& stored);
    /// Under the lock: reads again, applies `change`, writes.
    Result<void> write(const std::function<void(QJsonObject&)>& change);

    QString path_;
    FileSystem& fileSystem_;
    LockPatience lockPatience_{std::chrono::milliseconds(500)};
    QJsonObject values_;
    bool foundDamaged_ = false;  // a copy is owed before the next write
    QStringList chosen_;
    std::function<void()> told_;
    QSet<QString> changed_;  // names that are not yet written
    /// What lists were before they were updated here, of those that could not be written then.
    QJsonObject before_;
    std::map<QString, Merge> merges_;  // of the same lists
    QStringList addedRecent_;          // since the last write, the latest first
    bool clearedRecent_ = false;       // before these
};

}  // namespace skarnel
