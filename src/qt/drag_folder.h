// Where the files lie that are dragged out of the window.
#pragma once

#include <QDateTime>
#include <QString>

#include "util/log/result.h"

namespace skarnel {

/// A folder of its own for one drag, for the user alone: whoever receives a file may read it late,
/// and a later drag must not write over it. Made below `parent`, which is made where it is missing.
Result<QString> freshDragFolder(const QString& parent);

/// Removes what lies in `parent` and is older than a day, whatever put it there. Follows no links.
void removeOldDrags(const QString& parent, const QDateTime& now = QDateTime::currentDateTime());

/// The user's own: skarnel/dragged in the cache folder.
QString dragFolderParent();

}  // namespace skarnel
