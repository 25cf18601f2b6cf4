#include "qt/file_names.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <QStringList>
#include <cerrno>
#include <cstddef>
#include <memory>

#include "util/log/system_error.h"

namespace skarnel {
namespace {

bool isIllegible(const QString& name) {
    return name.contains(QChar::ReplacementCharacter);
}

class OwnDescriptor {
  public:
    explicit OwnDescriptor(int descriptor) : descriptor_(descriptor) {}
    ~OwnDescriptor() { ::close(descriptor_); }
    OwnDescriptor(const OwnDescriptor&) = delete;
    OwnDescriptor& operator=(const OwnDescriptor&) = delete;

  private:
    int descriptor_;
};

/// The bytes of the folder's entries whose names read so.
QList<QByteArray> entriesThatRead(const QByteArray& folder, const QString& name) {
    const std::unique_ptr<DIR, int (*)(DIR*)> open(::opendir(folder.constData()), ::closedir);
    QList<QByteArray> found;
    if (!open) return found;
    while (const dirent* entry = ::readdir(open.get())) {
        const QByteArray bytes(entry->d_name);
        if (QFile::decodeName(bytes) == name) found << bytes;
    }
    return found;
}

}  // namespace

std::optional<std::string> bytesOfPath(const QString& path) {
    if (!isIllegible(path)) return path.toStdString();
    QByteArray bytes;
    const QStringList names = path.split(QLatin1Char('/'));
    for (qsizetype i = 0; i < names.size(); ++i) {
        if (i > 0) bytes += '/';
        if (!isIllegible(names[i])) {
            bytes += names[i].toUtf8();
            continue;
        }
        const QList<QByteArray> found =
            entriesThatRead(bytes.isEmpty() ? QByteArray(".") : bytes, names[i]);
        if (found.size() > 1) return std::nullopt;
        bytes += found.isEmpty() ? names[i].toUtf8() : found.front();
    }
    return bytes.toStdString();
}

QString pathOfAddress(const QUrl& address) {
    if (!address.isLocalFile()) return {};
    const QByteArray bytes =
        QByteArray::fromPercentEncoding(address.path(QUrl::FullyEncoded).toUtf8());
    const QString path = QFile::decodeName(bytes);
    return isIllegible(path) ? path : address.toLocalFile();
}

Result<QByteArray> headOfFile(const std::string& path, qint64 most) {
    struct stat status {};
    // Looked at before it is opened: a device might act.
    if (::stat(path.c_str(), &status) != 0) return {ErrorCode::CannotRead, describeError(errno)};
    if (S_ISDIR(status.st_mode)) return {ErrorCode::CannotRead, "It is a folder"};
    const Error notOrdinary{ErrorCode::CannotRead, "It is not an ordinary file"};
    if (!S_ISREG(status.st_mode)) return notOrdinary;
    // Not blocking: it may have become a pipe without a writer by now.
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (descriptor < 0) return {ErrorCode::CannotRead, describeError(errno)};
    const OwnDescriptor own(descriptor);
    if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) return notOrdinary;
    QByteArray head(most, Qt::Uninitialized);
    qint64 got = 0;
    while (got < most) {
        const ssize_t read =
            ::read(descriptor, head.data() + got, static_cast<std::size_t>(most - got));
        if (read < 0 && errno == EINTR) continue;
        // An empty file has a head, an empty one; a disk that fails has none.
        if (read < 0) return {ErrorCode::CannotRead, describeError(errno)};
        if (read == 0) break;
        got += read;
    }
    head.truncate(got);
    return head;
}

QString inAnyCase(const QString& filter) {
    QString result;
    bool pattern = false;
    for (const QChar letter : filter) {
        if (letter == QLatin1Char('*')) pattern = true;
        if (letter == QLatin1Char(' ') || letter == QLatin1Char(')')) pattern = false;
        if (pattern && letter.isLetter())
            result += QStringLiteral("[%1%2]").arg(letter.toLower(), letter.toUpper());
        else
            result += letter;
    }
    return result;
}

}  // namespace skarnel
