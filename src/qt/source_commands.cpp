// Where the source picture comes from: files that are chosen, dropped or named, and the clipboard.
#include <QApplication>
#include <QClipboard>
#include <QFileInfo>
#include <QMimeData>
#include <QUrl>
#include <cerrno>
#include <utility>

#include "qt/accessible_parts.h"
#include "qt/application.h"
#include "qt/cause_text.h"
#include "qt/companions.h"
#include "qt/file_names.h"
#include "qt/recipe_commands.h"
#include "qt/viewer.h"
#include "qt/wait_cursor.h"
#include "storage/safe_file.h"
#include "util/log/system_error.h"
#include "util/log/system_log.h"

namespace skarnel {
namespace {

constexpr qint64 kRecognitionBytes = 4096;  // enough of a file to know its format

ByteView view(const QByteArray& bytes) {
    return {reinterpret_cast<const std::uint8_t*>(bytes.constData()),
            static_cast<std::size_t>(bytes.size())};
}

QString localPath(const QString& pathOrAddress) {
    const QUrl url(pathOrAddress);
    const QString path = url.isLocalFile() ? pathOfAddress(url) : pathOrAddress;
    return QFileInfo(path).absoluteFilePath();
}

/// The clipboard's picture in one of the formats that are read here, the exact ones first.
Result<DecodedImage> clipboardPicture(const QMimeData& data) {
    for (const std::string_view type :
         {kUTTypeTIFF, kUTTypePNG, kUTTypeWebP, kUTTypeBMP, kUTTypeJPEG}) {
        const ImageType* known = imageTypeWithIdentifier(type);
        if (known == nullptr || !known->canRead) continue;
        const QString mime = QString::fromUtf8(known->mimeType.data(),
                                               static_cast<qsizetype>(known->mimeType.size()));
        const QByteArray bytes = data.data(mime);
        if (bytes.isEmpty()) continue;
        auto decoded = decodeForeignImage(view(bytes));
        if (decoded) return decoded;
        systemLog("Couldn't paste " + mime.toStdString() + ": " + decoded.error().message);
    }
    return {ErrorCode::UnknownFormat, "no picture"};
}

}  // namespace

bool Application::changingSource(const std::function<void()>& command, const QString& title) {
    const std::optional<NSImage> before = controller_.image;
    command();
    const std::optional<NSImage>& now = controller_.image;
    const bool changed = now && (!before || !now->isSame(*before));
    if (changed) sourceChanged(title);
    return changed;
}

void Application::sourceChanged(const QString& title) {
    window_.viewer().discardEdits();
    pasted_.reset();
    window_.endTelling();
    const QString name = title.isEmpty() ? QString::fromStdString(controller_.saveFilename) : title;
    window_.setWindowTitle(QStringLiteral("%1 — Skarnel").arg(name));
    window_.viewer().setPictureName(name);
    announcePicture(window_.viewer());
    window_.announce(pictureText(window_.viewer()));
}

bool Application::openPicture(const QString& pathOrAddress) {
    const QString path = localPath(pathOrAddress);
    if (RecipeCommands::isRecipeName(path)) return companions_->recipes().openFrom(path);
    const QString name = QFileInfo(path).fileName();
    const auto bytes = bytesOfPath(path);
    const auto head = bytes ? headOfFile(*bytes, kRecognitionBytes)
                            : Result<QByteArray>(ErrorCode::CannotRead, describeError(EILSEQ));
    if (!head) {
        window_.tell(tr("“%1” cannot be read: %2.").arg(name, causeText(head.error())));
        return false;
    }
    const ImageType* type = imageTypeOfContent(view(*head));
    if (type == nullptr || !type->canRead) {
        tellRefusedPicture(name, {ErrorCode::UnknownFormat, {}});
        return false;
    }
    {
        const WaitCursor atWork;
        changingSource([&] { controller_.imagePathChanged(*bytes); });
    }
    const std::optional<Error> refused = noteOpened(path);
    if (refused) tellRefusedPicture(name, *refused);
    return !refused;
}

std::optional<Error> Application::noteOpened(const QString& path) {
    const std::optional<NSImage>& now = controller_.image;
    if (now && now->isValid()) {
        state_.addRecentFile(path);
        return std::nullopt;
    }
    const Error unknown{ErrorCode::Damaged, "No picture"};
    const Error cause = now ? now->readError().value_or(unknown) : unknown;
    systemLog("Couldn't open " + path.toStdString() + ": " + cause.message);
    return cause;
}

void Application::tellRefusedPicture(const QString& name, const Error& cause) {
    switch (cause.code) {
        case ErrorCode::Damaged:  // which rule of the format is broken says nothing to most people
            return window_.tell(tr("“%1” is damaged and cannot be opened.").arg(name));
        case ErrorCode::UnknownFormat:
        case ErrorCode::Unsupported:
            return window_.tell(tr("“%1” is no picture that can be opened.").arg(name));
        default:
            window_.tell(tr("“%1” cannot be opened: %2.").arg(name, causeText(cause)));
    }
}

void Application::openPictures(const QStringList& paths) {
    if (paths.isEmpty()) return;
    if (!awake_) {
        waiting_ += paths;
        return;
    }
    // A picture installed under a sheet would be saved in place of the one the sheet is about.
    const bool sheetIsUp = QApplication::activeModalWidget() != nullptr;
    for (const QString& path : paths.mid(sheetIsUp ? 0 : 1)) state_.addRecentFile(path);
    if (sheetIsUp)
        window_.tell(tr("The picture waits under Open Recent."));
    else
        openPicture(paths.front());
}

void Application::pastePicture() {
    const QMimeData* data = QApplication::clipboard()->mimeData();
    if (data == nullptr) return;
    for (const QUrl& url : data->urls()) {
        if (!url.isLocalFile()) continue;
        openPicture(pathOfAddress(url));
        return;
    }
    const auto picture = clipboardPicture(*data);
    const auto bytes = picture ? encodeImage(picture->image, kUTTypeTIFF, picture->properties)
                               : Result<Bytes>(picture.error());
    const auto folder = toolkit_.temporaryDirectory();
    if (picture && !bytes) systemLog("Couldn't paste a picture: " + bytes.error().message);
    if (!folder) systemLog("Couldn't paste a picture: There is no folder for temporary files");
    if (!bytes || !folder) return window_.tell(tr("There is no picture on the clipboard."));
    // A folder of its own lets the file have a name that suits the one proposed for saving.
    auto own = std::make_unique<PrivateFolder>(*folder, kPastedPrefix);
    const auto fails = [this](const std::string& cause) {
        systemLog("Couldn't paste a picture: " + cause);
        window_.tell(tr("The picture cannot be pasted."));
    };
    if (own->path().empty()) return fails("no folder can be made in " + *folder);
    const std::string path =
        own->path() + "/" + (tr("Pasted Picture") + QStringLiteral(".tiff")).toStdString();
    const Result<void> written = writeFileSafely(path, *bytes, Overwrite::Refuse);
    if (!written) return fails(written.error().message);
    changingSource([&] { controller_.imagePathChanged(path); });
    pasted_ = std::move(own);
}

}  // namespace skarnel
