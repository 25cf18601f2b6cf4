#include "qt/window_state.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>

#include "storage/left_overs.h"
#include "storage/safe_file.h"
#include "storage/whole_file.h"
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
constexpr std::uint64_t kLargestFile = 1 << 20;

QString name(const char* key) {
    return QString::fromLatin1(key);
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

WindowState::WindowState(QString path) : path_(std::move(path)) {
    if (path_.isEmpty()) return;
    const auto bytes = readWholeFile(path_.toStdString(), kLargestFile);
    if (!bytes) return;
    const QByteArray text(reinterpret_cast<const char*>(bytes->data()),
                          static_cast<qsizetype>(bytes->size()));
    values_ = QJsonDocument::fromJson(text).object();
}

void WindowState::setValue(const QString& key, const QJsonValue& value) {
    if (values_.value(key) == value) return;
    values_.insert(key, value);
    changed_ = true;
    if (told_) told_();
}

void WindowState::removeLeftOvers() const {
    if (!path_.isEmpty()) skarnel::removeLeftOvers(folderOfPath(path_.toStdString()));
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
        if (QDir::isAbsolutePath(each.toString())) files << each.toString();
    return files;
}

void WindowState::addRecentFile(const QString& path) {
    const QString absolute = QFileInfo(path).absoluteFilePath();
    QStringList files = recentFiles();
    files.removeAll(absolute);
    files.prepend(absolute);
    setValue(name(kRecent), QJsonArray::fromStringList(files.mid(0, kMostRecent)));
}

void WindowState::clearRecentFiles() {
    setValue(name(kRecent), QJsonArray());
}

bool WindowState::save() {
    if (!changed_ || path_.isEmpty()) return true;
    const std::string path = path_.toStdString();
    const QByteArray text = QJsonDocument(values_).toJson();
    const std::span bytes(reinterpret_cast<const std::uint8_t*>(text.constData()),
                          static_cast<std::size_t>(text.size()));
    if (const auto made = makeFolders(folderOfPath(path)); !made) {
        systemLog(path + ": " + made.error().message);
        return false;
    }
    if (const auto written = writeFileSafely(path, bytes, Overwrite::Allow); !written) {
        systemLog(path + ": " + written.error().message);
        return false;
    }
    changed_ = false;
    return true;
}

}  // namespace skarnel
