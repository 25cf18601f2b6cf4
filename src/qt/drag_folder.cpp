#include "qt/drag_folder.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include <cerrno>
#include <cstdlib>
#include <string>

#include "storage/safe_file.h"
#include "util/log/system_error.h"

namespace skarnel {
namespace {

constexpr qint64 kOldSeconds = 24 * 60 * 60;

}  // namespace

QString dragFolderParent() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) +
           QStringLiteral("/skarnel/dragged");
}

Result<QString> freshDragFolder(const QString& parent) {
    std::string path = parent.toStdString();
    if (const auto made = makeFolders(path); !made) return made.error();
    path += "/XXXXXX";
    if (::mkdtemp(path.data()) == nullptr) return {ErrorCode::CannotWrite, describeError(errno)};
    return QString::fromStdString(path);
}

void removeOldDrags(const QString& parent, const QDateTime& now) {
    const QFileInfoList entries = QDir(parent).entryInfoList(QDir::AllEntries | QDir::Hidden |
                                                             QDir::System | QDir::NoDotAndDotDot);
    for (const QFileInfo& entry : entries) {
        if (entry.lastModified().secsTo(now) <= kOldSeconds) continue;
        if (entry.isDir() && !entry.isSymLink())
            QDir(entry.filePath()).removeRecursively();
        else
            QFile::remove(entry.filePath());
    }
}

}  // namespace skarnel
