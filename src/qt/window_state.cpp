#include "qt/window_state.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>

#include "storage/left_overs.h"
#include "storage/safe_file.h"
#include "util/log/system_log.h"

namespace skarnel {
namespace {

constexpr auto kGeometry = "geometry";
constexpr auto kSplitter = "splitter";
constexpr auto kOpenFolder = "openFolder";
constexpr auto kSaveFolder = "saveFolder";
constexpr auto kCueMuted = "cueMuted";
constexpr auto kCheckerboard = "checkerboard";
constexpr auto kTextShown = "textShown";
constexpr auto kAppearance = "appearance";
constexpr auto kRecent = "recentFiles";
constexpr auto kPresets = "presets";  // kept by the looks themselves
constexpr const char* kLists[] = {kRecent, kPresets};
constexpr std::uint64_t kLargestFile = 1 << 20;

QString name(const char* key) {
    return QString::fromLatin1(key);
}

/// The list on disk without what was taken out of `before` and with what was added to it, to become
/// `after`.
QJsonArray mergedList(const QJsonArray& stored, const QJsonArray& before, const QJsonArray& after,
                      const WindowState::Join& join) {
    if (stored == before) return after;
    QJsonArray merged;
    for (const QJsonValue& each : stored)
        if (after.contains(each) || !before.contains(each)) merged.append(each);
    for (const QJsonValue& each : after)
        if (!before.contains(each) && !stored.contains(each)) merged.append(join(merged, each));
    return merged;
}

QString base64(const QByteArray& bytes) {
    return QString::fromLatin1(bytes.toBase64());
}

}  // namespace

QString WindowState::defaultPath() {
    QString base = qEnvironmentVariable("XDG_STATE_HOME");
    if (!QDir::isAbsolutePath(base)) {
        const QString home = qEnvironmentVariable("HOME");
        if (!QDir::isAbsolutePath(home)) return {};
        base = home + QStringLiteral("/.local/state");
    }
    return base + QStringLiteral("/skarnel/window.json");
}

WindowState::WindowState(QString path, FileSystem& fileSystem)
    : path_(std::move(path)), fileSystem_(fileSystem) {
    if (path_.isEmpty()) return;
    OnDisk found = read();
    values_ = std::move(found.values);
    foundDamaged_ = !found.whole;
}

WindowState::OnDisk WindowState::read() const {
    const std::string path = path_.toStdString();
    const auto bytes = readSharedFile(path, kLargestFile, fileSystem_);
    if (!bytes) {
        if (mayBeReadLater(bytes.error())) return {{}, true, bytes.error()};
        return {{}, bytes.error().code == ErrorCode::NotFound, std::nullopt};
    }
    const QByteArray text(reinterpret_cast<const char*>(bytes->data()),
                          static_cast<qsizetype>(bytes->size()));
    QJsonParseError fault{};
    const QJsonDocument document = QJsonDocument::fromJson(text, &fault);
    OnDisk found{document.object(), fault.error == QJsonParseError::NoError && document.isObject(),
                 std::nullopt};
    // The lists are the user's own work; the rest comes back with the next move of the window.
    for (const char* list : kLists) {
        const QJsonValue value = found.values.value(name(list));
        if (value.isUndefined() || value.isArray()) continue;
        found.whole = false;
        found.values.remove(name(list));
    }
    return found;
}

void WindowState::setValue(const QString& key, const QJsonValue& value) {
    if (values_.value(key) == value) return;
    values_.insert(key, value);
    changed_.insert(key);
    if (told_) told_();
}

void WindowState::removeLeftOvers() const {
    if (!path_.isEmpty()) skarnel::removeLeftOvers(folderOfPath(path_.toStdString()), fileSystem_);
}

void WindowState::update(const QString& key,
                         const std::function<QJsonValue(const QJsonValue&)>& change, Merge merge) {
    QJsonValue merged;
    const bool written = !path_.isEmpty() && write([&](QJsonObject& values) {
                                                 merged = change(values.value(key));
                                                 values.insert(key, merged);
                                             }).hasValue();
    if (written) {
        values_.insert(key, merged);
        return;
    }
    if (!changed_.contains(key)) before_.insert(key, values_.value(key).toArray());
    merges_[key] = std::move(merge);
    setValue(key, change(values_.value(key)));
}

QByteArray WindowState::geometry() const {
    return QByteArray::fromBase64(value(name(kGeometry)).toString().toLatin1());
}
void WindowState::setGeometry(const QByteArray& geometry) {
    setValue(name(kGeometry), base64(geometry));
}
QByteArray WindowState::splitter() const {
    return QByteArray::fromBase64(value(name(kSplitter)).toString().toLatin1());
}
void WindowState::setSplitter(const QByteArray& sizes) {
    setValue(name(kSplitter), base64(sizes));
}
QString WindowState::openFolder() const {
    return value(name(kOpenFolder)).toString();
}
void WindowState::setOpenFolder(const QString& folder) {
    setValue(name(kOpenFolder), folder);
}
QString WindowState::saveFolder() const {
    return value(name(kSaveFolder)).toString();
}
void WindowState::setSaveFolder(const QString& folder) {
    setValue(name(kSaveFolder), folder);
}
bool WindowState::cueMuted() const {
    return value(name(kCueMuted)).toBool(false);
}
void WindowState::setCueMuted(bool muted) {
    setValue(name(kCueMuted), muted);
}
bool WindowState::checkerboard() const {
    return value(name(kCheckerboard)).toBool(false);
}
void WindowState::setCheckerboard(bool shown) {
    setValue(name(kCheckerboard), shown);
}
bool WindowState::textShown() const {
    return value(name(kTextShown)).toBool(true);
}
void WindowState::setTextShown(bool shown) {
    setValue(name(kTextShown), shown);
}
QString WindowState::appearance() const {
    return value(name(kAppearance)).toString();
}
void WindowState::setAppearance(const QString& appearance) {
    setValue(name(kAppearance), appearance);
}

QStringList WindowState::recentFiles() const {
    QStringList files;
    for (const QJsonValue& each : value(name(kRecent)).toArray())
        // Not what only the toolkit takes for absolute, its resources.
        if (each.toString().startsWith(u'/')) files << each.toString();
    return files;
}

void WindowState::addRecentFile(const QString& path) {
    const QString absolute = QFileInfo(path).absoluteFilePath();
    addedRecent_.removeAll(absolute);
    addedRecent_.prepend(absolute);
    setValue(name(kRecent), withAddedRecent(value(name(kRecent))));
}

void WindowState::clearRecentFiles() {
    addedRecent_.clear();
    clearedRecent_ = true;
    setValue(name(kRecent), QJsonArray());
}

/// The list with this program's own files before the others.
QJsonArray WindowState::withAddedRecent(const QJsonValue& list) const {
    QJsonArray files = QJsonArray::fromStringList(addedRecent_);
    for (const QJsonValue& each : list.toArray())
        if (!files.contains(each)) files.append(each);
    while (files.size() > kMostRecent) files.removeLast();
    return files;
}

bool WindowState::save() {
    if (changed_.isEmpty() || path_.isEmpty()) return true;
    const auto merges = merges_;
    if (!write([](QJsonObject&) {})) return false;
    for (const auto& [key, merge] : merges) merge.done();
    return true;
}

void WindowState::mergeInto(QJsonObject& stored) {
    // Windows that run at once each add to the list.
    const QString recent = name(kRecent);
    if (changed_.contains(recent)) {
        const QJsonValue others = clearedRecent_ ? QJsonArray() : stored.value(recent);
        values_.insert(recent, withAddedRecent(others));
    }
    for (const QString& key : before_.keys()) {
        const QJsonArray others = stored.value(key).toArray();
        values_.insert(key, mergedList(others, before_.value(key).toArray(),
                                       values_.value(key).toArray(), merges_.at(key).join));
        // The write may fail again, and then the others are part of the list already.
        before_.insert(key, others);
    }
    for (const QString& key : std::as_const(changed_)) stored.insert(key, values_.value(key));
}

Result<void> WindowState::write(const std::function<void(QJsonObject&)>& change) {
    const std::string path = path_.toStdString();
    const auto logged = [&](Result<void> done) {
        if (!done) systemLog(path + ": " + done.error().message);
        return done;
    };
    if (auto made = makeFolders(folderOfPath(path), fileSystem_, NewOwner::FoldersOwner); !made)
        return logged(std::move(made));
    FileLock lock(fileSystem_);
    if (auto locked = lock.take(path + ".lock", lockPatience_); !locked)
        return logged(std::move(locked));
    OnDisk now = read();
    if (now.unread) return logged(*now.unread);
    // What a damaged file does not tell may have been read before.
    for (const QString& key : now.whole ? QStringList() : values_.keys())
        if (!now.values.contains(key)) now.values.insert(key, values_.value(key));
    mergeInto(now.values);
    change(now.values);
    const QByteArray text = QJsonDocument(now.values).toJson();
    const std::span bytes(reinterpret_cast<const std::uint8_t*>(text.constData()),
                          static_cast<std::size_t>(text.size()));
    if (bytes.size() > kLargestFile)
        return logged({ErrorCode::TooLarge, "It would be larger than what is read again"});
    if (foundDamaged_ || !now.whole) {
        if (auto kept = keepDamagedCopy(path, fileSystem_); !kept) return logged(std::move(kept));
        systemLog(path + ": What could not be read is kept beside it");
        foundDamaged_ = false;
    }
    auto written =
        writeFileSafely(path, bytes, Overwrite::Allow, fileSystem_, NewOwner::FoldersOwner);
    if (written) {
        changed_.clear();
        before_ = {};
        merges_.clear();
        addedRecent_.clear();
        clearedRecent_ = false;
    }
    return logged(std::move(written));
}

}  // namespace skarnel
