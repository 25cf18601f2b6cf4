#include "qt/save_dialog.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QLineEdit>
#include <QMessageBox>

namespace skarnel {
namespace {

// The toolkit's own question, which it has in its own catalogues.
constexpr const char* kReplaceQuestion = "%1 already exists.\nDo you want to replace it?";

}  // namespace

SaveDialog::SaveDialog(QWidget* parent, const QString& title) : QFileDialog(parent, title) {
    // Only the toolkit's own dialog can hold the format view.
    setOption(DontUseNativeDialog);
    setAcceptMode(AcceptSave);
    setFileMode(AnyFile);
}

void SaveDialog::accept() {
    auto* name = findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
    const QString typed = name != nullptr ? name->text() : QString();
    if (typed.isEmpty()) return;
    const QString there = absolute(typed);
    if (QFileInfo(there).isDir()) {
        setDirectory(there);
        name->clear();
        return;
    }
    const QString path = complete_ ? complete_(there) : there;
    if (!mayReplace(path)) return;
    chosen_ = path;
    // Past the toolkit's own notion of what was chosen.
    QDialog::accept();  // NOLINT(bugprone-parent-virtual-call)
}

QString SaveDialog::absolute(const QString& typed) const {
    if (typed == QLatin1String("~")) return QDir::homePath();
    if (typed.startsWith(QLatin1String("~/")))
        return QDir::cleanPath(QDir::home().filePath(typed.mid(2)));
    // What is marked in the list shows its name alone, and is not always in the folder shown.
    const QStringList marked = selectedFiles();
    if (marked.size() == 1 && QFileInfo(marked.front()).fileName() == typed) return marked.front();
    return QDir::cleanPath(directory().absoluteFilePath(typed));
}

bool SaveDialog::mayReplace(const QString& path) {
    const QFileInfo there(path);
    if (!there.exists()) return true;
    const QString question = QCoreApplication::translate("QFileDialog", kReplaceQuestion);
    return QMessageBox::warning(this, windowTitle(), question.arg(there.fileName()),
                                QMessageBox::Yes | QMessageBox::No,
                                QMessageBox::No) == QMessageBox::Yes;
}

}  // namespace skarnel
