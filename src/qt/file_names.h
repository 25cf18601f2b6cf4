// Files whose names the toolkit's strings cannot hold, and patterns of file names.
#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>
#include <optional>
#include <string>

#include "util/log/result.h"

namespace skarnel {

/// The path's own bytes. A name that is not UTF-8 reaches the window with U+FFFD in place of what
/// cannot be read; then the bytes are those of the one file there whose name reads so. Nothing when
/// there are several: which of them is meant cannot be known. A path without U+FFFD, and one to a
/// file that is not there, is given back in UTF-8.
std::optional<std::string> bytesOfPath(const QString& path);

/// A local address' path, with U+FFFD for bytes that are not UTF-8; the toolkit's own conversion
/// leaves "%E9" standing there, which is another name. Empty for an address elsewhere.
QString pathOfAddress(const QUrl& address);

/// The first bytes of a regular file, at most so many; the cause for anything else.
Result<QByteArray> headOfFile(const std::string& path, qint64 most);

/// A dialog's filter, "Photos (*.jpg)", for small and capital letters in any mixture, since not
/// every desktop's dialog takes them for the same: "Photos (*.[jJ][pP][gG])".
QString inAnyCase(const QString& filter);

}  // namespace skarnel
